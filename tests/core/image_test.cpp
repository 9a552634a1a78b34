#include "corvane/core/image.h"

#include "tests/support/plain.h"

using namespace corvane::test;

TEST(Image, ChangeSizeAndPlanesKeepWhatStays)
{
    for (const auto& [width, height, from, to] :
         {std::tuple{5, 4, 3, 1}, {3, 6, 1, 3}, {9, 2, 1, 1}, {1, 1, 3, 3}, {8, 9, 1, 3}}) {
        CStlImage image = RandomImage({5, 4}, from, 2);
        const Plain before(image);
        ASSERT_EQ(image.ChangeSize(width, height), 1);
        ASSERT_EQ(image.ChangePlanes(to), 1);
        EXPECT_EQ(image.IsColor(), to > 1);
        const Plain after(image);
        EXPECT_EQ(std::tuple(after.width, after.height, after.planes), std::tuple(width, height, to));
        after.ForEach([&](int x, int y, int p) {
            const int q = p < before.planes ? p : 0; // new planes are copies of the first
            EXPECT_EQ(after.At(x, y, p), x < 5 && y < 4 ? before.At(x, y, q) : 0.0F) << x << ' ' << y << ' ' << p;
            EXPECT_EQ(std::pair(after.min[p], image.GetLevelRange(p)), std::pair(before.min[q], before.range[q]));
        });
        EXPECT_EQ(image.ChangeSize(0, 4), 0);
        EXPECT_EQ(image.ChangeSize(4, -1), 0);
        for (const int planes : {0, 2, 4}) {
            EXPECT_EQ(image.ChangePlanes(planes), 0) << planes;
        }
        EXPECT_TRUE(Agree(image, after));
    }
}
