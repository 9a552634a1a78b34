#include "corvane/restore/lucy_engine.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <vector>

#include "corvane/core/convolver.h"
#include "corvane/resources/string_table.h"
#include "corvane/restore/grid.h"
#include "corvane/restore/lucy_rows.h"
#include "corvane/restore/region.h"
#include "corvane/restore/star_floor.h"
#include "corvane/restore/total_variation.h"

namespace corvane {

namespace {

constexpr double kLeastSensitivity = 0.001; // of the largest
constexpr double kLineTolerance = 0.01;
constexpr int kLineRounds = 20;
constexpr float kLeastRise = 0.001F; // of the level of the data, above the floor
constexpr double kFlat = 0.1;        // deviations of the noise: a slope below counts as none

class LucyEngine {
public:
    /// The floor is of the plane's size, or empty.
    LucyEngine(const float* data, const std::vector<float>& floor, const LucyJob& job, const Run& run, int plane);

    Restored Restore();
    /// Writes the restored plane, but for what is saturated.
    void Write(float* data);

private:
    void LeaveOutSaturated();
    void Start();
    void SetPsf();
    void Stand();
    const Samples& Image();
    void MakeSensitivity();
    LucyEnd Iterate(int iteration);
    void Correct();
    LucyIteration Advance(int iteration);
    std::vector<LucyIteration::Negative> RemoveNegatives(Samples& step);
    double FindFactor(double least, double most, Slope slope);
    double LeastSample() const;
    LucyStart Beginning() const;
    RestoreState State(int iteration) const { return {plane_, iteration, job_.iterations, chiSquare_}; }

