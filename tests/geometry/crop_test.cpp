#include "corvane/geometry/crop.h"

#include <algorithm>
#include <limits>

#include "tests/geometry/expected.h"

using namespace corvane::test;

TEST(Crop, KeepsTheRectangleAndRepeatsTheEdgeBeyond)
{
    constexpr int kMax = std::numeric_limits<int>::max();
    ForEachSource([](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        const int w = from.width;
        const int h = from.height;
        for (const CRect rect : {CRect(0, 0, w, h), CRect(w / 3, h / 2, w, h / 2 + 1), CRect(-4, -3, w + 5, h + 2),
                                 CRect(w + 2, h + 2, w + 4, h + 5), CRect(kMax - 2, kMax - 1, kMax, kMax)}) {
            SCOPED_TRACE(testing::Message() << rect.left << ' ' << rect.top);
            CImgCrop cropped(canvas);
            EXPECT_EQ(cropped.Do(rect, &source, 0), 1);
            const int left = std::clamp(static_cast<int>(rect.left), 0, w - 1);
            EXPECT_TRUE(Holds(cropped, rect.Width(), rect.Height(),
                              [&](int x, int y, int p) { return from.At(left + x, rect.top + y, p); }));
            ExpectCoordinates(cropped, {10.0 - rect.left, 20.0 - rect.top});
        }
    });
}
