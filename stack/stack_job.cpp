#include "stack/stack_job.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

#include "corvane/core/error.h"
#include "corvane/core/gaps.h"
#include "corvane/core/sample_memory.h"
#include "corvane/core/text.h"
#include "io/sky.h"
#include "stack/calibrate/masters.h"
#include "stack/canvas.h"
#include "stack/combine/drizzle.h"
#include "stack/combine/rejection_tally.h"
#include "stack/describe.h"
#include "stack/registered.h"

namespace corvane::stack {

namespace {

constexpr std::size_t kReasonsTold = 20;

/// Refuses a stack of nothing but one light of several, and says what was wrong with the others.
void CheckEnoughUsed(const Registration& result)
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

/// An image of zeros.
CStlImage EmptyImage(int width, int height, int planes)
{
    return {-32, width, height, planes, 1.0, 0.0, 1};
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

/// Gives samples the record of the reference: its format, coordinates and levels. The blank stays.
void GiveRecord(const Plan& plan, int reference, CStlImage& image)
{
    const bool hasBlank = image.IsBlankUsed() != 0;
    const int blank = hasBlank ? static_cast<int>(image.GetBlank()) : 0;
    plan.lights.Describe(reference, image);
    for (int plane = plan.planes; plane < image.GetPlanes(); ++plane) { // the colours of a mosaic
        image.SetLevel(plane, image.GetLevelMin(0), image.GetLevelMax(0));
    }
    if (!plan.onto.IsEmpty()) {
        CStlImage record;
        plan.onto.Describe(0, record);
        image.SetCoordinates(record.GetCoordinates());
    }
    image.SetBlankUsed(hasBlank ? 1 : 0);
    image.SetBlank(blank);
    image.SetOwnLevel(0);
}

/// Values dropped below, above and both together, as three planes, each for all planes of the stack.
void JoinRejected(const CStlImage& low, const CStlImage& high, CStlImage& joined)
{
    const int width = low.GetWidth();
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
}

/// Reads lights, and takes down which of them have shown a sample that is defined.
class WatchedLights : public FrameSource {
public:
    WatchedLights(LightFrames& frames, std::size_t count) : frames_(frames), shows_(count) {}

    FrameFacts Facts(int light) const override { return frames_.Facts(light); }
    void Read(int light, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride) override
    {
        frames_.Read(light, firstRow, rowCount, samples, planeStride);
        const FrameFacts facts = Facts(light);
        const std::ptrdiff_t count = static_cast<std::ptrdiff_t>(rowCount) * facts.width;
        char& shows = shows_[static_cast<std::size_t>(light)];
        for (int plane = 0; plane < facts.planes && shows == 0; ++plane) {
            shows = HoldsDefined(samples + plane * planeStride, count, facts.IsBlank()) ? 1 : 0;
        }
    }

    const std::vector<char>& Shows() const { return shows_; }

private:
    LightFrames& frames_;
    std::vector<char> shows_; ///< a byte each: threads enter different lights side by side
};

/// Leaves out the lights that have added nothing. With all of them nothing is left to stack, and so it is when a pixel
/// must be in all lights.
void LeaveOutEmpty(const std::vector<char>& shows, Coverage coverage, std::vector<FrameReport>& frames)
{
    const char* const reason = "has no sample that is defined";
    for (const int light : UsedFrames(frames)) {
        FrameReport& frame = frames[static_cast<std::size_t>(light)];
        if (shows[static_cast<std::size_t>(light)] == 0) {
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
    const auto lightsUsed = static_cast<int>(placements.size());
    CombineRule rule = RuleOf(options, lightsUsed);
    return {.frames = std::move(placements),
            .grid = grid,
            .rule = std::move(rule),
            .coverage = options.coverage,
            .grow = GrowthOf(options, lightsUsed),
            .interpolation = options.interpolation,
            .blank = CommonBlank(plan.lights),
            .memory = plan.lights.BandMemory(),
            .areBandsLong = !plan.lights.StaysOpen()};
}

/// Enters what a tally has counted; nothing where nothing is rejected.
void TakeCounts(const RejectionTally& tally, const CombinePlan& combining, Band& band)
{
    const std::vector<RejectedValues>& counted = tally.OfFrames();
    if (!counted.empty()) {
        band.rejectedOf.resize(band.shows.size());
        band.rejectedPlaces = tally.Picture();
    }
    for (std::size_t i = 0; i < counted.size(); ++i) {
        band.rejectedOf[static_cast<std::size_t>(combining.frames[i].frame)] = counted[i];
    }
}

CStlImage* Wished(CStlImage& image)
{
    return image.GetPlanes() > 0 ? &image : nullptr;
}

/// True of hits within the lights, row by row as they are looked up.
bool LieIn(const LightHits& hits, const Plan& plan)
{
    const auto areInside = [&](const std::vector<CosmicHit>& plane) {
        const auto isInside = [&](const CosmicHit& hit) {
            return hit.x >= 0 && hit.x < plan.width && hit.y >= 0 && hit.y < plan.height;
        };
        const auto isBefore = [](const CosmicHit& a, const CosmicHit& b) { return a.y < b.y; };
        return std::all_of(plane.begin(), plane.end(), isInside) &&
               std::is_sorted(plane.begin(), plane.end(), isBefore);
    };
    return hits.size() <= static_cast<std::size_t>(plan.planes) && std::all_of(hits.begin(), hits.end(), areInside);
}

/// The options that a plan was made with, which lie in a file: as those that are given.
Options JudgedOptions(Options options)
{
    CheckOptions(options);
    CheckParts(options);
    return options;
}

} // namespace

StackJob::StackJob(Options options, Run run)
    : options_(std::move(options)), run_(std::move(run)), stopwatch_(result_.laps),
      lights_(options_, result_, stopwatch_, run_)
{}

StackJob::StackJob(SavedPlan plan, Run run) : StackJob(JudgedOptions(std::move(plan.options)), std::move(run))
{
    for (std::size_t i = 0; i < plan.lights.size(); ++i) {
        Take(static_cast<int>(i), std::move(plan.lights[i]));
    }
    lights_.TakePlaces(plan.referenceLight, plan.reference, std::move(plan.notes));
}

StackJob::~StackJob() = default;

void StackJob::Calibrate()
{
    lights_.Calibrate();
}

void StackJob::Take(int light, LightRecord record)
{
    CheckRecord(light, record);
    lights_.Take(light, std::move(record));
}

/// Refuses a record that does not hold what the options ask for, or tells of another light.
void StackJob::CheckRecord(int light, const LightRecord& record) const
{
    const Plan& plan = lights_.GetPlan();
    const auto planes = static_cast<std::size_t>(plan.StackPlanes());
    const NormaliseMethod method = NormaliseOf(options_);
    const bool needsLevels = method != NormaliseMethod::kNone || options_.wantsReport;
    const SeenLight& seen = record.seen;
    const bool hasLevels = seen.levels.size() == planes || (!needsLevels && seen.levels.empty());
    const bool hasSky = method != NormaliseMethod::kLocal || seen.sky.size() == planes;
    const bool isSame = record.report.file == plan.lights.Path(light);
    if (!hasLevels || !hasSky || !isSame || !LieIn(record.hits, plan)) {
        throw FileError(plan.lights.Path(light), "what was measured is of another light");
    }
}

void StackJob::Register()
{
    lights_.Register();
    CheckEnoughUsed(result_);
}

LightRecord StackJob::Measure(int light)
{
    lights_.Calibrate();
    lights_.Measure({light});
    return lights_.RecordOf(light);
}

void StackJob::Place()
{
    lights_.Calibrate();
    lights_.Place();
    CheckEnoughUsed(result_);
}

SavedPlan StackJob::GetPlan() const
{
    SavedPlan plan{options_, {}, result_.referenceLight, result_.reference, result_.notes};
    for (int i = 0; i < lights_.GetPlan().lights.Count(); ++i) {
        plan.lights.push_back(lights_.RecordOf(i));
        plan.lights.back().seen.stars.clear();
    }
    return plan;
}

std::string StackJob::WayOfReading(int light) const
{
    const Plan& plan = lights_.GetPlan();
    const auto i = static_cast<std::size_t>(light);
    return std::to_string(plan.width) + " x " + std::to_string(plan.height) +
           (plan.lights.IsUpsideDown(light) ? " turned" : "") + " dark " + NumberText(plan.darkScales[i]) +
           (plan.isMosaic ? " mosaic " : " ") + (plan.patterns.empty() ? "" : NameOf(plan.patterns[i]));
}

const CombinePlan& StackJob::Combining()
{
    if (!combining_) {
        combining_ = PlanOf(options_, lights_, !options_.follow.empty());
    }
    return *combining_;
}

Grid StackJob::StackGrid()
{
    return GridOf(options_, Combining().grid);
}

Band StackJob::EmptyBand(const RowSpan& rows)
{
    const Grid grid = StackGrid();
    const Grid& reference = Combining().grid; // on which a drizzled stack is judged
    const RowSpan made = options_.drizzle ? DrizzledRows(rows, reference, grid) : rows;
    if (made.end <= made.first) {
        throw ParameterError("band", "so low", "holds no row of the stack; take fewer bands");
    }
    const int planes = lights_.GetPlan().StackPlanes();
    const auto make = [&](bool isWanted) {
        return isWanted ? EmptyImage(grid.width, made.end - made.first, planes) : CStlImage();
    };
    Band band;
    band.firstRow = made.first;
    band.firstJudged = rows.first;
    band.image = make(true);
    band.coverage = make(options_.wantsCoverage);
    band.weights = make(options_.wantsWeights);
    band.noise = make(options_.wantsNoise);
    if (options_.wantsRejected) {
        band.rejected = EmptyImage(reference.width, rows.end - rows.first, 3);
    }
    band.shows.resize(options_.lights.size());
    return band;
}

Band StackJob::EmptyStack()
{
    Band whole(EmptyBand({0, Rows()}));
    if (options_.wantsReport) {
        TakeCounts(RejectionTally(Combining()), Combining(), whole);
    }
    return whole;
}

Band StackJob::Combine(const RowSpan& rows)
{
    lights_.Calibrate();
    const CombinePlan& combining = Combining();
    const Plan& plan = lights_.GetPlan();
    Band band(EmptyBand(rows));
    DropSpareMemory(); // of lights that were measured whole: bands of rows have no use for it
    WatchedLights watched(lights_.Frames(), options_.lights.size());
    RejectionTally tally(combining);
    RejectionTally* const wantedTally = options_.wantsReport ? &tally : nullptr;
    const auto counts = [&, &all = band.rejected] {
        return options_.wantsRejected ? EmptyImage(all.GetWidth(), all.GetHeight(), plan.StackPlanes()) : CStlImage();
    };
    CStlImage low(counts());
    CStlImage high(counts());
    if (options_.drizzle) {
        DrizzleFrames({combining, StackGrid(), options_.drop, options_.dropShape, plan.patterns, rows}, watched,
                      {band.image, Wished(band.weights), Wished(band.coverage), Wished(low), Wished(high),
                       Wished(band.noise), wantedTally},
                      run_, "Dropping lights...");
    } else {
        CombineFrames(
            combining, watched,
            {band.image, rows.first, Wished(band.coverage), Wished(low), Wished(high), Wished(band.noise), wantedTally},
            run_, "Combining lights...");
    }
    band.image.UnlockAll();
    JoinRejected(low, high, band.rejected);
    band.shows = watched.Shows();
    if (options_.wantsReport) {
        TakeCounts(tally, combining, band);
    }
    return band;
}

void StackJob::TakeImage(Band& whole)
{
    result_.image = std::move(whole.image);
    result_.coverage = std::move(whole.coverage);
    result_.weights = std::move(whole.weights);
    result_.rejected = std::move(whole.rejected);
    result_.noise = std::move(whole.noise);
    GiveRecord(lights_.GetPlan(), result_.referenceLight, result_.image);
}

void StackJob::TakeRejected(Band& whole)
{
    const std::vector<Placement>& used = Combining().frames;
    if (!options_.method) {
        const auto count = static_cast<int>(used.size());
        result_.rejection = SettledRejection(options_.reject, CombineOf(options_), count).method;
    }
    for (std::size_t i = 0; i < used.size() && !whole.rejectedOf.empty(); ++i) {
        const auto light = static_cast<std::size_t>(used[i].frame);
        result_.frames[light].rejected = whole.rejectedOf[light];
    }
    result_.rejectedPlaces = std::move(whole.rejectedPlaces);
}

Result StackJob::Finish(Band whole)
{
    TakeRejected(whole);
    TakeImage(whole);
    LeaveOutEmpty(whole.shows, options_.coverage, result_.frames);
    result_.depth = lights_.DepthOf(result_.image);
    CheckEnoughUsed(result_); // once more: combining has told which lights are empty
    result_.header = DescribeStack(options_, lights_.GetPlan(), result_);
    CarryToGrid(StackGrid(), result_.image, result_.header);
    if (options_.wantsBoth) {
        CombineStars();
    }
    if (!options_.registered.empty()) {
        WriteRegistered(options_, lights_.GetPlan(), Combining(), lights_.Frames(), result_, run_);
    }
    stopwatch_.End("combine");
    return std::move(result_);
}

/// Stacks the stars that the stack does not follow, of the same lights.
void StackJob::CombineStars()
{
    Options ofStars = options_;
    ofStars.follow.clear();
    const Plan& plan = lights_.GetPlan();
    const CombinePlan combining = PlanOf(ofStars, lights_, false);
    result_.stars = EmptyImage(combining.grid.width, combining.grid.height, plan.StackPlanes());
    CombineFrames(combining, lights_.Frames(), {result_.stars}, run_, "Combining stars...");
    GiveRecord(plan, result_.referenceLight, result_.stars);
    result_.starsHeader = DescribeStack(ofStars, plan, result_);
    CarryToGrid(combining.grid, result_.stars, result_.starsHeader);
}

void CheckParts(const Options& options)
{
    if (options.wantsBoth) {
        throw ParameterError("both", "given", "a plan is one of one stack; the stars take a plan of their own");
    }
    if (!options.registered.empty()) {
        throw ParameterError("registered", options.registered, "lights are written where a stack is made in one piece");
    }
}

} // namespace corvane::stack
