#include "catalogue/fill.h"

#include <string>

#include "catalogue/region.h"
#include "corvane/core/error.h"
#include "corvane/core/gaps.h"
#include "corvane/filter/fill.h"

namespace corvane::catalogue {
namespace {

bool HoldsDefinedSamples(const CStlImage& image, int plane)
{
    const BlankTest isBlank(image);
    for (int y = 0; y < image.GetHeight(); ++y) {
        if (HoldsDefined(image.GetImageAdr(0, y, plane, 1), image.GetWidth(), isBlank)) {
            return true;
        }
    }
    return false;
}

void CheckFill(const Arguments& arguments)
{
    if ((arguments.Text("with") == "value") != arguments.Has("value")) {
        throw arguments.Refusal("value", "belongs to with = value, which needs it");
    }
}

/// What each plane is filled with: a value, or its sky.
std::vector<double> ValuesOf(const CStlImage& image, const Arguments& arguments)
{
    if (arguments.Has("value")) {
        return std::vector<double>(static_cast<std::size_t>(image.GetPlanes()), arguments.Number("value"));
    }
    std::vector<double> medians;
    for (const RegionMeasures& plane : MeasureRegion(image, nullptr)) {
        medians.push_back(plane.median);
    }
    return medians;
}

void RunFill(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    CStlImage& image = frame.image;
    for (int plane = 0; plane < image.GetPlanes() && !arguments.Has("value"); ++plane) {
        if (!HoldsDefinedSamples(image, plane)) {
            throw InputError("image", "has no defined sample in plane " + std::to_string(plane) +
                                          "; only with = value can fill it");
        }
    }
    const bool isByNeighbours = arguments.Text("with") == "neighbours";
    const long long filled =
        isByNeighbours ? FillFromNeighbours(image, run) : FillWithValues(image, ValuesOf(image, arguments));
    run.TellFinding("undefined samples that were filled: " + std::to_string(filled));
}

// A hole of any size is closed from its edges.
Footprint FillFootprint(const Arguments& arguments)
{
    const bool isByNeighbours = arguments.Text("with") == "neighbours";
    return isByNeighbours ? kWholeImage : Footprint{.statistics = !arguments.Has("value")};
}

} // namespace

Operation Fill()
{
    return {.name = "fill",
            .summary = "give values to undefined samples",
            .help =
                "Undefined are blank samples, NaN and infinities; all others stay as they are. From neighbours a hole "
                "closes ring by ring, each sample being the mean of those defined among the eight about it, "
                "which count by the inverse square of their distance. The sky is the median of the plane.",
            .parameters = {ChoiceParameter("with", "where the values come from", {"neighbours", "sky", "value"},
                                           "neighbours"),
                           NumberParameter("value", "the value, in every plane", "counts", kAnyNumber,
                                           "needed with with=value alone")},
            .footprint = FillFootprint,
            .check = CheckFill,
            .run = RunFill};
}

} // namespace corvane::catalogue
