#include "corvane/restore/lucy.h"

#include <cmath>
#include <vector>

#include "bench/restore/stars.h"
#include "bench/support/bench.h"
#include "corvane/restore/lucy_engine.h"

namespace corvane::bench {
namespace {

constexpr int kPsfSize = 64;

std::vector<float> Psf()
{
    std::vector<float> psf;
    for (int y = 0; y < kPsfSize; ++y) {
        for (int x = 0; x < kPsfSize; ++x) {
            const double square = std::pow(x - kPsfSize / 2, 2.0) + std::pow(y - kPsfSize / 2, 2.0);
            psf.push_back(static_cast<float>(std::exp(-square / (2.0 * kStarSigma * kStarSigma))));
        }
    }
    return psf;
}

/// The engine, so that no chi-square ends it early; each of the iterations has its line search.
void TimeIterations(Run& run, int size, bool isPsfCentred = false, double damping = 0.0, double skyNoise = 0.0)
{
    const Stars stars(size);
    const float* const first = stars.GetImageAdr(0, 0, 0, 1);
    const std::vector<float> data(first, first + static_cast<std::size_t>(size) * size);
    const std::vector<float> psf = Psf();
    const LucyJob job{.width = size,
                      .height = size,
                      .psf = psf.data(),
                      .psfWidth = kPsfSize,
                      .psfHeight = kPsfSize,
                      .isPsfCentred = isPsfCentred,
                      .iterations = IsTiny() ? 10 : 20,
                      .gain = 1.0,
                      .readNoise = kReadNoise,
                      .target = 0.0,
                      .damping = damping,
                      .skyNoise = skyNoise};
    std::vector<float> once = data;
    Require(RestoreLucy(once.data(), job, {}, 0) == Restored::kDone, "the restoration did not finish");
    double before = 0.0;
    double after = 0.0;
    double brightest = 0.0;
    double restored = 0.0;
    for (std::size_t i = 0; i < data.size(); ++i) {
        before += data[i];
        after += once[i];
        brightest = std::fmax(brightest, data[i]);
        restored = std::fmax(restored, once[i]);
    }
    Require(std::fabs(after / before - 1.0) < 0.01, "the flux is not kept");
    Require(restored > brightest, "stars are not sharper");
    run.Time(
        data.size() * sizeof(float), [&] { return data; },
        [&](std::vector<float>& plane) { RestoreLucy(plane.data(), job, {}, 0); });
}

const Line small("restore/Lucy/20 iterations, 1024 x 1024", Seconds(0.7),
                 [](Run& run) { TimeIterations(run, Size(1024, 96)); });
const Line large("restore/Lucy/20 iterations, 2048 x 2048", Seconds(3.5),
                 [](Run& run) { TimeIterations(run, Size(2048, 96)); });
const Line ofImage("restore/Lucy/20 iterations, function of an image, 2048 x 2048", Seconds(3.5),
                   [](Run& run) { TimeIterations(run, Size(2048, 96), true); });
const Line damped("restore/Lucy/20 iterations, damped, 2048 x 2048", {},
                  [](Run& run) { TimeIterations(run, Size(2048, 96), false, 0.002); });
const Line guarded("restore/Lucy/20 iterations, stars protected, 2048 x 2048", {},
                   [](Run& run) { TimeIterations(run, Size(2048, 96), false, 0.0, 30.0); });

} // namespace
} // namespace corvane::bench
