#include "corvane/geometry/resize.h"

#include <algorithm>
#include <array>

#include "tests/geometry/expected.h"

using namespace corvane::test;

TEST(Resize, PutsThePictureAtItsAnchor)
{
    float colours[] = {0.0F, 255.0F, 99.5F};
    ForEachSource([&](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        const int w = from.width;
        const int h = from.height;
        for (const Size size : {Size{w, h}, {w + 7, h + 4}, {std::max(w - 3, 1), h + 1}, {1, 1}, {20, 2}}) {
            for (const int anchor : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1}) {
                SCOPED_TRACE(testing::Message() << size.width << " x " << size.height << " anchor " << anchor);
                const int place = anchor < 0 || anchor > 8 ? 0 : anchor;
                const int right = std::array{0, (size.width - w) / 2, size.width - w}[place % 3];
                const int down = std::array{0, (size.height - h) / 2, size.height - h}[place / 3];
                float* const background = anchor == 9 ? nullptr : colours;
                CImgResize resized(canvas);
                EXPECT_EQ(resized.Do(size.width, size.height, anchor, background, &source, 0), 1);
                EXPECT_TRUE(Holds(resized, size.width, size.height, [&](int x, int y, int p) {
                    const bool isInside = x >= right && x < right + w && y >= down && y < down + h;
                    const double outside = from.ToRaw(background == nullptr ? 0.0 : background[p], 0);
                    return isInside ? from.At(x - right, y - down, p) : outside;
                }));
                ExpectCoordinates(resized, {10.0 + std::max(-right, 0), 20.0 + std::max(-down, 0)});
            }
        }
    });
}
