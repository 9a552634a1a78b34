#include "stack/stack.h"

#include <algorithm>
#include <cmath>
#include <functional>

#include "corvane/core/error.h"
#include "corvane/core/gaps.h"
#include "io/sky.h"
#include "stack/calibrate/masters.h"
#include "stack/canvas.h"
#include "stack/combine/combine.h"
#include "stack/combine/drizzle.h"
#include "stack/combine/rejection_tally.h"
#include "stack/describe.h"
#include "stack/prepared_lights.h"
#include "stack/registered.h"
#include "stack/stopwatch.h"

namespace corvane::stack {

namespace {

constexpr std::size_t kReasonsTold = 20;

/// Refuses a stack of nothing but one light of several, and says what was wrong with the others.
void CheckEnoughUsed(const Result& result)
{
    const std::vector<FrameReport>& frames = result.frames;
    if (frames.size() == 1 || UsedFrames(frames).size() > 1) {
        return;
    }
    std::size_t leftOut = 0;
    std::string text;
    for (const FrameReport& frame : frames) {
        if (!frame.used && ++leftOut <= kReasonsTold) {
            text += (text.empty() ? "" : "; ") + frame.file + ": " + frame.reason;
        }
    }
    if (leftOut > kReasonsTold) {
        text += "; and " + std::to_string(leftOut - kReasonsTold) + " more";
    }
    throw FileError(frames[static_cast<std::size_t>(result.referenceLight)].file,
                    "no other light can be stacked with it: " + text);
}

/// An empty image of the stack's size.
CStlImage EmptyStack(const Grid& grid, int planes)
{
    return {-32, grid.width, grid.height, planes, 1.0, 0.0, 1};
}

/// The pixels of the stack, given those of the reference on the canvas.
Grid GridOf(const Options& options, const Grid& reference)
{
    const double scale = options.drizzle.value_or(1.0);
    const auto size = [=](int pixels) { return std::max(static_cast<int>(std::lround(pixels * scale)), 1); };
    return {size(reference.width), size(reference.height), scale, reference.left, reference.top};
}

/// World coordinates and the header that they stand in follow to the grid.
void CarryToGrid(const Grid& grid, CStlImage& image, io::Header& header)
{
    if (grid.left != 0 || grid.top != 0 || grid.scale != 1.0) {
        io::Frame frame{{}, header};
        frame.image.SetCoordinates(image.GetCoordinates());
        CarryCoordinates(MapOnto(grid), frame, image);
        header = frame.header;
    }
}

/// An empty image with the record of the reference: its format, coordinates and levels.
CStlImage MakeTarget(const Plan& plan, const Grid& grid, int reference, int planes)
{
    CStlImage target(EmptyStack(grid, planes));
    plan.lights.Describe(reference, target);
    for (int plane = plan.planes; plane < planes; ++plane) { // the colours of a mosaic
        target.SetLevel(plane, target.GetLevelMin(0), target.GetLevelMax(0));
    }
    if (!plan.onto.IsEmpty()) {
        CStlImage record;
        plan.onto.Describe(0, record);
        target.SetCoordinates(record.GetCoordinates());
    }
    target.SetBlankUsed(0);
    target.SetBlank(0);
    target.SetOwnLevel(0);
    return target;
}

/// Values dropped below, above and both together, as three planes, each for all planes of the stack.
CStlImage JoinRejected(const CStlImage& low, const CStlImage& high)
{
    const int width = low.GetWidth();
    CStlImage joined(-32, width, low.GetHeight(), 3, 1.0, 0.0, 1);
    for (int plane = 0; plane < low.GetPlanes(); ++plane) {
        for (int y = 0; y < low.GetHeight(); ++y) {
            const auto add = [&](const CStlImage& counts, int to) {
                const float* const row = counts.GetImageAdr(0, y, plane, 1);
                float* const sum = joined.GetImageAdr(0, y, to);
                std::transform(row, row + width, sum, sum, std::plus<>());
            };
            add(low, 0);
            add(high, 1);
            add(low, 2);
            add(high, 2);
        }
    }
    return joined;
}

/// Reads lights, and takes down which of them have shown a sample that is defined.
class WatchedLights : public FrameSource {
public:
    WatchedLights(LightFrames& frames, std::size_t count) : frames_(frames), isEmpty_(count, 1) {}

    FrameFacts Facts(int light) const override { return frames_.Facts(light); }
    void Read(int light, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) override
    {
        frames_.Read(light, firstRow, rowCount, samples, planeStride);
        const FrameFacts facts = Facts(light);
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(rowCount) * facts.width;
        for (int plane = 0; plane < facts.planes && IsEmpty(light); ++plane) {
            const bool holds = HoldsDefined(samples + plane * planeStride, count, facts.IsBlank());
            isEmpty_[static_cast<std::size_t>(light)] = holds ? 0 : 1;
        }
    }

