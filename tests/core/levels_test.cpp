#include <limits>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;

TEST(Levels, AllPlanesMoveByTheSameFractions)
{
    for (const int planes : {1, 3}) {
        CStlImage image = RandomImage({2, 2}, planes, 1);
        const Plain before(image);
        image.SetOrgLevel();
        image.SetLevel(-1, before.min[0] + 0.1 * before.range[0], before.max[0] - 0.25 * before.range[0]);
        for (int p = 0; p < 3; ++p) {
            const double moved = p == 0 || planes == 3 ? 1.0 : 0.0;
            EXPECT_DOUBLE_EQ(image.GetLevelMin(p), before.min[p] + moved * 0.1 * before.range[p]);
            EXPECT_DOUBLE_EQ(image.GetLevelMax(p), before.max[p] - moved * 0.25 * before.range[p]);
            EXPECT_EQ(image.GetLevelRange(p), image.GetLevelMax(p) - image.GetLevelMin(p));
        }
        image.SetLevel(planes - 1, 5.0, 5.0);
        EXPECT_EQ(image.To256(6.0, planes - 1), std::numeric_limits<double>::infinity());
        ASSERT_EQ(image.ChangePlanes(3), 1);
        image.RestoreOrgLevel();
        for (int p = 0; p < 3; ++p) {
            EXPECT_EQ(image.GetLevelMin(p), before.min[planes == 1 ? 0 : p]);
            EXPECT_EQ(image.GetLevelMax(p), before.max[planes == 1 ? 0 : p]);
        }
    }
}

TEST(Levels, Extremes)
{
    ForEachImage([](CStlImage& image) {
        for (const float first : {100.0F, std::numeric_limits<float>::quiet_NaN()}) {
            *image.GetImageAdr(0, 0, 0) = first;
            const Plain plain(image);
            image.CalcMinMax();
            for (int p = 0; p < plain.planes; ++p) {
                double calc[2] = {plain.At(0, 0, p), plain.At(0, 0, p)}; // plain comparison, blanks and all
                double base[2] = {1e300, -1e300};                        // blanks and NaN passed over
                plain.ForEach([&](int x, int y, int q) {
                    const double v = plain.At(x, y, p);
                    const bool counts = q == p && !plain.IsBlank(v);
                    calc[0] = q == p && v < calc[0] ? v : calc[0];
                    calc[1] = q == p && v > calc[1] ? v : calc[1];
                    base[0] = counts && v < base[0] ? v : base[0];
                    base[1] = counts && v > base[1] ? v : base[1];
                });
                EXPECT_TRUE(Same(image.GetMinPixel(p), calc[0]) && Same(image.GetMaxPixel(p), calc[1]));
                double found[2] = {1.0, -1.0};
                image.GetMinMax(p, &found[0], &found[1]);
                const bool none = base[0] > base[1];
                EXPECT_TRUE(found[0] == (none ? 0.0 : base[0]) && found[1] == (none ? 0.0 : base[1]));
            }
        }
    });
}

TEST(Levels, CutOutOfLevelClampsEverySample)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        image.CutOutOfLevel();
        EXPECT_TRUE(Agree(image, plain.Map([&](double v, int, int, int p) {
            return v < plain.min[p] ? plain.min[p] : v <= plain.max[p] ? v : plain.max[p];
        })));
    });
}
