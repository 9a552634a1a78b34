// Frames in memory: combined pixel by pixel, and brought onto the grid of another.

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "catalogue/onto_grid.h"
#include "catalogue/placement.h"
#include "catalogue/undefined.h"
#include "corvane/core/error.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory_exception.h"
#include "io/sky.h"
#include "python/core/image.h"
#include "python/core/operations.h"
#include "python/core/run.h"
#include "stack/combine/combine.h"
#include "stack/names.h"
#include "stars/place_field.h"

namespace corvane::python {
namespace {

constexpr float kUnknown = std::numeric_limits<float>::quiet_NaN();

/// How frames are combined, by the words of a stack.
struct Combining {
    std::string by;
    std::string reject; ///< sigma, mad or minmax, judged once; else none
    double low;
    double high;
    std::vector<double> weights; ///< one for each frame
    std::vector<double> factors; ///< that its samples are multiplied by
    std::uint64_t memory;        ///< what bands may take at most [bytes]
};

struct CombinedFrames {
    io::Frame frame;
    CStlImage coverage;
    CStlImage noise;
};

std::shared_ptr<const Rejection> JudgedOnce(const Combining& how)
{
    const ClipLimits limits{how.low, how.high, 1};
    switch (stack::ValueOf(stack::kRejectNames, how.reject).value_or(stack::RejectMethod::kNone)) {
    case stack::RejectMethod::kSigma:
        return ClipByDeviation(limits);
    case stack::RejectMethod::kMad:
        return ClipByMedianDeviation(limits);
    case stack::RejectMethod::kMinMax:
        return DropEnds(static_cast<int>(how.low), static_cast<int>(how.high));
    default:
        return nullptr;
    }
}

stack::CombinePlan PlanFor(const CStlImage& first, const Combining& how)
{
    const CombineBy by = stack::ValueOf(stack::kCombineNames, how.by).value_or(CombineBy::kMean);
    stack::CombinePlan plan{.grid = {first.GetWidth(), first.GetHeight()},
                            .rule = {by, JudgedOnce(how)},
                            .coverage = Coverage::kAny,
                            .memory = how.memory};
    for (std::size_t i = 0; i < how.weights.size(); ++i) {
        const stack::Normalisation scale{.factor = how.factors[i]};
        plan.frames.push_back(
            {.frame = static_cast<int>(i),
             .normalisation = std::vector<stack::Normalisation>(static_cast<std::size_t>(first.GetPlanes()), scale),
             .weight = how.weights[i]});
    }
    return plan;
}

/// An image of the size of another, to be filled.
CStlImage CanvasLike(const CStlImage& image)
{
    CStlImage canvas;
    if (canvas.Create(image) == 0) {
        AfxThrowMemoryException();
    }
    canvas.SetBlankUsed(0);
    canvas.SetOwnLevel(0);
    return canvas;
}

/// Makes samples that no frame has NaN.
void LeaveOpen(const CStlImage& coverage, CStlImage& image)
{
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            const float* const frames = coverage.GetImageAdr(0, y, plane, 1);
            float* const row = image.GetImageAdr(0, y, plane);
            for (int x = 0; x < image.GetWidth(); ++x) {
                row[x] = frames[x] > 0.0F ? row[x] : kUnknown;
            }
        }
    }
    image.SetBlankUsed(0);
}

/// The first frame's header, and what all frames come to.
CombinedFrames CombineImages(io::Frame frame, const std::vector<SharedImage>& images, const Combining& how,
                             const Run& run)
{
    CombinedFrames made{.frame{CanvasLike(frame.image), std::move(frame.header)},
                        .coverage = CanvasLike(frame.image),
                        .noise = CanvasLike(frame.image)};
    std::vector<const CStlImage*> sources;
    for (const SharedImage& image : images) {
        sources.push_back(&image->frame.image);
    }
    stack::ImageSource source(sources);
    CStlImage& result = made.frame.image;
    stack::CombineFrames(PlanFor(result, how), source,
                         {.image = result, .coverage = &made.coverage, .noise = &made.noise}, run);
    LeaveOpen(made.coverage, result);
    io::SetFullLevels(result);
    return made;
}

