#include "corvane/restore/lucy_rows.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "corvane/core/reductions.h"
#include "corvane/restore/samples.h"

namespace corvane {

namespace {

constexpr double kUnlimited = std::numeric_limits<double>::infinity();
constexpr double kMostFactor = 100.0; // where no step would take the estimate below 0
constexpr double kLeastFactor = -100.0;

} // namespace

double WeightedMean(const Samples& data, const Samples& weight)
{
    const float* d = data.data();
    const float* w = weight.data();
    const auto [sum, weights] = SumOver<2>(data.size(), [=](std::size_t i, double* term) {
        term[0] = static_cast<double>(d[i]) * w[i];
        term[1] = w[i];
    });
    return sum / weights;
}

void Ratios(const Samples& data, const Samples& model, const Samples& weight, double noise, Samples& ratios)
{
    const float* d = data.data();
    const float* m = model.data();
    const float* w = weight.data();
    Fill(ratios, [=](std::size_t i) {
        const double predicted = m[i] + noise;
        return (d[i] + noise) / (predicted == 0.0 ? 1.0 : predicted) * w[i];
    });
}

void ToSteps(const Samples& estimate, const Samples& sensitivity, Samples& steps)
{
    const float* e = estimate.data();
    const float* s = sensitivity.data();
    const float* ratio = steps.data();
    Fill(steps, [=](std::size_t i) {
        const double now = e[i];
        return now * (ratio[i] / static_cast<double>(s[i])) - now;
    });
}

double DirectionShare(const Samples& previous, const Samples& current, const Samples& model, const Samples& weight,
                      double noise, double gain)
{
    const float* p = previous.data();
    const float* c = current.data();
    const float* m = model.data();
    const float* w = weight.data();
    const auto [cross, square] = SumOver<2>(previous.size(), [=](std::size_t i, double* term) {
        const double variance = m[i] + noise;
        const double curvature = static_cast<double>(w[i]) * w[i] * gain / (variance > 0.0 ? variance : 1.0);
        term[0] = curvature * p[i] * c[i];
        term[1] = curvature * p[i] * p[i];
    });
    return square > 0.0 ? -cross / square : 0.0;
}

void Combine(double share, Samples& direction, Samples& previous)
{
    float* d = direction.data();
    float* p = previous.data();
    const std::size_t count = direction.size();
    for (std::size_t i = 0; i < count; ++i) {
        const float plain = d[i];
        d[i] = static_cast<float>(plain + share * p[i]);
        p[i] = plain;
    }
}

StepLimits LimitsOf(const Samples& estimate, const Samples& step)
{
    constexpr std::size_t kLanes = 16;
    const float* e = estimate.data();
    const float* s = step.data();
    double least[kLanes];
    double most[kLanes];
    std::fill_n(least, kLanes, -kUnlimited);
    std::fill_n(most, kLanes, kUnlimited);
    for (std::size_t i = 0; i < step.size(); i += kLanes) {
        const std::size_t lanes = std::min(kLanes, step.size() - i);
        for (std::size_t l = 0; l < lanes; ++l) {
            const double change = s[i + l];
            const double factor = -static_cast<double>(e[i + l]) / change;
            most[l] = change < 0.0 ? std::min(most[l], factor) : most[l];
            least[l] = change > 0.0 ? std::max(least[l], factor) : least[l];
        }
    }
    const double greatest = *std::max_element(least, least + kLanes);
    const double smallest = *std::min_element(most, most + kLanes);
    return {greatest == -kUnlimited ? kLeastFactor : greatest, smallest == kUnlimited ? kMostFactor : smallest};
}

Slope LikelihoodSlope(const Samples& data, const Samples& model, const Samples& modelStep, const Samples& weight,
                      double noise, double factor)
{
    const float* d = data.data();
    const float* m = model.data();
    const float* s = modelStep.data();
    const float* weights = weight.data();
    const auto [first, second] = SumOver<2>(data.size(), [=](std::size_t i, double* term) {
        const double w = weights[i];
        const double observed = d[i] * w + noise;
        const double predicted = (m[i] + factor * s[i]) * w + noise;
        const double change = w * s[i];
        const double perPredicted = 1.0 / predicted;
        term[0] = w > 0.0 ? (observed * perPredicted - 1.0) * change : 0.0;
        term[1] = w > 0.0 ? change * perPredicted * (change * perPredicted) * observed : 0.0;
    });
    return {first, second};
}

void AddMultiple(double factor, const Samples& step, Samples& target)
{
    const float* s = step.data();
    const float* t = target.data();
    Fill(target, [=](std::size_t i) { return t[i] + factor * s[i]; });
}

double ReducedChiSquare(const Samples& data, const Samples& model, const Samples& weight, double gain, double readNoise)
{
    const float* d = data.data();
    const float* m = model.data();
    const float* w = weight.data();
    const auto [sum, count] = SumOver<2>(data.size(), [=](std::size_t i, double* term) {
        const double a = w[i] * gain;
        const double deviation = (static_cast<double>(m[i]) - d[i]) * a;
        const double variance = a * m[i] + readNoise * readNoise;
        const bool counts = w[i] > 0.0F;
        term[0] = (counts & (variance != 0.0)) ? deviation * deviation / (variance != 0.0 ? variance : 1.0) : 0.0;
        term[1] = counts ? 1.0 : 0.0;
    });
    return sum / (count - 1.0);
}

} // namespace corvane
