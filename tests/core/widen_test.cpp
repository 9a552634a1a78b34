#include "corvane/core/widen.h"

#include <cmath>

#include "tests/support/images.h"

using namespace corvane;
using namespace corvane::test;

TEST(Widen, AddsItsVarianceAndKeepsTheSum)
{
    for (const double variance : {0.0, 0.03, 0.5, 0.7, 4.1, 19.0}) {
        SCOPED_TRACE(variance);
        const CStlImage point = Make(67, 71, 1, [](int x, int y, int) { return x == 30 && y == 37 ? 1e6 : 0.0; });
        CStlImage wide(point);
        Widen(wide, point, variance, {});
        double sums[3] = {};
        for (int i = 0; i < 67 * 71; ++i) {
            const double v = wide.GetPixelGrayRaw(i % 67, i / 67, 0) / 1e6;
            sums[0] += v;
            sums[1] += v * std::pow(i % 67 - 30, 2);
            sums[2] += v * std::pow(i / 67 - 37, 2);
            if (variance > 4.0) {
                const double square = std::pow(i % 67 - 30, 2) + std::pow(i / 67 - 37, 2);
                EXPECT_NEAR(v * 6.283185 * variance, std::exp(-0.5 * square / variance), 0.04);
            }
        }
        EXPECT_NEAR(sums[0], 1.0, 1e-6);
        EXPECT_NEAR(sums[1], variance, 1e-4 * variance);
        EXPECT_NEAR(sums[2], variance, 1e-4 * variance);
    }
}

TEST(Widen, TakesTheEdgeForWhatIsBeyond)
{
    CStlImage image = Make(9, 4, 3, [](int x, int, int p) { return p + (x < 4 ? 10.0 : 30.0); });
    const CStlImage source(image);
    Widen(image, source, 1.0, {});
    for (int x = 0; x < 9; ++x) {
        for (int y = 1; y < 4; ++y) {
            EXPECT_NEAR(image.GetPixelGrayRaw(x, y, 2), image.GetPixelGrayRaw(x, 0, 0) + 2.0, 1e-5) << x << ' ' << y;
        }
        EXPECT_NEAR(image.GetPixelGrayRaw(x, 0, 0) + image.GetPixelGrayRaw(7 - x < 0 ? 0 : 7 - x, 0, 0), 40.0, 1e-2);
    }
}
