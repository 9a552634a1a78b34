#include <cmath>

#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

/// The two-dimensional sum, all weights anew.
double PlainGaussian(const CStlImage& image, int x, int y, int plane, double sigma)
{
    const auto mirrored = [](int i, int size) { return i < 0 ? -i : (i < size ? i : 2 * size - 1 - i); };
    const int r = static_cast<int>(std::ceil(2.0 * sigma));
    double sum = 0.0;
    double weights = 0.0;
    for (int dy = -r; dy <= r; ++dy) {
        for (int dx = -r; dx <= r; ++dx) {
            const double w = std::exp(-(dx * dx + dy * dy) / (2.0 * sigma * sigma));
            weights += w;
            sum += w * image.GetPixelGrayRaw(mirrored(x + dx, image.GetWidth()), mirrored(y + dy, image.GetHeight()),
                                             plane);
        }
    }
    return sum / weights;
}

void TimeGaussian(Run& run, double sigma)
{
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.GaussianFilter(sigma, to...); },
        [&](int x, int y, int plane) { return PlainGaussian(frame, x, y, plane, sigma); });
}

const Line sigma1("filter/Gaussian/sigma 1", TimesMemcpy(3.0), [](Run& run) { TimeGaussian(run, 1.0); });
const Line sigma2("filter/Gaussian/sigma 2", TimesMemcpy(4.5), [](Run& run) { TimeGaussian(run, 2.0); });
const Line sigma5("filter/Gaussian/sigma 5", TimesMemcpy(12.0), [](Run& run) { TimeGaussian(run, 5.0); });

} // namespace
} // namespace corvane::bench
