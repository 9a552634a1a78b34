#include "corvane/restore/wiener.h"

#include <cmath>

#include "bench/restore/stars.h"
#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void TimeWiener(Run& run)
{
    const int size = Size(2048, 64);
    constexpr double kNoise = 0.01;
    const double sigma = kStarSigma * std::sqrt(2.0);
    const Stars stars(size);
    const auto filter = [=](CImgWiener& image) { image.Do(sigma, kNoise, nullptr, 0); };
    CImgWiener once(stars);
    filter(once);
    const double gain = WienerGain(sigma, size, size) * (1.0 + kNoise);
    Require(std::fabs(once.GetAvrGrayRaw(0) * gain / stars.GetAvrGrayRaw(0) - 1.0) < 1e-3, "the flux is not kept");
    run.Time(
        stars.GetImageSize(), [&] { return CImgWiener(stars); }, filter);
}

const Line wiener("restore/Wiener, 2048 x 2048", Seconds(0.08), TimeWiener);

} // namespace
} // namespace corvane::bench
