#include "stack/combine/weights.h"

#include <algorithm>
#include <cmath>

namespace corvane::stack {

namespace {

/// What a frame is worth, on any scale; 0 if that is not known.
double Worth(const FrameQuality& frame, WeightMethod method)
{
    const double measure = method == WeightMethod::kNoise  ? frame.noise
                           : method == WeightMethod::kFwhm ? frame.fwhm
                           : method == WeightMethod::kSnr  ? frame.noise * frame.fwhm
                                                           : frame.stars;
    const double worth = method == WeightMethod::kStars ? measure : 1.0 / (measure * measure);
    return measure > 0.0 && std::isfinite(worth) ? worth : 0.0;
}

} // namespace

std::vector<double> WeightsOf(const std::vector<FrameQuality>& frames, WeightMethod method)
{
    std::vector<double> weights(frames.size(), 1.0);
    if (method == WeightMethod::kNone || frames.empty()) {
        return weights;
    }
    std::transform(frames.begin(), frames.end(), weights.begin(), [=](const auto& f) { return Worth(f, method); });
    const double best = *std::max_element(weights.begin(), weights.end());
    for (double& weight : weights) {
        weight = best > 0.0 ? weight / best : 1.0;
    }
    return weights;
}

} // namespace corvane::stack
