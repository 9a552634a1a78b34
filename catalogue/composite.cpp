#include "catalogue/composite.h"

#include "catalogue/names.h"
#include "catalogue/numbers.h"
#include "catalogue/row_order.h"
#include "corvane/combine/composit.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/turn.h"

namespace corvane::catalogue {
namespace {

constexpr double kDefaultRatio = 0.5;

int ModeOf(const CompositeOptions& options)
{
    return PlaceOf(options.mode, CompositeModes());
}

void CheckRatio(const CompositeOptions& options)
{
    const bool isDesaturate = ModeOf(options) == kCompositeDesaturate;
    if (isDesaturate && !options.ratio) {
        throw ParameterError(
            "--ratio must be given with --mode desaturate: how many times longer the base was exposed");
    }
    CheckRange("--ratio", options.ratio.value_or(kDefaultRatio), 0.0, isDesaturate ? kMaxRatio : 1.0);
}

void CheckFrames(const io::Frame& base, const io::Frame& overlay, const CompositeOptions& options)
{
    const CStlImage& image = base.image;
    if (ModeOf(options) == kCompositeDesaturate && overlay.image.GetPlanes() > image.GetPlanes()) {
        throw FileError(overlay.image.GetOrgFileName(),
                        "has 3 planes; --mode desaturate takes as many as the base has, 1");
    }
    const CRect whole(0, 0, image.GetWidth(), image.GetHeight());
    const CRect rect = options.rect.value_or(whole);
    if (rect.left < 0 || rect.top < 0 || rect.right > whole.right || rect.bottom > whole.bottom) {
        throw FileError(image.GetOrgFileName(),
                        "--rect = " + ToText(Value(rect)) + ": must lie within the image, " + ToText(Value(whole)));
    }
}

/// Desaturate takes the cosine of the turn for positive, so that it would mirror a greater one.
std::string FaultOfTurn(const CompositeOptions& options, double angle)
{
    const bool isMirrored = ModeOf(options) == kCompositeDesaturate && Cosine(angle * kDegree) < 0.0;
    return isMirrored ? "angle = " + ToText(Value(angle)) + ": must be -90 to 90 with --mode desaturate" : "";
}

std::string CommandText(const io::Frame& base, const io::Frame& overlay, const CompositeOptions& options)
{
    std::string text = std::string("corvane composite ") + base.image.GetOrgFileName() + " " +
                       overlay.image.GetOrgFileName() + " --mode " + options.mode;
    text += options.ratio ? " --ratio " + ToText(Value(*options.ratio)) : "";
    text += options.display ? " --display" : "";
    text += options.clamp ? " --clamp" : "";
    if (ModeOf(options) == kCompositeDesaturate) {
        text += " --fraction " + ToText(Value(options.fraction)) + " --radius " + std::to_string(options.radius);
    }
    text += options.rect ? " --rect " + ToText(Value(*options.rect)) : "";
    return text + ToText(options.placement, kOverlayPoints);
}

} // namespace

const std::vector<std::string>& CompositeModes()
{
    static const std::vector<std::string> modes = {"sum",      "mean",    "blend", "difference", "product",
                                                   "quotient", "absdiff", "max",   "min",        "desaturate"};
    return modes;
}

void CheckComposite(const CompositeOptions& options)
{
    CheckWord("--mode", options.mode, CompositeModes());
    CheckRatio(options);
    CheckRange("--fraction", options.fraction, 0.0, 1.0);
    CheckRange("--radius", options.radius, 0.0, 2.0);
    CheckPlacement(options.placement, kOverlayPoints);
    const std::string fault = FaultOfTurn(options, options.placement.IsByStars() ? 0.0 : options.placement.angle);
    if (!fault.empty()) {
        throw ParameterError(fault);
    }
}

Fit RunComposite(io::Frame& base, io::Frame& overlay, const CompositeOptions& options, const Context& context)
{
    CheckComposite(options);
    CheckFrames(base, overlay, options);
    Placement placement = options.placement;
    BringToOrderOf(base, overlay, context, &placement.secondPoints);
    const Fit fit = FitOnto(base, overlay, placement);
    if (const std::string fault = FaultOfTurn(options, fit.angle); !fault.empty()) {
        throw FileError(overlay.image.GetOrgFileName(), fault);
    }
    if (ModeOf(options) == kCompositeDesaturate) {
        base.image.CalcMinMax();
        overlay.image.CalcMinMax();
    }
    CRect rect = options.rect.value_or(CRect(0, 0, base.image.GetWidth(), base.image.GetHeight()));
    CImgComposit result(base.image);
    result.Do(&base.image, &overlay.image, fit.dx, fit.dy, fit.angle, ModeOf(options),
              options.ratio.value_or(kDefaultRatio), options.display, options.clamp, options.fraction, options.radius,
              &rect, context.showProgress, -1);
    base.image.Swap(&result);
    AddHistory(CommandText(base, overlay, options), fit, base.header);
    return fit;
}

} // namespace corvane::catalogue
