#include "stack/stack.h"

#include <algorithm>
#include <chrono>

#include "io/error.h"
#include "stack/calibrated_frames.h"
#include "stack/combine.h"
#include "stack/describe.h"
#include "stack/masters.h"
#include "stack/plan.h"
#include "stack/progress.h"
#include "stack/reference.h"
#include "stack/register.h"

namespace corvane::stack {

namespace {

constexpr std::size_t kStars = 2000;
constexpr std::size_t kReasonsTold = 20;

/// Keeps the times of the stages of a result.
class Stopwatch {
public:
    explicit Stopwatch(Result& result) : result_(result) {}

    void Lap(const char* stage)
    {
        const auto now = std::chrono::steady_clock::now();
        result_.stages.push_back({stage, std::chrono::duration<double>(now - start_).count()});
        start_ = now;
    }

private:
    Result& result_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// For each light, its exposure as a multiple of the darks' exposure; 1 where these match.
std::vector<double> DarkScales(const Plan& plan)
{
    std::vector<double> scales;
    for (const auto& exposure : plan.exposures) {
        scales.push_back(ExposuresMatch(exposure, plan.darkExposure) ? 1.0 : *exposure / *plan.darkExposure);
    }
    return scales;
}

/// The stars of the first light, those at the sensor's ceiling marked.
std::vector<Star> StarsOfReference(FrameSet& lights, const CStlImage& calibrated)
{
    const int plane = StarPlane(calibrated);
    std::vector<Star> stars = FindStars(calibrated, plane, MeasureSky(calibrated, plane), kStars);
    CStlImage raw(CalibratedFrames(lights, Masters(), 0.0, std::vector<double>(lights.Count(), 1.0))
                      .ReadImage(0, 0, calibrated.GetHeight()));
    lights.Describe(0, raw);
    MarkSaturated(raw, plane, stars);
    return stars;
}

ShiftRegistration MakeRegistration(const Options& options, FrameSet& lights, CalibratedFrames& frames, Result& result)
{
    const io::FrameInfo& info = lights.Info(0);
    const CStlImage reference(frames.ReadImage(0, 0, info.height));
    const std::vector<Star> stars = StarsOfReference(lights, reference);
    result.reference = options.reference;
    if (!result.reference) {
        result.reference = ChooseReference(stars, info.width, info.height, options.size, options.search);
    }
    if (!result.reference) {
        throw io::Error(info.path, "shows no star that frames can be aligned on; choose a place with --reference X,Y");
    }
    return {reference, *result.reference, stars, options};
}

void Align(const Options& options, FrameSet& lights, CalibratedFrames& frames, Result& result)
{
    Progress progress(options.progressWindow, "Aligning frames...", lights.Count());
    const ShiftRegistration registration = MakeRegistration(options, lights, frames, result);
    const RowSpan rows = registration.Rows();
    progress.Step();
    for (int i = 1; i < lights.Count(); ++i) {
        FrameReport& report = result.frames[i];
        Match match = registration.Find(frames.ReadImage(i, rows.first, rows.end - rows.first));
        report.used = match.reason.empty();
        report.reason = std::move(match.reason);
        report.correlation = match.correlation;
        report.dx = report.used ? match.dx : 0.0;
        report.dy = report.used ? match.dy : 0.0;
        progress.Step();
    }
}

std::vector<int> UsedFrames(const std::vector<FrameReport>& frames)
{
    std::vector<int> used;
    for (int i = 0; i < static_cast<int>(frames.size()); ++i) {
        if (frames[i].used) {
            used.push_back(i);
        }
    }
    return used;
}

/// Refuses a stack of nothing but the reference, and says what was wrong with the others.
void CheckEnoughUsed(const std::vector<FrameReport>& frames)
{
    if (frames.size() == 1 || UsedFrames(frames).size() > 1) {
        return;
    }
    std::string reasons;
    for (std::size_t i = 1; i < frames.size() && i <= kReasonsTold; ++i) {
        reasons += (i == 1 ? "" : "; ") + frames[i].file + ": " + frames[i].reason;
    }
    if (frames.size() > kReasonsTold + 1) {
        reasons += "; and " + std::to_string(frames.size() - 1 - kReasonsTold) + " more";
    }
    throw io::Error(frames[0].file, "no other light can be aligned with it: " + reasons);
}

/// An empty image with the record of the first light: its format, coordinates and levels.
void MakeTarget(const Plan& plan, CStlImage& image)
{
    CStlImage target(-32, plan.width, plan.height, plan.planes, 1.0, 0.0, 1);
    plan.lights.Describe(0, target);
    target.SetBlankUsed(0);
    target.SetBlank(0);
    target.SetOwnLevel(0);
    image.Swap(&target);
}

void Combine(const Options& options, Plan& plan, CalibratedFrames& frames, Result& result)
{
    const std::vector<int> used = UsedFrames(result.frames);
    std::vector<Placement> placements;
    for (const int i : used) {
        Placement placement{Alignment(), frames.Blank(i)};
        placement.alignment.dx = result.frames[i].dx;
        placement.alignment.dy = result.frames[i].dy;
        placements.push_back(placement);
    }
    MakeTarget(plan, result.image);
    const CombineJob job{options.method, CommonBlank(plan.lights), BandMemory(plan.lights), options.progressWindow,
                         "Combining frames..."};
    const RowReader read = [&](int i, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) {
        frames.Read(used[i], firstRow, rowCount, samples, planeStride);
    };
    CombineFrames(placements, read, job, result.image);
    result.image.UnlockAll();
}

} // namespace

Result Run(const Options& options)
{
    Result result;
    Stopwatch stopwatch(result);
    Plan plan = MakePlan(options);
    result.notes = plan.notes;
    for (const std::string& light : options.lights) {
        result.frames.push_back({light, true, "", 0.0, 0.0, 1.0});
    }
    stopwatch.Lap("check");
    CalibratedFrames frames(plan.lights, MakeMasters(plan, options.progressWindow), options.pedestal, DarkScales(plan));
    stopwatch.Lap("masters");
    if (options.align == AlignMethod::kShift && plan.lights.Count() > 1) {
        Align(options, plan.lights, frames, result);
        stopwatch.Lap("align");
    }
    CheckEnoughUsed(result.frames);
    Combine(options, plan, frames, result);
    Options done = options;
    done.reference = result.reference;
    result.header = DescribeStack(done, plan, result.frames);
    stopwatch.Lap("combine");
    return result;
}

} // namespace corvane::stack
