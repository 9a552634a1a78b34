#include "corvane/geometry/resolution.h"

#include "tests/geometry/expected.h"

using namespace corvane::test;

namespace {

/// Bilinear, with neighbours beyond the last column and row taken from it.
double Between(const Plain& from, double fx, double fy, int p)
{
    fx = fx >= from.width ? from.width - 1 : fx;
    fy = fy >= from.height ? from.height - 1 : fy;
    const int ix = static_cast<int>(fx);
    const int iy = static_cast<int>(fy);
    if (fx == ix && fy == iy) {
        return from.At(ix, iy, p);
    }
    const auto along = [&](int y) {
        return static_cast<double>(from.At(ix, y, p)) * (1.0 - (fx - ix)) + from.At(ix + 1, y, p) * (fx - ix);
    };
    return along(iy) * (1.0 - (fy - iy)) + along(iy + 1) * (fy - iy);
}

} // namespace

TEST(Resolution, InterpolatesBetweenSamplesAndScalesTheCoordinatesUnlessCubic)
{
    ForEachSource([](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        const int w = canvas.GetWidth();
        const int h = canvas.GetHeight();
        for (const Size size :
             {Size{w, h}, {2 * w, 2 * h}, {(w + 1) / 2, (h + 1) / 2}, {w * 3 / 2 + 1, h + 2}, {1, 3 * h}, {7, 3}}) {
            SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
            const double sx = static_cast<double>(w) / size.width;
            const double sy = static_cast<double>(h) / size.height;
            CImgResolution bilinear(canvas);
            EXPECT_EQ(bilinear.Do(&source, size.width, size.height, 0), 1);
            EXPECT_TRUE(Holds(bilinear, size.width, size.height,
                              [&](int x, int y, int p) { return Between(from, x * sx, y * sy, p); }));
            ExpectCoordinates(bilinear, {10.0 / sx, 20.0 / sy, sx, 2.0 * sy, 3.0 * sx, 4.0 * sy});
            CImgResolution cubic(canvas);
            EXPECT_EQ(cubic.ByCubic(&source, size.width, size.height, 0), 1);
            EXPECT_TRUE(Agree(cubic, Plain(bilinear)));
            ExpectCoordinates(cubic, {10.0, 20.0, 1.0, 2.0, 3.0, 4.0});
        }
    });
}
