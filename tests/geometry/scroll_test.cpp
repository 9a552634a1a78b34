#include "corvane/geometry/scroll.h"

#include <cmath>
#include <limits>

#include "tests/geometry/expected.h"

using namespace corvane::test;

TEST(Scroll, GoesRoundInACircleWithTheCoordinatesOfTheLargerPart)
{
    constexpr int kLeast = std::numeric_limits<int>::min();
    const auto modulo = [](long long v, int size) { return static_cast<int>((v % size + size) % size); };
    const auto nearest = [](double shift, int size) { return shift - size * std::ceil(shift / size - 0.5); };
    ForEachSource([&](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        const int w = canvas.GetWidth();
        const int h = canvas.GetHeight();
        for (const auto [dx, dy] : {Size{0, 0}, {1, 0}, {-1, 2}, {w, -h}, {1000, -777}, {kLeast, kLeast}}) {
            CImgScroll scrolled(canvas);
            scrolled.Do(dx, dy, &source, 0);
            EXPECT_TRUE(Holds(scrolled, w, h,
                              [&, dx = dx, dy = dy](int x, int y, int p) {
                                  return from.At(modulo(0LL + x - dx, w), modulo(0LL + y - dy, h), p);
                              }))
                << dx << ' ' << dy;
            ExpectCoordinates(scrolled, {10.0 + nearest(dx, w), 20.0 + nearest(dy, h)});
            EXPECT_EQ(scrolled.GetStdPtNum(), 0);
        }
    });
}
