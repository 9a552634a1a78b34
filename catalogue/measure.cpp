#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "catalogue/operations.h"
#include "catalogue/undefined.h"
#include "corvane/core/error.h"
#include "corvane/measure/overscan.h"
#include "corvane/measure/vignetting.h"

namespace corvane::catalogue {
namespace {

/// Refuses a model that leaves no brightness somewhere in the rectangle.
void CheckReach(double k, double base, CPoint centre, const CRect& rect)
{
    const auto farthest = [](int c, LONG first, LONG end) {
        return std::max(std::fabs(static_cast<double>(first) - c), std::fabs(end - 1.0 - c));
    };
    const double dx = farthest(static_cast<int>(centre.x), rect.left, rect.right);
    const double dy = farthest(static_cast<int>(centre.y), rect.top, rect.bottom);
    const double square = dx * dx + dy * dy;
    if (square * k + base <= 0.0) {
        throw ParameterError("k", ToText(Value(k)),
                             "must be above " + ToText(Value(-base / square)) + ", or no brightness is left " +
                                 std::to_string(std::lround(std::sqrt(square))) + " pixels from the centre");
    }
}

void RunVignette(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    const double k = arguments.Number("k");
    const double base = arguments.Number("base");
    const CPoint centre(arguments.Has("x") ? arguments.Whole("x") : image.GetWidth() / 2,
                        arguments.Has("y") ? arguments.Whole("y") : image.GetHeight() / 2);
    const CRect* const rect = arguments.Rectangle("rect");
    CheckReach(k, base, centre, rect != nullptr ? *rect : CRect(0, 0, image.GetWidth(), image.GetHeight()));
    MarkUndefined(frame); // a blank would be multiplied, and be blank no more
    CImgFlat result(image);
    result.Do(image, centre, k, base, rect, run);
    image = std::move(result);
}

/// The edges of the strip as the operation takes them, all of them included.
struct Strip {
    int left;
    int right;
    int top;
    int bottom;

    explicit Strip(const CRect& rect)
        : left(static_cast<int>(rect.left)), right(static_cast<int>(rect.right - 1)), top(static_cast<int>(rect.top)),
          bottom(static_cast<int>(rect.bottom - 1))
    {}

    std::optional<double> Bias(const CStlImage& image, bool clip) const
    {
        return OverscanBias(image, left, right, top, bottom, clip);
    }
};

/// The bias of a strip that has one.
double CheckedBias(const CStlImage& image, const CRect& rect, bool clip)
{
    const Strip strip(rect);
    const std::optional<double> mean = strip.Bias(image, false);
    if (!mean) {
        throw ParameterError("rect", ToText(Value(rect)),
                             std::string("each row of the strip begins with an undefined sample; ") + kFillThem);
    }
    if (!std::isfinite(*mean)) {
        throw ParameterError("rect", ToText(Value(rect)), std::string("the strip has undefined samples; ") + kFillThem);
    }
    const std::optional<double> bias = clip ? strip.Bias(image, true) : mean;
    if (!bias) {
        throw ParameterError("clip", "yes",
                             "all samples of the strip are equal, and clipping would leave none; leave it out");
    }
    return *bias;
}

// Black and white go down with the samples: the operation's automatic levels follow settings that the step's text does
// not tell, and the result could not be made again.
void RunOverscan(io::Frame& frame, const Arguments& arguments, const Run&)
{
    const CRect rect = *arguments.Rectangle("rect");
    const bool clip = arguments.Flag("clip");
    const double bias = std::fabs(CheckedBias(frame.image, rect, clip));
    const double min = frame.image.GetLevelMin(0);
    const double max = frame.image.GetLevelMax(0);
    const Strip strip(rect);
    CImgOverScan image;
    image.Swap(&frame.image);
    image.Do(strip.left, strip.right, strip.top, strip.bottom, clip);
    frame.image.Swap(&image);
    frame.image.SetLevel(0, min - bias, max - bias);
}

Parameter CentreParameter(const char* name, const char* summary)
{
    return {.name = name,
            .kind = Kind::Whole,
            .summary = summary,
            .unit = "pixels",
            .min = -1e6,
            .max = 1e6,
            .whenAbsent = "the middle of the image"};
}

Operation Vignette()
{
    return {.name = "vignette",
            .summary = "even out vignetting by a model, without a flat field",
            .help = "Multiplies each sample by 1 / (1 + (k / base) r^2), where r is its distance from the centre in "
                    "pixels. A k below 0 lifts the corners. For corners at r = 2500 that have 80 percent of the "
                    "centre's light, k = -0.2 / 2500^2 = -3.2e-8 with a base of 1. Take bias and dark off before. "
                    "Undefined samples stay undefined.",
            .parameters =
                {{.name = "k", .summary = "how the divisor changes outwards", .unit = "per square pixel"},
                 {.name = "base", .summary = "the divisor at the centre", .min = 1e-6, .max = 1e6, .defaultValue = 1.0},
                 CentreParameter("x", "column of the centre"),
                 CentreParameter("y", "row of the centre"),
                 RectangleParameter()},
            .footprint = Always({.placed = true}),
            .run = RunVignette};
}

Operation Overscan()
{
    return {.name = "overscan",
            .summary = "take off the bias that an overscan strip shows",
            .help = "Subtracts the absolute value of the strip's mean from the whole image; the display levels go "
                    "down with the samples. A blank sample ends its row. Crop the strip away afterwards.",
            .inputs = {{.planes = Planes::Mono}},
            .parameters = {{.name = "rect", .kind = Kind::Rectangle, .summary = "the strip"},
                           {.name = "clip",
                            .kind = Kind::Flag,
                            .summary = "leave out samples that are 3 standard deviations or more from the strip's "
                                       "median",
                            .defaultValue = false}},
            .footprint = Always({.statistics = true}),
            .run = RunOverscan};
}

} // namespace

std::vector<Operation> MeasureOperations()
{
    return {Overscan(), Vignette()};
}

} // namespace corvane::catalogue
