#include <algorithm>
#include <cmath>

#include "corvane/core/stl_image.h"
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
            const double moved = p < planes ? 1.0 : 0.0;
            EXPECT_DOUBLE_EQ(image.GetLevelMin(p), before.min[p] + moved * 0.1 * before.range[p]);
            EXPECT_DOUBLE_EQ(image.GetLevelMax(p), before.max[p] - moved * 0.25 * before.range[p]);
        }
        image.SetLevel(planes - 1, 5.0, 5.0);
        EXPECT_EQ(image.To256(6.0, planes - 1), INFINITY);
        ASSERT_EQ(image.ChangePlanes(3), 1);
        image.RestoreOrgLevel();
        for (int p = 0; p < 3; ++p) {
            const int from = planes == 1 ? 0 : p;
            EXPECT_EQ(std::pair(image.GetLevelMin(p), image.GetLevelMax(p)),
                      std::pair(before.min[from], before.max[from]));
        }
    }
}

TEST(Levels, Extremes)
{
    ForEachImage([](CStlImage& image) {
        for (const float first : {100.0F, NAN}) {
            *image.GetImageAdr(0, 0, 0) = first;
            const Plain plain(image);
            image.CalcMinMax();
            for (int p = 0; p < plain.planes; ++p) {
                double least = plain.At(0, 0, p); // plain comparison, blanks and all
                double most = least;
                std::vector<double> counted; // without blanks and NaN; at least a zero
                plain.ForEach([&](int x, int y, int) {
                    const double v = plain.At(x, y, p);
                    least = v < least ? v : least;
                    most = v > most ? v : most;
                    counted.insert(counted.end(), plain.IsBlank(v) || std::isnan(v) ? 0 : 1, v);
                });
                EXPECT_TRUE(Same(image.GetMinPixel(p), least) && Same(image.GetMaxPixel(p), most));
                counted.resize(std::max<std::size_t>(counted.size(), 1), 0.0);
                const auto [low, high] = std::ranges::minmax(counted);
                double found[2] = {1.0, -1.0};
                image.GetMinMax(p, &found[0], &found[1]);
                EXPECT_EQ(std::pair(found[0], found[1]), std::pair(low, high));
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