    const LucyJob& job_;
    const Run& run_;
    RestoreProgress progress_;
    int plane_;
    Grid grid_;
    Convolver convolver_;
    LucyRows rows_;
    Samples sensitivity_;
    Samples estimate_;
    Samples model_; ///< the estimate, convolved
    Samples step_;
    Samples modelStep_;
    Samples previousStep_;
    Samples previousModelStep_;
    Samples floor_;     ///< below the estimate; empty: 0
    Samples image_;     ///< the estimate on the floor, where there is one
    Samples curvature_; ///< with damping
    TotalVariation variation_;
    bool isBelowZero_ = true; ///< samples of the estimate may be
    double chiSquare_ = 0.0;
};

LucyEngine::LucyEngine(const float* data, const std::vector<float>& floor, const LucyJob& job, const Run& run,
                       int plane)
    : job_(job), run_(run), progress_(run), plane_(plane), grid_(job.width, job.height, job.psfWidth, job.psfHeight),
      convolver_(grid_.Width(), grid_.Height(), run.Threads()),
      rows_(grid_.Size(), job.gain, job.readNoise, run.Threads()), sensitivity_(grid_.Size()),
      estimate_(rows_.loops.Make(0.0F)), model_(grid_.Size()), step_(rows_.loops.Make(0.0F)), modelStep_(grid_.Size()),
      previousStep_(grid_.Size()), previousModelStep_(grid_.Size()),
      variation_(grid_.Width(), grid_.Height(), run.Threads())
{
    grid_.Place(data, rows_.data.data());
    grid_.Fill(1.0F, rows_.weight.data());
    if (!floor.empty()) {
        floor_ = rows_.loops.Make(0.0F);
        image_.resize(grid_.Size());
        grid_.Place(floor.data(), floor_.data());
    }
    if (job.damping > 0.0) {
        curvature_.resize(grid_.Size());
    }
}

Restored LucyEngine::Restore()
{
    if (job_.threshold > 0.0) {
        rows_.LeaveOut(LeastSample());
    }
    LeaveOutSaturated();
    Start();
    run_.Tell(Beginning());
    LucyEnd end = LucyEnd::kNone;
    for (int n = 0; n < job_.iterations && end == LucyEnd::kNone;) {
        end = Iterate(++n);
    }
    return end == LucyEnd::kNotANumber ? Restored::kNotANumber : Restored::kDone;
}

/// Below which noise alone does not carry a sample.
double LucyEngine::LeastSample() const
{
    const double variance = job_.readNoise * job_.readNoise / job_.gain / job_.gain;
    return variance >= 0.0 ? -std::sqrt(variance) * job_.threshold : 0.0;
}

void LucyEngine::LeaveOutSaturated()
{
    for (int y = 0; y < job_.height && job_.isSaturated != nullptr; ++y) {
        const char* const isSaturated = job_.isSaturated->data() + static_cast<std::ptrdiff_t>(y) * job_.width;
        float* const weights =
            rows_.weight.data() + static_cast<std::ptrdiff_t>(grid_.Top() + y) * grid_.Width() + grid_.Left();
        for (int x = 0; x < job_.width; ++x) {
            weights[x] = isSaturated[x] != 0 ? 0.0F : weights[x];
        }
    }
}

void LucyEngine::Write(float* data)
{
    if (job_.isSaturated == nullptr) {
        grid_.Take(Image().data(), data);
        return;
    }
    std::vector<float> restored(job_.isSaturated->size());
    grid_.Take(Image().data(), restored.data());
    for (std::size_t i = 0; i < restored.size(); ++i) {
        data[i] = (*job_.isSaturated)[i] != 0 ? data[i] : restored[i];
    }
}

/// The first estimate, the transfer function, sensitivity and model.
void LucyEngine::Start()
{
    progress_.Open(plane_ == 0 ? IDS_LUCY_INIT : IDS_LUCY_INIT_PLANES, plane_);
    progress_.Reach(5.0);
    const double mean = rows_.Mean();
    const double level = mean >= 0.0 ? mean : 1.0;
    if (job_.initial != nullptr) {
        grid_.Place(job_.initial, estimate_.data());
    } else {
        grid_.Fill(static_cast<float>(level), estimate_.data());
    }
    SetPsf();
    progress_.Reach(10.0);
    MakeSensitivity();
    Stand();
    convolver_.Convolve(Image().data(), model_.data(), progress_.Between(30.0, 90.0));
    variation_.SetLeast(kFlat * std::sqrt(rows_.VarianceAt(level)));
    progress_.Reach(90.0);
    chiSquare_ = rows_.ReducedChiSquare(model_);
    progress_.Reach(100.0);
}

/// Takes the function from the job, without what is below 0.
void LucyEngine::SetPsf()
{
    const Grid ofPsf(job_.psfWidth, job_.psfHeight, job_.width, job_.height);
    ofPsf.Place(job_.psf, step_.data());
    std::replace_if(
        step_.begin(), step_.end(), [](float v) { return v < 0.0F; }, 0.0F);
    if (job_.isPsfCentred) {
        convolver_.SetPsf(step_.data(), ofPsf.Middle());
    } else {
        convolver_.SetPsf(step_.data());
    }
}

/// Makes the first estimate what it, or else the data, have above the floor: a little everywhere, since nothing would
/// grow from 0.
void LucyEngine::Stand()
{
    if (!floor_.empty()) {
        const float* const first = job_.initial != nullptr ? estimate_.data() : rows_.data.data();
        rows_.loops.Fill(estimate_, [=, e = estimate_.data(), f = floor_.data()](std::size_t i) {
            return e[i] > 0.0F ? std::max(first[i] - f[i], kLeastRise * e[i]) : 0.0F;
        });
    }
}

/// The estimate on its floor.
const Samples& LucyEngine::Image()
{
    if (floor_.empty()) {
        return estimate_;
    }
    rows_.loops.Fill(image_, [e = estimate_.data(), f = floor_.data()](std::size_t i) { return e[i] + f[i]; });
    return image_;
}

LucyStart LucyEngine::Beginning() const
{
    return {.state = State(0),
            .data = rows_.data.data() + grid_.Top() * static_cast<std::ptrdiff_t>(grid_.Width()) + grid_.Left(),
            .stride = grid_.Width(),
            .width = job_.width,
            .height = job_.height,
            .left = grid_.Left(),
            .top = grid_.Top(),
            .least = LeastSample(),
            .sigmas = job_.threshold};
}

/// How much of what each sample sends out is seen.
void LucyEngine::MakeSensitivity()
{
    convolver_.Correlate(rows_.weight.data(), sensitivity_.data(), progress_.Between(10.0, 30.0));
    const double least = kLeastSensitivity * *std::max_element(sensitivity_.begin(), sensitivity_.end());
    for (std::size_t i = 0; i < sensitivity_.size(); ++i) {
        const bool isSeen = sensitivity_[i] >= least;
        const bool isDivisor = isSeen & (sensitivity_[i] > 0.0F); // all of it is 0 when no sample counts
        sensitivity_[i] = isDivisor ? sensitivity_[i] : 1.0F;
        estimate_[i] = isSeen ? estimate_[i] : 0.0F;
    }
}

LucyEnd LucyEngine::Iterate(int iteration)
{
    progress_.OpenIteration(IDS_LUCY, IDS_LUCY_PLANE, plane_, iteration);
    Correct();
    LucyIteration done;
    if (job_.mode == LucyMode::kPlain || job_.damping > 0.0) {
        rows_.Move(1.0, step_, estimate_);
        convolver_.Convolve(Image().data(), model_.data(), progress_.Between(40.0, 80.0));
        progress_.Reach(80.0);
        chiSquare_ = rows_.ReducedChiSquare(model_);
    } else {
        convolver_.Convolve(step_.data(), modelStep_.data(), progress_.Between(40.0, 80.0));
        done = Advance(iteration);
        progress_.Reach(80.0);
        chiSquare_ = rows_.MoveModel(done.factor, modelStep_, model_);
        step_.swap(previousStep_);
        modelStep_.swap(previousModelStep_);
    }
    progress_.Reach(100.0);
    done.state = State(iteration);
    done.target = job_.target;
    done.end = std::isnan(chiSquare_)      ? LucyEnd::kNotANumber
               : chiSquare_ <= job_.target ? LucyEnd::kReached
                                           : LucyEnd::kNone;
    run_.Tell(done);
    return done.end;
}

/// Makes the step from the correction factor.
void LucyEngine::Correct()
{
    rows_.Ratios(model_, step_);
    convolver_.Correlate(step_.data(), step_.data(), progress_.Between(0.0, 40.0));
    if (job_.damping > 0.0) {
        variation_.FindCurvature(Image(), curvature_);
        rows_.loops.Fill(curvature_, [damping = job_.damping, c = curvature_.data(), s = sensitivity_.data()](
                                         std::size_t i) { return s[i] * (1.0 - damping * c[i]); });
    }
    rows_.ToSteps(estimate_, job_.damping > 0.0 ? curvature_ : sensitivity_, step_);
}

/// Moves estimate and model along the step, or along a direction made of it and of the one before, from the second
/// iteration on.
LucyIteration LucyEngine::Advance(int iteration)
{
    LucyIteration done;
    const bool isCombined = job_.mode == LucyMode::kTurbo && iteration >= 2;
    double share = 0.0;
    StepLimits limits{};
    if (isCombined) {
        share = rows_.DirectionShare(previousModelStep_, modelStep_, model_);
        limits = rows_.Combine(share, step_, estimate_, previousStep_);
    }
    done.negatives = RemoveNegatives(isCombined ? previousStep_ : step_);
    const bool isTurbo = isCombined && limits.most >= 1.0;
    Slope slope{};
    if (isTurbo) {
        slope = rows_.CombinedSlope(share, model_, modelStep_, previousModelStep_);
        step_.swap(previousStep_);
        modelStep_.swap(previousModelStep_);
    } else {
        limits = rows_.LimitsOf(estimate_, step_);
        slope = rows_.SlopeAt(model_, modelStep_, 1.0);
    }
    done.mode = isTurbo ? LucyMode::kTurbo : LucyMode::kAccelerated;
    done.least = isTurbo ? limits.least : 1.0;
    done.most = limits.most;
    done.factor = FindFactor(done.least, done.most, slope);
    isBelowZero_ = rows_.Move(done.factor, step_, estimate_);
    return done;
}

std::vector<LucyIteration::Negative> LucyEngine::RemoveNegatives(Samples& step)
{
    std::vector<LucyIteration::Negative> negatives;
    for (std::size_t i = 0; i < estimate_.size() && isBelowZero_; ++i) {
        if (estimate_[i] < 0.0F) {
            negatives.push_back({i, estimate_[i]});
            estimate_[i] = 0.0F;
            step[i] = 0.0F;
        }
    }
    return negatives;
}

/// The multiple of the step of greatest likelihood, by Newton's rule, within limits. `slope` is that of the whole step.
double LucyEngine::FindFactor(double least, double most, Slope slope)
{
    double factor = 1.0;
    for (int round = 1; round <= kLineRounds; ++round) {
        const double newton = slope.first / slope.second;
        if (std::isnan(newton)) { // a step of zeros
            break;
        }
        const double target = factor + newton;
        const double move = target >= most ? (most - factor) * 0.5 : target <= least ? (least - factor) * 0.5 : newton;
        factor += move;
        if (!(std::fabs(move) > kLineTolerance) || round == kLineRounds) {
            break;
        }
        slope = rows_.SlopeAt(model_, modelStep_, factor);
    }
    return factor;
}

/// Which samples of a region reach the ceiling of their plane, in any of the planes; empty where there is none.
std::vector<char> SaturatedSamples(Region& region, const std::vector<double>& ceilings)
{
    const bool hasCeiling = std::any_of(ceilings.begin(), ceilings.end(), [](double c) { return std::isfinite(c); });
    std::vector<char> isSaturated(hasCeiling ? static_cast<std::size_t>(region.Width()) * region.Height() : 0);
    for (int plane = 0; hasCeiling && plane < region.Planes(); ++plane) {
        const float* const samples = region.Plane(plane);
        const double ceiling = ceilings[static_cast<std::size_t>(plane)];
        for (std::size_t i = 0; i < isSaturated.size(); ++i) {
            isSaturated[i] |= samples[i] >= ceiling ? 1 : 0;
        }
    }
    return isSaturated;
}

} // namespace

Restored RestoreLucy(float* data, const LucyJob& job, const Run& run, int plane)
{
    try {
        const std::vector<float> floor =
            job.skyNoise > 0.0 ? StarFloor(data, job, run.Threads()) : std::vector<float>();
        const platform::KeptThreads threads(ThreadsFor(static_cast<long long>(job.width) * job.height, run.Threads()));
        LucyEngine engine(data, floor, job, run, plane);
        const Restored end = engine.Restore();
        engine.Write(data);
        return end;
    } catch (const std::bad_alloc&) {
        return Restored::kNoMemory;
    } catch (const Cancelled&) {
        return Restored::kCancelled;
    }
}

Restored RestoreLucy(CStlImage& image, const CRect* rect, LucyJob job, const Run& run,
                     const std::vector<double>& ceilings)
{
    Region region(image, rect, NeedsOf(job));
    job.width = region.Width();
    job.height = region.Height();
    const std::vector<char> isSaturated = SaturatedSamples(region, ceilings);
    job.isSaturated = isSaturated.empty() ? nullptr : &isSaturated;
    return RestorePlanes(region, image, [&](float* plane, int number) { return RestoreLucy(plane, job, run, number); });
}

RestorationNeeds NeedsOf(const LucyJob& job)
{
    const int more = (job.damping > 0.0 ? 1 : 0) + (job.skyNoise > 0.0 ? 3 : 0); // floor, image and the plane's floor
    return RestorationNeeds::For(job.psfWidth, job.psfHeight, more);
}

} // namespace corvane
