#include "corvane/geometry/rotate.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>
#include <utility>

#include "tests/geometry/expected.h"
#include "tests/support/storage.h"

using namespace corvane::test;

namespace {

/// Compares every sample with what a turn of the source about its middle gives.
testing::AssertionResult IsTurned(const CStlImage& image, const Plain& from, double angle, const double* background)
{
    const double s = std::sin(angle * 0.017453292522222223);
    const double c = std::cos(angle * 0.017453292522222223);
    const int cx = from.width / 2;
    const int cy = from.height / 2;
    return Holds(image, image.GetWidth(), image.GetHeight(), [&](int x, int y, int p) {
        const double u = x - cx - (image.GetWidth() - from.width) * 0.5;
        const double w = cy - y + (image.GetHeight() - from.height) * 0.5;
        const double sx = u * c - w * s + cx;
        const double sy = cy - (u * s + w * c);
        const bool isInside = sx >= 0.0 && sx < from.width && sy >= 0.0 && sy < from.height;
        return isInside ? from.Between(sx, sy, p) : background == nullptr ? 0.0 : background[p];
    });
}

void CheckAngles(CStlImage& source, const CStlImage& canvas)
{
    double background[] = {-1.5, 2.25, 1e6};
    for (const double angle : {33.3, -90.0, 180.0, 360.0, 1e-9, -12345.6, std::numeric_limits<double>::infinity()}) {
        for (int expand = 0; expand < (std::isfinite(angle) ? 2 : 1); ++expand) {
            double* const outside = expand == 0 ? background : nullptr;
            CImgRotate turned(canvas);
            EXPECT_EQ(turned.Do(angle, outside, &source, expand, 0), 1);
            EXPECT_TRUE(IsTurned(turned, Plain(source), angle, outside)) << angle << ' ' << expand;
        }
    }
}

void CheckQuartersAndHalves(CStlImage& source, const CStlImage& canvas)
{
    const Plain from(source);
    const int w = canvas.GetWidth();
    const int h = canvas.GetHeight();
    const int last = std::min(w, from.width) - 1;
    for (const int direction : {0, 1, 7}) {
        CImgRotate quarter(canvas);
        quarter.CImage::SetLevel(0, -4.0, 77.0);
        EXPECT_EQ(quarter.Do90(direction, &source, 0), 1);
        EXPECT_TRUE(Holds(quarter, h, w, [&](int x, int y, int p) {
            return direction == 0 ? from.At(from.width - 1 - y, x, p) : from.At(y, from.height - 1 - x, p);
        })) << direction;
        EXPECT_EQ(quarter.GetLevelMax(0), from.max[0]);
    }
    CImgRotate half(canvas);
    half.Do180(&source, 0);
    EXPECT_TRUE(Holds(half, w, h, [&](int x, int y, int p) { return from.At(last - x, h - 1 - y, p); }));
}

} // namespace

TEST(Rotate, MovesEverySample)
{
    ForEachSource(CheckAngles);
    ForEachSource(CheckQuartersAndHalves);
}

// The source, and the result, are more than what may be in memory, and more than a tile.
TEST(Rotate, TurnsImagesBeyondMemory)
{
    const TightMemory memory(1 << 20);
    CStlImage source = RandomImage({500, 701}, 1, 3);
    ASSERT_TRUE(source.GetStore()->IsPaged());
    CheckAngles(source, source);
    CheckQuartersAndHalves(source, source);
}

// Corners are rounded up, not outwards: the left one of two samples comes to lie at 0.
TEST(Rotate, ExpandsToCornersRoundedUp)
{
    const std::vector<std::tuple<Size, double, int, std::pair<int, int>>> cases{
        {{100, 100}, 45.0, 0, {100, 100}}, {{100, 100}, 45.0, 1, {141, 142}}, {{100, 60}, 90.0, 1, {61, 101}},
        {{100, 60}, -90.0, 1, {61, 101}},  {{2, 1}, 33.3, 1, {1, 1}},         {{31, 20}, 200.0, 1, {36, 29}},
    };
    for (const auto& [size, angle, expand, expanded] : cases) {
        CStlImage source = RandomImage(size, 1, 1);
        CImgRotate turned(source);
        EXPECT_EQ(turned.Do(angle, nullptr, &source, expand, 0), 1);
        EXPECT_EQ(std::pair(turned.GetWidth(), turned.GetHeight()), expanded) << angle;
    }
}

TEST(Rotate, CarriesReferencePointsAndCoordinatesUnlessTheAngleIsZero)
{
    CStlImage source = RandomImage({100, 60}, 1, 1);
    SetReference(source);
    CImgRotate turned(source);
    EXPECT_EQ(turned.Do(0.0, nullptr, &source, 1, 0), 1);
    EXPECT_TRUE(Agree(turned, Plain(source)));
    EXPECT_EQ(turned.GetStdPtNum(), 1);
    turned.Do(90.0, nullptr, &source, 1, 0); // about (50, 30), to 61 x 101
    ExpectCoordinates(turned, {60.0 - 19.5, -10.0 + 20.5, -2.0, 1.0, -4.0, 3.0});
    EXPECT_EQ(turned.GetStdCtr().x, 50.0); // of the size before
    EXPECT_EQ(source.GetStdCtr().x, 3.0);
    // A quarter turn is one by +90 degrees about the whole part of (49.5, 29.5), whichever way it goes.
    for (const int direction : {0, 1}) {
        CImgRotate quarter(source);
        quarter.Do90(direction, &source, 0);
        ExpectCoordinates(quarter, {49.0 + 9.0, 29.0 - 39.0, -2.0, 1.0, -4.0, 3.0});
        EXPECT_EQ(quarter.IsValidStdCtr(), 0);
    }
    CImgRotate half(source);
    half.Do180(&source, 0); // shifted by (60 - 100) / 2 and (100 - 60) / 2
    ExpectCoordinates(half, {49.0 + 39.0 - 20.0, 29.0 + 9.0 + 20.0, -1.0, -2.0, -3.0, -4.0});
}
