#include "corvane/geometry/expansion.h"

#include "tests/geometry/expected.h"

using namespace corvane::test;

TEST(Expansion, MakesBlocksOfEqualSamplesAndCarriesCoordinatesToTheirMiddle)
{
    ForEachSource([](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        for (const auto [fx, fy] : {Size{1, 1}, {2, 2}, {3, 1}, {1, 4}}) {
            CImgExpansion expanded(canvas);
            EXPECT_EQ(expanded.Do(fx, fy, &source, 0), 1);
            EXPECT_TRUE(Holds(expanded, canvas.GetWidth() * fx, canvas.GetHeight() * fy,
                              [&, fx = fx, fy = fy](int x, int y, int p) { return from.At(x / fx, y / fy, p); }));
            ExpectCoordinates(expanded, {9.5 * fx + 0.5, 19.5 * fy + 0.5, 1.0 / fx, 2.0 / fy, 3.0 / fx, 4.0 / fy});
        }
    });
}
