#include "corvane/filter/fill.h"

#include <cmath>

#include "bench/support/bench.h"
#include "corvane/geometry/flip.h"

namespace corvane::bench {
namespace {

/// Columns and single samples that are undefined here and there, and a hole in the middle.
CStlImage Holed()
{
    CStlImage image(LargeFrame());
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    for (int y = 0; y < height; ++y) {
        float* const row = image.GetImageAdr(0, y, 0);
        for (int x = 0; x < width; ++x) {
            const bool isInside = std::abs(x - width / 2) < width / 16 && std::abs(y - height / 2) < height / 16;
            row[x] = isInside || x % 512 == 5 || (31 * x + 17 * y) % 503 == 0 ? NAN : row[x];
        }
    }
    return image;
}

/// What is turned over and filled is filled and turned over, and defined samples stay.
void CheckFilled(CStlImage& holed)
{
    CStlImage filled(holed);
    FillFromNeighbours(filled, {});
    CImgFlip turned(holed);
    turned.Do(1, &holed, 0);
    FillFromNeighbours(turned, {});
    CheckSamples(filled, [&](int x, int y, int plane) {
        const float v = holed.GetPixelGrayRaw(x, y, plane);
        return std::isnan(v) ? turned.GetPixelGrayRaw(holed.GetWidth() - 1 - x, y, plane) : v;
    });
    Require(std::isfinite(filled.GetAvrGrayRaw(0)), "undefined samples are left");
}

void TimeFill(Run& run)
{
    CStlImage holed(Holed());
    CheckFilled(holed);
    run.Time(
        holed.GetImageSize(), [&] { return CStlImage(holed); },
        [](CStlImage& image) { FillFromNeighbours(image, {}); });
}

const Line fill("filter/FillFromNeighbours", {}, TimeFill);

} // namespace
} // namespace corvane::bench