    bool IsEmpty(int light) const { return isEmpty_[static_cast<std::size_t>(light)] != 0; }

private:
    LightFrames& frames_;
    std::vector<char> isEmpty_; ///< a byte each: threads enter different lights side by side
};

/// Leaves out the lights that have added nothing. With all of them nothing is left to stack, and so it is when a pixel
/// must be in all lights.
void LeaveOutEmpty(const WatchedLights& lights, Coverage coverage, std::vector<FrameReport>& frames)
{
    const char* const reason = "has no sample that is defined";
    for (const int light : UsedFrames(frames)) {
        FrameReport& frame = frames[static_cast<std::size_t>(light)];
        if (lights.IsEmpty(light)) {
            frame.LeaveOut(reason);
            if (coverage == Coverage::kAll || UsedFrames(frames).empty()) {
                throw FileError(frame.file, std::string("the light ") + reason);
            }
        }
    }
}

CombinePlan PlanOf(const Options& options, const PreparedLights& lights, bool followsMotion)
{
    const Plan& plan = lights.GetPlan();
    std::vector<Placement> placements = lights.Placements(followsMotion);
    const Grid grid =
        CanvasOf(options.canvas, {plan.Base().Width(), plan.Base().Height()}, placements, plan.width, plan.height);
    CombineRule rule = RuleOf(options, static_cast<int>(placements.size()));
    return {.frames = std::move(placements),
            .grid = grid,
            .rule = std::move(rule),
            .coverage = options.coverage,
            .interpolation = options.interpolation,
            .blank = CommonBlank(plan.lights),
            .memory = plan.lights.BandMemory()};
}

void TakeRejected(const RejectionTally& tally, const CombinePlan& combining, Registration& result)
{
    const std::vector<RejectedValues>& rejected = tally.OfFrames();
    for (std::size_t i = 0; i < rejected.size(); ++i) {
        result.frames[static_cast<std::size_t>(combining.frames[i].frame)].rejected = rejected[i];
    }
    if (!rejected.empty()) {
        result.rejectedPlaces = tally.Picture();
    }
}

void Combine(const Options& options, PreparedLights& lights, const CombinePlan& combining, Result& result,
             const Run& run)
{
    const Plan& plan = lights.GetPlan();
    const int planes = lights.Frames().Planes();
    WatchedLights watched(lights.Frames(), result.frames.size());
    const Grid grid = GridOf(options, combining.grid);
    result.image = MakeTarget(plan, grid, result.referenceLight, planes);
    const auto make = [&](bool isWanted, const Grid& size) {
        return isWanted ? EmptyStack(size, planes) : CStlImage();
    };
    result.coverage = make(options.wantsCoverage, grid);
    result.weights = make(options.wantsWeights, grid);
    result.noise = make(options.wantsNoise, grid);
    RejectionTally tally(combining);
    RejectionTally* const wantedTally = options.wantsReport ? &tally : nullptr;
    CStlImage low(make(options.wantsRejected, combining.grid));
    CStlImage high(make(options.wantsRejected, combining.grid));
    const auto wanted = [](CStlImage& counts) { return counts.GetPlanes() > 0 ? &counts : nullptr; };
    if (!options.method) {
        const int used = static_cast<int>(combining.frames.size());
        result.rejection = SettledRejection(options.reject, CombineOf(options), used).method;
    }
    if (options.drizzle) {
        DrizzleFrames({combining, grid, options.drop, options.dropShape, plan.patterns}, watched,
                      {result.image, wanted(result.weights), wanted(result.coverage), wanted(low), wanted(high),
                       wanted(result.noise), wantedTally},
                      run, "Dropping lights...");
    } else {
        CombineFrames(
            combining, watched,
            {result.image, 0, wanted(result.coverage), wanted(low), wanted(high), wanted(result.noise), wantedTally},
            run, "Combining lights...");
    }
    result.image.UnlockAll();
    if (options.wantsReport) {
        TakeRejected(tally, combining, result);
    }
    LeaveOutEmpty(watched, options.coverage, result.frames);
    if (options.wantsRejected) {
        result.rejected = JoinRejected(low, high);
    }
    result.depth = lights.DepthOf(result.image);
}

/// Stacks the stars that the stack does not follow, of the same lights.
void CombineStars(const Options& options, PreparedLights& lights, Result& result, const Run& run)
{
    Options ofStars = options;
    ofStars.follow.clear();
    const CombinePlan combining = PlanOf(ofStars, lights, false);
    result.stars = MakeTarget(lights.GetPlan(), combining.grid, result.referenceLight, lights.Frames().Planes());
    CombineFrames(combining, lights.Frames(), {result.stars}, run, "Combining stars...");
    result.starsHeader = DescribeStack(ofStars, lights.GetPlan(), result);
    CarryToGrid(combining.grid, result.stars, result.starsHeader);
}

} // namespace

Result Stack(const Options& options, const Run& run)
{
    Result result;
    Stopwatch stopwatch(result.laps);
    PreparedLights lights(options, result, stopwatch, run);
    lights.Register();
    CheckEnoughUsed(result);
    const CombinePlan combining = PlanOf(options, lights, !options.follow.empty());
    Combine(options, lights, combining, result, run);
    CheckEnoughUsed(result); // once more: combining has told which lights are empty
    result.header = DescribeStack(options, lights.GetPlan(), result);
    CarryToGrid(GridOf(options, combining.grid), result.image, result.header);
    if (options.wantsBoth) {
        CombineStars(options, lights, result, run);
    }
    WriteRegistered(options, lights.GetPlan(), combining, lights.Frames(), result, run);
    stopwatch.End("combine");
    return result;
}

Registration Register(const Options& options, const Run& run)
{
    Registration result;
    Stopwatch stopwatch(result.laps);
    PreparedLights(options, result, stopwatch, run).Register();
    return result;
}

} // namespace corvane::stack
