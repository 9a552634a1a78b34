#include "corvane/restore/lucy_engine.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>
#include <vector>

#include "corvane/resources/string_table.h"
#include "corvane/restore/convolver.h"
#include "corvane/restore/grid.h"
#include "corvane/restore/lucy_rows.h"

namespace corvane {

namespace {

constexpr double kLeastSensitivity = 0.001; // of the largest
constexpr double kLineTolerance = 0.01;
constexpr int kLineRounds = 20;

class LucyEngine {
public:
    LucyEngine(const float* data, const LucyJob& job, RestoreProgress& progress, int plane);

    void Run();
    /// Writes the restored plane.
    void Write(float* data) const { grid_.Take(estimate_.data(), data); }

private:
    void MaskNegatives();
    template <class... Values>
    void Print(const char* format, Values... values) const;
    void PrintPixel(std::size_t i) const;
    void Start();
    void MakeSensitivity();
    void Iterate(int iteration);
    void Correct();
    void Advance(int iteration);
    void RemoveNegatives();
    double FindFactor(double least, double most) const;
    void Move(double factor);
    double ReducedChiSquare(double from, double to);
    RestoreStage Stage(double from, double to) { return {progress_, from, to}; }

    const LucyJob& job_;
    RestoreProgress& progress_;
    int plane_;
    Grid grid_;
    double noise_; ///< the read-out noise as a variance in raw units, times the gain
    Convolver convolver_;
    std::vector<float> data_;
    std::vector<float> weight_;
    std::vector<float> sensitivity_;
    std::vector<float> estimate_;
    std::vector<float> model_; ///< the estimate, convolved
    std::vector<float> step_;
    std::vector<float> modelStep_;
    std::vector<float> previousStep_;
    std::vector<float> previousModelStep_;
    double chiSquare_ = 0.0;
};

LucyEngine::LucyEngine(const float* data, const LucyJob& job, RestoreProgress& progress, int plane)
    : job_(job), progress_(progress), plane_(plane), grid_(job.width, job.height, job.psfWidth, job.psfHeight),
      noise_(job.readNoise * job.readNoise / job.gain), convolver_(grid_.Width(), grid_.Height()), data_(grid_.Size()),
      weight_(grid_.Size()), sensitivity_(grid_.Size()), estimate_(grid_.Size()), model_(grid_.Size()),
      step_(grid_.Size()), modelStep_(grid_.Size()), previousStep_(grid_.Size()), previousModelStep_(grid_.Size())
{
    grid_.Place(data, data_.data());
    grid_.Fill(1.0F, weight_.data());
}

void LucyEngine::Run()
{
    MaskNegatives();
    Start();
    for (int n = 0; n < job_.iterations;) {
        Iterate(++n);
        if (!(chiSquare_ > job_.target)) { // NaN does not get better
            Print("chi-sq <= %g,  converged\n", job_.target);
            break;
        }
    }
}

template <class... Values>
void LucyEngine::Print(const char* format, Values... values) const
{
    if (job_.detail.diagnostics != nullptr) {
        std::fprintf(job_.detail.diagnostics, format, values...);
    }
}

/// Leaves out samples that noise alone does not carry so far below 0.
void LucyEngine::MaskNegatives()
{
    if (!(job_.threshold > 0.0)) {
        return;
    }
    const double variance = noise_ / job_.gain;
    const double limit = variance >= 0.0 ? std::sqrt(variance) * job_.threshold : 0.0;
    bool isFirst = true;
    for (std::size_t i = 0; i < data_.size(); ++i) {
        if (weight_[i] == 0.0F || !(data_[i] < -limit)) {
            continue;
        }
        weight_[i] = 0.0F;
        if (isFirst) {
            Print("List of pixels below threshold -%g (-%g sigma)\n", limit, job_.threshold);
        }
        PrintPixel(i);
        isFirst = false;
    }
}

/// Prints a sample with its place in the plane, and in the grid where that is larger; both count from 1.
void LucyEngine::PrintPixel(std::size_t i) const
{
    const int x = static_cast<int>(i % static_cast<std::size_t>(grid_.Width())) + 1;
    const int y = static_cast<int>(i / static_cast<std::size_t>(grid_.Width())) + 1;
    Print("pixel (%d,%d)", x - grid_.Left(), y - grid_.Top());
    if (grid_.Left() != 0 || grid_.Top() != 0) {
        Print("  [%d,%d]", x, y);
    }
    Print("; value %g\n", static_cast<double>(data_[i]));
}

/// The first estimate, the transfer function, sensitivity and model.
void LucyEngine::Start()
{
    progress_.Open(plane_ == 0 ? IDS_LUCY_INIT : IDS_LUCY_INIT_PLANES, plane_);
    Stage(0.0, 5.0).Reach(1.0);
    if (job_.initial != nullptr) {
        grid_.Place(job_.initial, estimate_.data());
    } else {
        const double mean = WeightedMean(data_, weight_);
        grid_.Fill(static_cast<float>(mean >= 0.0 ? mean : 1.0), estimate_.data());
    }
    Grid(job_.psfWidth, job_.psfHeight, job_.width, job_.height).Place(job_.psf, step_.data());
    std::replace_if(
        step_.begin(), step_.end(), [](float v) { return v < 0.0F; }, 0.0F);
    convolver_.SetPsf(step_.data(), Stage(5.0, 10.0));
    MakeSensitivity();
    convolver_.Convolve(estimate_.data(), model_.data(), Stage(30.0, 90.0));
    chiSquare_ = ReducedChiSquare(90.0, 100.0);
    Print("Initial chi-sq = %g\n", chiSquare_);
}

/// How much of what each sample sends out is seen.
void LucyEngine::MakeSensitivity()
{
    convolver_.Correlate(weight_.data(), sensitivity_.data(), Stage(10.0, 30.0));
    const double least = kLeastSensitivity * *std::max_element(sensitivity_.begin(), sensitivity_.end());
    for (std::size_t i = 0; i < sensitivity_.size(); ++i) {
        const bool isSeen = sensitivity_[i] >= least;
        const bool isDivisor = isSeen & (sensitivity_[i] > 0.0F); // all of it is 0 when no sample counts
        sensitivity_[i] = isDivisor ? sensitivity_[i] : 1.0F;
        estimate_[i] = isSeen ? estimate_[i] : 0.0F;
    }
}

void LucyEngine::Iterate(int iteration)
{
    progress_.OpenIteration(IDS_LUCY, IDS_LUCY_PLANE, plane_, iteration, job_.detail, chiSquare_);
    Correct();
    if (job_.mode == LucyMode::kPlain) {
        Move(1.0);
        convolver_.Convolve(estimate_.data(), model_.data(), Stage(40.0, 80.0));
    } else {
        convolver_.Convolve(step_.data(), modelStep_.data(), Stage(40.0, 80.0));
        Advance(iteration);
    }
    chiSquare_ = ReducedChiSquare(80.0, 100.0);
    Print("Iteration %d : chi-sq = %g\nTotal Iterations %d  ", iteration, chiSquare_, iteration);
}

/// Makes the step from the correction factor.
void LucyEngine::Correct()
{
    Ratios(data_, model_, weight_, noise_, step_);
    convolver_.Correlate(step_.data(), step_.data(), Stage(0.0, 40.0));
    ToSteps(estimate_, sensitivity_, step_);
}

/// Moves the estimate along the step, combined with the one before from the second iteration on.
void LucyEngine::Advance(int iteration)
{
    const bool isCombined = job_.mode == LucyMode::kTurbo && iteration >= 2;
    if (isCombined) {
        const double share = DirectionShare(previousModelStep_, modelStep_, model_, weight_, noise_, job_.gain);
        Combine(share, step_, previousStep_);
        Combine(share, modelStep_, previousModelStep_);
    }
    RemoveNegatives();
    StepLimits limits = LimitsOf(estimate_, step_);
    const bool isTurbo = isCombined && limits.most >= 1.0;
    if (isCombined && !isTurbo) { // back to the plain step, which is where the direction before was
        step_.swap(previousStep_);
        modelStep_.swap(previousModelStep_);
        limits = LimitsOf(estimate_, step_);
    }
    const double least = isTurbo ? limits.least : 1.0;
    const double factor = FindFactor(least, limits.most);
    Print("%s", isTurbo ? "Turbo iteration      " : "Accelerated iteration");
    Print("  CMIN = %g, CMAX = %g, C = %g\n", least, limits.most, factor);
    Move(factor);
    if (job_.mode == LucyMode::kTurbo) {
        previousStep_.swap(step_);
        previousModelStep_.swap(modelStep_);
    }
}

void LucyEngine::RemoveNegatives()
{
    for (std::size_t i = 0; i < estimate_.size(); ++i) {
        const bool isNegative = estimate_[i] < 0.0F;
        if (isNegative) {
            Print("Negative pixel (%d): %g\n", static_cast<int>(i), static_cast<double>(estimate_[i]));
        }
        estimate_[i] = isNegative ? 0.0F : estimate_[i];
        step_[i] = isNegative ? 0.0F : step_[i];
    }
}

/// The multiple of the step of greatest likelihood, by Newton's rule, within limits.
double LucyEngine::FindFactor(double least, double most) const
{
    double factor = 1.0;
    for (int round = 0; round < kLineRounds; ++round) {
        const Slope slope = LikelihoodSlope(data_, model_, modelStep_, weight_, noise_, factor);
        const double newton = slope.first / slope.second;
        if (std::isnan(newton)) { // a step of zeros
            break;
        }
        const double target = factor + newton;
        const double move = target >= most ? (most - factor) * 0.5 : target <= least ? (least - factor) * 0.5 : newton;
        factor += move;
        if (!(std::fabs(move) > kLineTolerance)) {
            break;
        }
    }
    return factor;
}

void LucyEngine::Move(double factor)
{
    AddMultiple(factor, step_, estimate_);
    AddMultiple(factor, modelStep_, model_);
}

double LucyEngine::ReducedChiSquare(double from, double to)
{
    const RestoreStage stage = Stage(from, to);
    stage.Reach(0.0);
    const double chiSquare = corvane::ReducedChiSquare(data_, model_, weight_, job_.gain, job_.readNoise);
    stage.Reach(1.0);
    return chiSquare;
}

} // namespace

Restored RestoreLucy(float* data, const LucyJob& job, CStlImage* owner, int plane)
{
    try {
        RestoreProgress progress(owner);
        LucyEngine engine(data, job, progress, plane);
        engine.Run();
        engine.Write(data);
        return Restored::kDone;
    } catch (const std::bad_alloc&) {
        return Restored::kNoMemory;
    } catch (const RestorationCancelled&) {
        return Restored::kCancelled;
    }
}

} // namespace corvane
