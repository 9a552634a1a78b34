#include "corvane/restore/lucy_rows.h"

#include <algorithm>
#include <atomic>
#include <limits>

namespace corvane {

namespace {

constexpr double kUnlimited = std::numeric_limits<double>::infinity();
constexpr double kMostFactor = 100.0; // where no step would take the estimate below 0
constexpr double kLeastFactor = -100.0;
constexpr auto kNothing = [](std::size_t, std::size_t) {}; // to be prepared

constexpr std::size_t kAbreast = 16;

/// The least of so many quotients each, over denominators above 0. It divides but once: products of two floats are
/// exact as double, so they tell which quotient is less.
struct LeastQuotients {
    double numerators[kAbreast]; ///< of infinity at first
    double denominators[kAbreast] = {};

    LeastQuotients() { std::fill_n(numerators, kAbreast, 1.0); }

    void Add(std::size_t at, double numerator, double denominator)
    {
        const double n = numerators[at];
        const double d = denominators[at];
        const bool isLess = (denominator > 0.0) & (numerator * d < n * denominator);
        numerators[at] = isLess ? numerator : n;
        denominators[at] = isLess ? denominator : d;
    }

    double Value() const
    {
        double least = kUnlimited;
        for (std::size_t l = 0; l < kAbreast; ++l) {
            least = std::min(least, numerators[l] / denominators[l]);
        }
        return least;
    }
};

/// Limits from -kUnlimited to kUnlimited, for the samples of a block; those below 0 do not count.
StepLimits LimitsOfBlock(const float* estimate, const float* step, std::size_t first, std::size_t end)
{
    LeastQuotients rising;
    LeastQuotients falling;
    const auto add = [&](std::size_t i, std::size_t lane) {
        const double present = estimate[i];
        const double change = step[i] * (present < 0.0 ? 0.0 : 1.0); // choosing steps, it would not vectorise
        rising.Add(lane, present, change);
        falling.Add(lane, present, -change);
    };
    std::size_t i = first;
    for (; i + kAbreast <= end; i += kAbreast) {
        for (std::size_t lane = 0; lane < kAbreast; ++lane) {
            add(i + lane, lane);
        }
    }
    for (; i < end; ++i) {
        add(i, 0);
    }
    return {-rising.Value(), falling.Value()};
}

/// Folds limitsOf(first, end) of all blocks.
template <class LimitsOf>
StepLimits FindLimits(const SampleLoops& loops, LimitsOf limitsOf)
{
    StepLimits all{-kUnlimited, kUnlimited};
    for (const StepLimits& block : loops.OfBlocks(limitsOf)) {
        all = {std::max(all.least, block.least), std::min(all.most, block.most)};
    }
    return {all.least == -kUnlimited ? kLeastFactor : all.least, all.most == kUnlimited ? kMostFactor : all.most};
}

/// Makes previous = direction + share * previous.
auto Combination(double share, const Samples& direction, Samples& previous)
{
    return SampleLoops::Filler(
        previous, [=, d = direction.data(), p = previous.data()](std::size_t i) { return d[i] + share * p[i]; });
}

} // namespace

LucyRows::LucyRows(std::size_t count, double gain, double readNoise, int threads)
    : loops(count, threads), data(loops.Make(0.0F)), weight(loops.Make(0.0F)), gain_(gain), readNoise_(readNoise),
      noise_(readNoise * readNoise / gain)
{}

/// Calls work(weightOf), where weightOf(i) is known to be 1 when all weights are.
template <class Work>
auto LucyRows::WithWeights(Work work) const
{
    return isEven_ ? work([](std::size_t) { return 1.0F; }) : work([w = weight.data()](std::size_t i) { return w[i]; });
}

void LucyRows::LeaveOut(double least)
{
    loops.Fill(weight, [=, d = data.data(), w = weight.data()](std::size_t i) { return d[i] < least ? 0.0F : w[i]; });
}

double LucyRows::Mean()
{
    const auto [sum, weights] = loops.Sum<2>([d = data.data(), w = weight.data()](std::size_t i, double* term) {
        term[0] = static_cast<double>(d[i]) * w[i];
        term[1] = w[i];
    });
    isEven_ = weights == static_cast<double>(data.size());
    return sum / weights;
}

void LucyRows::Ratios(const Samples& model, Samples& ratios) const
{
    WithWeights([&](auto weightOf) {
        loops.Fill(ratios, [=, noise = noise_, d = data.data(), m = model.data()](std::size_t i) {
            const double predicted = m[i] + noise;
            return (d[i] + noise) / (predicted == 0.0 ? 1.0 : predicted) * weightOf(i);
        });
    });
}

void LucyRows::ToSteps(const Samples& estimate, const Samples& sensitivity, Samples& steps) const
{
    loops.Fill(steps, [e = estimate.data(), s = sensitivity.data(), ratio = steps.data()](std::size_t i) {
        const double present = e[i];
        return present * (ratio[i] / static_cast<double>(s[i])) - present;
    });
}

double LucyRows::DirectionShare(const Samples& previous, const Samples& current, const Samples& model)
{
    const auto [cross, square] = WithWeights([&](auto weightOf) {
        return loops.Sum<2>([=, gain = gain_, noise = noise_, p = previous.data(), c = current.data(),
                             m = model.data()](std::size_t i, double* term) {
            const double w = weightOf(i);
            const double variance = m[i] + noise;
            const double curvature = w * w * gain / (variance > 0.0 ? variance : 1.0);
            term[0] = curvature * p[i] * c[i];
            term[1] = curvature * p[i] * p[i];
        });
    });
    return square > 0.0 ? -cross / square : 0.0;
}

StepLimits LucyRows::Combine(double share, const Samples& direction, const Samples& estimate, Samples& previous) const
{
    return FindLimits(loops,
                      [&, combine = Combination(share, direction, previous)](std::size_t first, std::size_t end) {
                          combine(first, end);
                          return LimitsOfBlock(estimate.data(), previous.data(), first, end);
                      });
}

StepLimits LucyRows::LimitsOf(const Samples& estimate, const Samples& step) const
{
    return FindLimits(loops, [&](std::size_t first, std::size_t end) {
        return LimitsOfBlock(estimate.data(), step.data(), first, end);
    });
}

/// The slope, when prepare(first, end) has made what it needs.
template <class Prepare>
Slope LucyRows::FindSlope(const Samples& model, const Samples& modelStep, double factor, Prepare prepare)
{
    const auto [first, second] = WithWeights([&](auto weightOf) {
        const auto terms = [=, noise = noise_, d = data.data(), m = model.data(), s = modelStep.data()](std::size_t i,
                                                                                                        double* term) {
            const double w = weightOf(i);
            const double observed = d[i] * w + noise;
            const double predicted = (m[i] + factor * s[i]) * w + noise;
            const double change = w * s[i];
            const double perPredicted = 1.0 / predicted;
            term[0] = w > 0.0 ? (observed * perPredicted - 1.0) * change : 0.0;
            term[1] = w > 0.0 ? change * perPredicted * (change * perPredicted) * observed : 0.0;
        };
        return loops.Sum<2>(terms, prepare);
    });
    return {first, second};
}

Slope LucyRows::SlopeAt(const Samples& model, const Samples& modelStep, double factor)
{
    return FindSlope(model, modelStep, factor, kNothing);
}

Slope LucyRows::CombinedSlope(double share, const Samples& model, const Samples& modelStep, Samples& previous)
{
    return FindSlope(model, previous, 1.0, Combination(share, modelStep, previous));
}

bool LucyRows::Move(double factor, const Samples& step, Samples& target) const
{
    std::atomic<bool> isBelow = false;
    loops.ForBlocks([&, s = step.data(), t = target.data()](std::size_t first, std::size_t end) {
        int below = 0;
        CORVANE_INDEPENDENT
        for (std::size_t i = first; i < end; ++i) {
            t[i] = static_cast<float>(t[i] + factor * s[i]);
            below += t[i] < 0.0F ? 1 : 0;
        }
        if (below > 0) {
            isBelow = true;
        }
    });
    return isBelow;
}

/// The chi-square, when prepare(first, end) has made the model.
template <class Prepare>
double LucyRows::FindChiSquare(const Samples& model, Prepare prepare)
{
    const auto [sum, count] = WithWeights([&](auto weightOf) {
        const auto terms = [=, gain = gain_, readNoise = readNoise_, d = data.data(), m = model.data()](std::size_t i,
                                                                                                        double* term) {
            const float w = weightOf(i);
            const double a = w * gain;
            const double deviation = (static_cast<double>(m[i]) - d[i]) * a;
            const double variance = a * m[i] + readNoise * readNoise;
            const bool counts = w > 0.0F;
            term[0] = (counts & (variance != 0.0)) ? deviation * deviation / (variance != 0.0 ? variance : 1.0) : 0.0;
            term[1] = counts ? 1.0 : 0.0;
        };
        return loops.Sum<2>(terms, prepare);
    });
    return sum / (count - 1.0);
}

double LucyRows::ReducedChiSquare(const Samples& model)
{
    return FindChiSquare(model, kNothing);
}

double LucyRows::MoveModel(double factor, const Samples& step, Samples& model)
{
    return FindChiSquare(model, SampleLoops::Filler(model, [=, s = step.data(), m = model.data()](std::size_t i) {
                             return m[i] + factor * s[i];
                         }));
}

} // namespace corvane
