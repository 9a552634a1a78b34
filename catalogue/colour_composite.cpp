#include "catalogue/colour_composite.h"

#include <algorithm>

#include "catalogue/colour_header.h"
#include "catalogue/numbers.h"
#include "catalogue/sky_black.h"
#include "catalogue/undefined.h"
#include "corvane/colour/cmy_composite.h"
#include "corvane/colour/lrgb_composite.h"
#include "corvane/colour/rgb_composite.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/turn.h"
#include "corvane/platform/memory_exception.h"
#include "io/sky.h"

namespace corvane::catalogue {
namespace {

void CheckPlanes(const io::Frame& frame, int planes, const std::string& role)
{
    const int has = frame.image.GetPlanes();
    if (has != planes) {
        throw FileError(frame.image.GetOrgFileName(), "has " + std::to_string(has) + (has == 1 ? " plane" : " planes") +
                                                          "; " + role + " must have " + std::to_string(planes));
    }
}

/// Where the pixels of the first frame go.
io::PixelMap MapOf(const CfPoint& centre, const Fit& fit)
{
    const auto [sine, cosine] = SineAndCosine(fit.angle * kDegree);
    return {{cosine, -sine, sine, cosine},
            centre.x + fit.dx - (cosine * centre.x - sine * centre.y),
            centre.y + fit.dy - (sine * centre.x + cosine * centre.y)};
}

/// Puts the middle of a scaled frame onto that of the first.
void Centre(const CStlImage& first, CStlImage& scaled, Fit& fit)
{
    scaled.SetStdCtr((scaled.GetWidth() - 1) * 0.5, (scaled.GetHeight() - 1) * 0.5);
    fit.dx += (first.GetWidth() - 1) * 0.5 - scaled.GetStdCtr().x;
    fit.dy += (first.GetHeight() - 1) * 0.5 - scaled.GetStdCtr().y;
}

bool HaveOwnLevels(const std::vector<io::Frame>& frames)
{
    return std::all_of(frames.begin(), frames.end(), [](const io::Frame& f) { return f.image.HasOwnLevel() != 0; });
}

/// One composite: which frames it takes, and how they become one.
struct Composite {
    std::string command;
    std::vector<int> planes; ///< in which stars are looked for
    std::string options;     ///< as they stand on a command line

    /// Makes the first frame the result, by combine(result, fits).
    template <class Result, class Combine>
    std::vector<Fit> Run(std::vector<io::Frame>& frames, const ColourOptions& colour, const Context& context,
                         Combine combine) const
    {
        std::vector<Fit> fits = FitFrames(frames, planes, colour.registration, context);
        std::for_each(frames.begin(), frames.end(), MarkUndefined);
        Result result(frames[0].image);
        if (result.ToColor() == 0) {
            AfxThrowMemoryException();
        }
        combine(result, fits);
        const std::string text = "corvane " + command + FileNames(frames) + ToText(colour.registration) + options;
        DescribeColour(text, frames, fits);
        if (fits[0].dx != 0.0 || fits[0].dy != 0.0 || fits[0].angle != 0.0) {
            CarryCoordinates(MapOf(frames[0].image.GetStdCtr(), fits[0]), frames[0], result);
        }
        frames[0].image.Swap(&result);
        return fits;
    }
};

std::string OutsideText(const ColourOptions& options)
{
    return options.outside == 0 ? "" : " --outside " + std::to_string(options.outside);
}

} // namespace

void CheckColour(const ColourOptions& options)
{
    CheckRegistration(options.registration);
    CheckRange("--scale", options.scale, kMinScale, kMaxScale);
    if (options.scale != 1.0 && options.registration.align == "shift") {
        throw ParameterError("--scale = " + ToText(Value(options.scale)) +
                             ": --align shift finds stars at the same scale only");
    }
}

std::vector<Fit> RunRgb(std::vector<io::Frame>& frames, const ColourOptions& options, const Context& context)
{
    CheckColour(options);
    std::vector<int> planes;
    for (std::size_t i = 0; i < frames.size(); ++i) {
        planes.push_back(frames[i].image.GetPlanes() >= 3 ? static_cast<int>(i) : 0);
    }
    const bool own = HaveOwnLevels(frames);
    const Composite composite{"rgb", planes, OutsideText(options)};
    return composite.Run<CImgRgbCmpst>(frames, options, context, [&](CImgRgbCmpst& result, std::vector<Fit>& at) {
        result.Do(&frames[0].image, at[0].dx, at[0].dy, at[0].angle, &frames[1].image, at[1].dx, at[1].dy, at[1].angle,
                  &frames[2].image, at[2].dx, at[2].dy, at[2].angle, nullptr, options.outside, nullptr,
                  context.showProgress);
        result.SetOwnLevel(own ? 1 : 0);
    });
}

std::vector<Fit> RunCmy(std::vector<io::Frame>& frames, const ColourOptions& options, const Context& context)
{
    CheckColour(options);
    for (const io::Frame& frame : frames) {
        CheckPlanes(frame, 1, "a frame through one filter");
    }
    const bool own = HaveOwnLevels(frames);
    const Composite composite{"cmy", {0, 0, 0}, OutsideText(options)};
    return composite.Run<CImgCmyComposit>(frames, options, context, [&](CImgCmyComposit& result, std::vector<Fit>& at) {
        result.Do(&frames[0].image, at[0].dx, at[0].dy, at[0].angle, &frames[1].image, at[1].dx, at[1].dy, at[1].angle,
                  &frames[2].image, at[2].dx, at[2].dy, at[2].angle, nullptr, options.outside, context.showProgress);
        result.SetOwnLevel(own ? 1 : 0);
    });
}

std::vector<Fit> RunLrgb(std::vector<io::Frame>& frames, const ColourOptions& options, const Context& context)
{
    CheckColour(options);
    CheckPlanes(frames[1], 3, "the colour frame");
    const int green = 1;
    std::string text = options.average ? " --average" : "";
    text += options.scale == 1.0 ? "" : " --scale " + ToText(Value(options.scale));
    const Composite composite{"lrgb", {frames[0].image.GetPlanes() >= 3 ? green : 0, green}, text};
    return composite.Run<CImgLrgbCmpst>(frames, options, context, [&](CImgLrgbCmpst& result, std::vector<Fit>& at) {
        if (options.scale != 1.0 && options.registration.align == "none") {
            Centre(frames[0].image, frames[1].image, at[1]);
        }
        GiveSkyBlack(frames[0].image);
        GiveSkyBlack(frames[1].image);
        result.DoLrgb(&frames[0].image, at[0].dx, at[0].dy, at[0].angle, &frames[1].image, at[1].dx, at[1].dy,
                      at[1].angle, options.scale, nullptr, options.average ? 1 : 0, context.showProgress);
    });
}

} // namespace corvane::catalogue
