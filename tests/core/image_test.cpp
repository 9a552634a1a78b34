#include "corvane/core/image.h"

#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;

TEST(Image, SizesAndAddressesFollowTheRecord)
{
    CImage image(-32, 100, 50, 3, 1.0, 0.0, 1);
    EXPECT_EQ(image.GetImageSize(), 60000U);
    unsigned char* const first = image.GetImageAdr(0, 0, 0);
    EXPECT_EQ(image.GetImageAdr(7, 49, 2) - first, ((2 * 50 + 49) * 100 + 7) * 4);
    for (const auto& [bits, bytes] : {std::pair{8, 1}, {16, 2}, {32, 4}, {-32, 4}, {-64, 8}}) {
        image.SetBitsPixel(bits);
        EXPECT_EQ(image.GetNextAdr(first) - first, bytes);
        EXPECT_EQ(image.GetPrevAdr(image.GetNextAdr(first)), first);
    }
    for (const auto& [planes, dimension] : {std::pair{0, 2}, {1, 2}, {2, 3}, {3, 3}}) {
        image.SetPlanes(planes);
        EXPECT_EQ(image.GetDimension(), dimension);
        EXPECT_EQ(image.IsColor(), dimension > 2);
    }
}

TEST(Image, ChangeSizeAndPlanesKeepWhatStays)
{
    for (const auto& [width, height, from, to] :
         {std::tuple{5, 4, 3, 1}, {3, 6, 1, 3}, {9, 2, 1, 2}, {1, 1, 3, 2}, {8, 9, 2, 3}}) {
        CStlImage image = RandomImage({5, 4}, from, 2);
        const Plain before(image);
        ASSERT_EQ(image.ChangeSize(width, height) + image.ChangePlanes(to), 2);
        EXPECT_EQ(image.IsColor(), to > 1);
        const Plain after(image);
        EXPECT_EQ(std::tuple(after.width, after.height, after.planes), std::tuple(width, height, to));
        after.ForEach([&](int x, int y, int p) {
            const int q = p < before.planes ? p : 0; // new planes are copies of the first
            EXPECT_EQ(after.At(x, y, p), x < 5 && y < 4 ? before.At(x, y, q) : 0.0F) << x << ' ' << y << ' ' << p;
            EXPECT_EQ(std::pair(after.min[p], image.GetLevelRange(p)), std::pair(before.min[q], before.range[q]));
        });
        EXPECT_EQ(image.ChangeSize(0, 4) + image.ChangeSize(4, -1) + image.ChangePlanes(0) + image.ChangePlanes(4), 0);
        EXPECT_TRUE(Agree(image, after));
    }
}
