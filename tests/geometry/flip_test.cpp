#include "corvane/geometry/flip.h"

#include <algorithm>

#include "tests/geometry/expected.h"

using namespace corvane::test;

TEST(Flip, MovesSamplesAndCoordinatesToTheOtherSide)
{
    ForEachSource([](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        const int w = canvas.GetWidth();
        const int h = canvas.GetHeight();
        const int last = std::min(w, from.width) - 1;
        CImgFlip vertical(canvas);
        vertical.Do(0, &source, 0);
        EXPECT_TRUE(Holds(vertical, w, h, [&](int x, int y, int p) { return from.At(x, h - 1 - y, p); }));
        ExpectCoordinates(vertical, {10.0, h - 19.0, 1.0, -2.0, 3.0, -4.0});
        EXPECT_EQ(vertical.GetStdPt(0).ix, 3);
        CImgFlip horizontal(canvas);
        horizontal.Do(1, &source, 0);
        EXPECT_TRUE(Holds(horizontal, w, h, [&](int x, int y, int p) { return from.At(last - x, y, p); }));
        ExpectCoordinates(horizontal, {w - 9.0, 20.0, -1.0, 2.0, -3.0, 4.0});
    });
}

TEST(Flip, KeepsAnotherDirectionStillAndReadsNoSourceAsZero)
{
    CStlImage nothing;
    CImgFlip flipped(RandomImage({5, 4}, 3, 2));
    const Plain before(flipped);
    flipped.Do(2, &nothing, 0);
    EXPECT_TRUE(Agree(flipped, before));
    flipped.Do(1, &nothing, 0);
    EXPECT_TRUE(Holds(flipped, 5, 4, [](int, int, int) { return 0.0; }));
}
