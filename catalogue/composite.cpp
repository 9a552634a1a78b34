#include <string>
#include <vector>

#include "catalogue/names.h"
#include "catalogue/operations.h"
#include "catalogue/placement.h"
#include "catalogue/row_order.h"
#include "corvane/combine/composit.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/error.h"
#include "corvane/core/turn.h"

namespace corvane::catalogue {
namespace {

constexpr const char* kOverlayPoints = "overlay-points";
constexpr double kDefaultRatio = 0.5;
constexpr double kMaxRatio = 1e6;

/// The place of a word is the number of the mode.
const std::vector<std::string> kCompositeModes = {"sum",      "mean",    "blend", "difference", "product",
                                                  "quotient", "absdiff", "max",   "min",        "desaturate"};

int CompositeModeOf(const Arguments& arguments)
{
    return PlaceOf(arguments.Text("mode"), kCompositeModes);
}

bool IsDesaturate(const Arguments& arguments)
{
    return CompositeModeOf(arguments) == kCompositeDesaturate;
}

double RatioOf(const Arguments& arguments)
{
    return arguments.Has("ratio") ? arguments.Number("ratio") : kDefaultRatio;
}

/// Desaturate takes the cosine of the turn for positive, so that it would mirror a greater one.
void CheckTurn(const Arguments& arguments, double angle)
{
    if (IsDesaturate(arguments) && Cosine(angle * kDegree) < 0.0) {
        throw ParameterError("angle", ToText(Value(angle)), "must be -90 to 90 with mode = desaturate");
    }
}

void CheckComposite(const Arguments& arguments)
{
    if (IsDesaturate(arguments) && !arguments.Has("ratio")) {
        throw arguments.Refusal("ratio",
                                "must be given with mode = desaturate: how many times longer the base was exposed");
    }
    if (!IsDesaturate(arguments) && RatioOf(arguments) > 1.0) {
        throw arguments.Refusal("ratio", "must be 0 to 1");
    }
    CheckPlacement(arguments, kOverlayPoints);
    CheckTurn(arguments, arguments.Has("points") ? 0.0 : arguments.Number("angle"));
}

Outputs RunComposite(Inputs& inputs, const Arguments& arguments, const Run& run)
{
    io::Frame& base = inputs["base"].front();
    io::Frame& overlay = inputs["overlay"].front();
    if (IsDesaturate(arguments) && overlay.image.GetPlanes() > base.image.GetPlanes()) {
        throw InputError("overlay", "has 3 planes; mode = desaturate takes as many as the base has, 1");
    }
    Placement placement = PlacementOf(arguments, kOverlayPoints);
    BringToOrderOf(base, overlay, run, &placement.secondPoints);
    const Fit fit = FitOnto(base, overlay, placement);
    CheckTurn(arguments, fit.angle);
    if (IsDesaturate(arguments)) {
        base.image.CalcMinMax();
        overlay.image.CalcMinMax();
    }
    CImgComposit result(base.image);
    result.Do(base.image, overlay.image, fit.dx, fit.dy, fit.angle, CompositeModeOf(arguments), RatioOf(arguments),
              arguments.Flag("display"), arguments.Flag("clamp"), arguments.Number("fraction"),
              arguments.Whole("radius"), arguments.Rectangle("rect"), run);
    base.image = std::move(result);
    return PairOutputs(base, fit);
}

std::vector<Parameter> CompositeParameters()
{
    return PlacementParameters(
        {{.name = "mode", .kind = Kind::Choice, .summary = "how values are combined", .choices = kCompositeModes},
         NumberParameter("ratio", "blend: weight of OVERLAY, 0 to 1; desaturate: exposure of BASE over that of OVERLAY",
                         "", {0.0, kMaxRatio}, "0.5; desaturate needs it"),
         FlagParameter("display", "combine what the display levels show, 0 to 255, instead of the samples as they are",
                       false),
         FlagParameter("clamp", "difference of colour images: negative ones become 0", false),
         NumberParameter("fraction", "desaturate: from which part of the maximum on a sample is saturated", "",
                         {0.0, 1.0}, 0.95),
         WholeParameter("radius", "desaturate: look for saturation as far around a pixel", "pixels", {0.0, 2.0}, 0),
         RectangleParameter()},
        kOverlayPoints, "BASE", "OVERLAY");
}

} // namespace

std::vector<Operation> CompositeOperations()
{
    return {{.name = "composite",
             .summary = "combine two images, pixel by pixel",
             .help = "The result has the size, planes and header of BASE. OVERLAY may have any size; of a colour one a "
                     "monochrome BASE gets the brightness. Without stars the turn is about the middle of OVERLAY, with "
                     "stars about the first. Pixels beyond OVERLAY become undefined. Two stars give the turn as "
                     "exactly as their centres are measured.",
             .inputs = {{.name = "base", .summary = "the image that the other is placed on"},
                        {.name = "overlay", .summary = "the image that is placed on it"}},
             .parameters = CompositeParameters(),
             .outputs = PairOutputs(),
             .check = CheckComposite,
             .run = RunComposite}};
}

} // namespace corvane::catalogue
