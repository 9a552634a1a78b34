#pragma once

#include "corvane/restore/samples.h"

namespace corvane {

/// @name The sums and maps of the iteration of Richardson and Lucy
/// Over all samples of a grid. `noise` is the variance of the read-out noise over the gain, as it stands beside
/// samples; weights are 0 where a sample takes no part.
/// @{

/// Mean of the data by weight; NaN when all weights are 0.
double WeightedMean(const Samples& data, const Samples& weight);

/// (data + noise) / (model + noise) * weight, where a denominator of 0 counts as 1.
void Ratios(const Samples& data, const Samples& model, const Samples& weight, double noise, Samples& ratios);

/// Turns correlated ratios into steps: estimate * steps / sensitivity - estimate.
void ToSteps(const Samples& estimate, const Samples& sensitivity, Samples& steps);

/// How much of the previous direction goes into the new one so that both are conjugate: their products, weighted by
/// the curvature of the likelihood at the model, add up to 0. The weight is w w g / (model + noise), the inverse of the
/// variance of a sample. 0 where there is no previous direction.
/// R. Fletcher, C. M. Reeves, Computer J. 7, 149 (1964), with the conjugacy itself in place of their ratio.
double DirectionShare(const Samples& previous, const Samples& current, const Samples& model, const Samples& weight,
                      double noise, double gain);

/// direction += share * previous; `previous` becomes the direction as it was.
void Combine(double share, Samples& direction, Samples& previous);

/// By which multiples of the step the estimate stays at 0 or above.
struct StepLimits {
    double least; ///< -100 when no step is positive
    double most;  ///< 100 when no step is negative
};
StepLimits LimitsOf(const Samples& estimate, const Samples& step);

/// First derivative and negative second derivative of the likelihood along the step.
struct Slope {
    double first;
    double second;
};
Slope LikelihoodSlope(const Samples& data, const Samples& model, const Samples& modelStep, const Samples& weight,
                      double noise, double factor);

/// target += factor * step.
void AddMultiple(double factor, const Samples& step, Samples& target);

/// Sum of squared deviations in units of their variance, over the number of samples of weight > 0 less one.
double ReducedChiSquare(const Samples& data, const Samples& model, const Samples& weight, double gain,
                        double readNoise);
/// @}

} // namespace corvane