py::dict Combine(const std::vector<SharedImage>& images, const Combining& how, const py::object& progress, int threads)
{
    PythonRun python(progress, threads);
    io::Frame first = FrameOf(*images.front());
    CombinedFrames made = python.Do([&](const Run& run) {
        const Hold hold(images);
        return CombineImages(std::move(first), images, how, run);
    });
    py::dict named;
    named["image"] = Shared(std::move(made.frame));
    named["coverage"] = Shared({std::move(made.coverage), {}});
    named["noise"] = Shared({std::move(made.noise), {}});
    return named;
}

/// Where a source lies on a target, by the stars of both.
stars::FieldPlace PlaceByStars(const CStlImage& source, const CStlImage& target, const stars::FindOptions& options,
                               const Run& run)
{
    const auto seen = stars::FindFieldStars(source, stars::StarPlane(source), options, run).stars;
    const auto wanted = stars::FindFieldStars(target, stars::StarPlane(target), options, run).stars;
    stars::FieldPlace place = stars::PlaceField({wanted, target.GetWidth(), target.GetHeight()},
                                                {seen, source.GetWidth(), source.GetHeight()}, source.GetStdCtr(), run);
    if (!place.match.reason.empty()) {
        throw InputError("source", "cannot be placed on the target by its stars: " + place.match.reason);
    }
    return place;
}

/// Samples of `moved`, which lie as those of the source, on the target's grid: with their header, but where they lie.
io::Frame OntoTarget(io::Frame source, io::Frame moved, const io::Frame& target, const stars::FindOptions& options,
                     const Run& run)
{
    source.image.SetDefaultCenter();
    const stars::FieldPlace place = PlaceByStars(source.image, target.image, options, run);
    catalogue::MarkUndefined(moved);
    const std::vector<double> outside(static_cast<std::size_t>(moved.image.GetPlanes()), kUnknown);
    CStlImage placed = catalogue::OntoGrid(moved.image, place.mapping, target.image.GetWidth(),
                                           target.image.GetHeight(), outside, run);
    placed.SetCoordinates(target.image.GetCoordinates());
    io::TakeCoordinates(target.header, moved.header);
    const auto& match = place.match;
    moved.header.AddHistory(
        ToText(catalogue::Fit{match.dx, match.dy, match.angle, place.stars, match.scale, place.isBent, place.mapping}));
    return {std::move(placed), std::move(moved.header)};
}

SharedImage BringOnto(const SharedImage& source, const SharedImage& target, const SharedImage& moved, double sigmas,
                      std::size_t most, const py::object& progress, int threads)
{
    const stars::FindOptions options{.sigmas = sigmas, .limit = most};
    PythonRun python(progress, threads);
    io::Frame frame = FrameOf(*source);
    io::Frame samples = FrameOf(*moved);
    const io::Frame onto = FrameOf(*target);
    return Shared(python.Do([&](const Run& run) {
        const Hold hold({source, target, moved});
        return OntoTarget(std::move(frame), std::move(samples), onto, options, run);
    }));
}

} // namespace

void BindFrames(py::module_& module)
{
    module.def(
        "combine",
        [](const std::vector<SharedImage>& images, const std::string& by, const std::string& reject, double low,
           double high, const std::vector<double>& weights, const std::vector<double>& factors, std::uint64_t memory,
           const py::object& progress, int threads) {
            return Combine(images, {by, reject, low, high, weights, factors, memory}, progress, threads);
        },
        py::arg("images"), py::arg("by"), py::arg("reject"), py::arg("low"), py::arg("high"), py::arg("weights"),
        py::arg("factors"), py::arg("memory"), py::arg("progress"), py::arg("threads"));
    module.def("bring_onto", &BringOnto, py::arg("source"), py::arg("target"), py::arg("moved"), py::arg("sigmas"),
               py::arg("most"), py::arg("progress"), py::arg("threads"));
}

} // namespace corvane::python
