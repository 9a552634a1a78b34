#include "corvane/core/kernel_weights.h"

#include <cmath>
#include <numbers>

#include "corvane/core/turn.h"

namespace corvane {
namespace {

constexpr double kPi = std::numbers::pi;

double Cubic(double distance)
{
    constexpr double kA = -0.5;
    const double d = std::fabs(distance);
    return d < 1.0   ? ((kA + 2.0) * d - (kA + 3.0)) * d * d + 1.0
           : d < 2.0 ? kA * (((d - 5.0) * d + 8.0) * d - 4.0)
                     : 0.0;
}

/// sin(pi d) / (pi d); at whole distances 1 or 0, exactly.
double Sinc(double distance)
{
    const double whole = std::nearbyint(distance);
    const double sine = Sine(kPi * (distance - whole));
    return distance == 0.0 ? 1.0 : (std::fmod(whole, 2.0) == 0.0 ? sine : -sine) / (kPi * distance);
}

double Lanczos(double distance, int reach)
{
    return std::fabs(distance) < reach ? Sinc(distance) * Sinc(distance / reach) : 0.0;
}

} // namespace

KernelWeights::KernelWeights(Interpolation interpolation)
{
    const int reach = ReachOf(interpolation);
    std::vector<double> weights(2 * static_cast<std::size_t>(reach));
    for (int entry = 0; entry <= kParts; ++entry) {
        double sum = 0.0;
        for (int k = 0; k < 2 * reach; ++k) {
            const double distance = k - (reach - 1) - static_cast<double>(entry) / kParts;
            weights[k] = interpolation == Interpolation::kBicubic ? Cubic(distance) : Lanczos(distance, reach);
            sum += weights[k];
        }
        for (int k = 0; k < kMostTaps; ++k) {
            table_.push_back(k < 2 * reach ? weights[k] / sum : 0.0);
        }
    }
    singles_.assign(table_.begin(), table_.end());
}

const KernelWeights& KernelWeights::Of(Interpolation interpolation)
{
    static const KernelWeights bicubic(Interpolation::kBicubic);
    static const KernelWeights lanczos3(Interpolation::kLanczos3);
    static const KernelWeights lanczos4(Interpolation::kLanczos4);
    return interpolation == Interpolation::kBicubic    ? bicubic
           : interpolation == Interpolation::kLanczos3 ? lanczos3
                                                       : lanczos4;
}

} // namespace corvane
