#include "stack/stack.h"

#include <algorithm>
#include <functional>

#include "corvane/core/error.h"
#include "corvane/core/gaps.h"
#include "stack/calibrate/masters.h"
#include "stack/combine/combine.h"
#include "stack/describe.h"
#include "stack/prepared_lights.h"
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
CStlImage EmptyStack(const Plan& plan, int planes)
{
    return {-32, plan.width, plan.height, planes, 1.0, 0.0, 1};
}

/// An empty image with the record of the reference: its format, coordinates and levels.
CStlImage MakeTarget(const Plan& plan, int reference, int planes)
{
    CStlImage target(EmptyStack(plan, planes));
    plan.lights.Describe(reference, target);
    for (int plane = plan.planes; plane < planes; ++plane) { // the colours of a mosaic
        target.SetLevel(plane, target.GetLevelMin(0), target.GetLevelMax(0));
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

void Combine(const Options& options, PreparedLights& lights, Result& result, const Run& run)
{
    const Plan& plan = lights.GetPlan();
    const int planes = lights.Frames().Planes();
    const int used = static_cast<int>(UsedFrames(result.frames).size());
    WatchedLights watched(lights.Frames(), result.frames.size());
    result.image = MakeTarget(plan, result.referenceLight, planes);
    const auto make = [&](bool isWanted) { return isWanted ? EmptyStack(plan, planes) : CStlImage(); };
    result.coverage = make(options.wantsCoverage);
    CStlImage low(make(options.wantsRejected));
    CStlImage high(make(options.wantsRejected));
    const auto wanted = [](CStlImage& counts) { return counts.GetPlanes() > 0 ? &counts : nullptr; };
    const CombineTarget target{result.image, 0, wanted(result.coverage), wanted(low), wanted(high)};
    const CombinePlan combining{.frames = lights.Placements(),
                                .grid = {plan.width, plan.height},
                                .rule = RuleOf(options, used),
                                .coverage = options.coverage,
                                .blank = CommonBlank(plan.lights),
                                .memory = plan.lights.BandMemory()};
    if (!options.method) {
        result.rejection = ChosenRejection(options.reject, CombineOf(options), used);
    }
    CombineFrames(combining, watched, target, run, "Combining lights...");
    result.image.UnlockAll();
    LeaveOutEmpty(watched, options.coverage, result.frames);
    if (options.wantsRejected) {
        result.rejected = JoinRejected(low, high);
    }
}

} // namespace

Result Stack(const Options& options, const Run& run)
{
    Result result;
    Stopwatch stopwatch(result.laps);
    PreparedLights lights(options, result, stopwatch, run);
    lights.Register();
    CheckEnoughUsed(result);
    Combine(options, lights, result, run);
    CheckEnoughUsed(result); // once more: combining has told which lights are empty
    result.header = DescribeStack(options, lights.GetPlan(), result);
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
