#pragma once

#include "corvane/restore/samples.h"

namespace corvane {

/// First derivative and negative second derivative of the likelihood along a step.
struct Slope {
    double first;
    double second;
};

/// By which multiples of a step the estimate stays at 0 or above.
struct StepLimits {
    double least; ///< -100 when no step is positive
    double most;  ///< 100 when no step is negative
};

/// The sums and maps of the iteration of Richardson and Lucy, over all samples of a grid. Threads share them.
class LucyRows {
public:
    /// For grids of so many samples.
    LucyRows(std::size_t count, double gain, double readNoise, int threads);

    SampleLoops loops; ///< over the samples of the grid
    Samples data;      ///< 0 at first
    Samples weight;    ///< 0 where a sample takes no part, else 1; 0 at first

    /// Leaves samples below a value out.
    void LeaveOut(double least);

    /// Mean of the data by weight; NaN when all weights are 0. To be asked before what follows, when data and weights
    /// are as they stay.
    double Mean();

    /// The variance of a sample of the model [raw units squared].
    double VarianceAt(double model) const { return (model + noise_) / gain_; }

    /// (data + noise) / (model + noise) * weight, where a denominator of 0 counts as 1; noise is the variance of the
    /// read-out noise over the gain, as it stands beside samples.
    void Ratios(const Samples& model, Samples& ratios) const;

    /// Turns correlated ratios into steps: estimate * steps / sensitivity - estimate.
    void ToSteps(const Samples& estimate, const Samples& sensitivity, Samples& steps) const;

    /// How much of the previous direction goes into the new one so that both are conjugate: their products, weighted by
    /// the curvature of the likelihood at the model, add up to 0. The weight is w w g / (model + noise), the inverse of
    /// the variance of a sample. 0 where there is no previous direction.
    /// R. Fletcher, C. M. Reeves, Computer J. 7, 149 (1964), with the conjugacy itself in place of their ratio.
    double DirectionShare(const Samples& previous, const Samples& current, const Samples& model);

    /// previous = direction + share * previous. Returns its limits, which samples of the estimate below 0 do not count
    /// for.
    StepLimits Combine(double share, const Samples& direction, const Samples& estimate, Samples& previous) const;
    StepLimits LimitsOf(const Samples& estimate, const Samples& step) const;

    /// The slope at the model and a multiple of its step.
    Slope SlopeAt(const Samples& model, const Samples& modelStep, double factor);
    /// The same at once, after previous = modelStep + share * previous has become the step.
    Slope CombinedSlope(double share, const Samples& model, const Samples& modelStep, Samples& previous);

    /// target += factor * step; returns whether a sample lies below 0.
    bool Move(double factor, const Samples& step, Samples& target) const;
    /// The same of a model; returns its chi-square as `ReducedChiSquare` does.
    double MoveModel(double factor, const Samples& step, Samples& model);

    /// Sum of squared deviations in units of their variance, over the number of samples of weight > 0 less one.
    double ReducedChiSquare(const Samples& model);

private:
    template <class Work>
    auto WithWeights(Work work) const;
    template <class Prepare>
    Slope FindSlope(const Samples& model, const Samples& modelStep, double factor, Prepare prepare);
    template <class Prepare>
    double FindChiSquare(const Samples& model, Prepare prepare);

    double gain_;
    double readNoise_;
    double noise_;
    bool isEven_ = false; ///< all weights are 1
};

} // namespace corvane
