#include <climits>
#include <cmath>

#include "corvane/core/stl_image.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

/// The centroid in its plain form; without half-widths the whole rectangle counts.
std::pair<double, double> PlainCentroid(const Plain& image, const CRect& kept, CArray<int, int>* halfWidths)
{
    const CRect area(std::max<int>(kept.left, 0), std::max<int>(kept.top, 0), std::min<int>(kept.right, image.width),
                     std::min<int>(kept.bottom, image.height));
    const double rx = area.Width() * 0.5;
    const double ry = area.Height() * 0.5;
    std::vector<std::tuple<int, int, double>> pixels;
    double total = 0.0;
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            if (halfWidths && !CStlImage::PtInRgn(x, y, area.left + rx, area.top + ry, rx, ry, halfWidths)) {
                continue;
            }
            const auto isBlank = [&](int p) { return image.IsBlank(image.At(x, y, p)); };
            if (isBlank(0) && isBlank(image.planes / 2) && isBlank(image.planes - 1)) {
                break;
            }
            const auto shown = [&](int p) { return image.To256(image.At(x, y, p), p); };
            const double lifted = image.Bright([&](int p) { return shown(p) < 0.0 ? 0.0 : shown(p); });
            total += lifted;
            pixels.emplace_back(x, y, image.Colour() ? image.Bright(shown) : lifted);
        }
    }
    double sums[3] = {};
    for (const auto& [x, y, v] : pixels) {
        const double excess = v - total / static_cast<double>(pixels.size());
        const double weight = excess <= 0.0 ? 0.0 : excess * excess;
        sums[0] += x * weight;
        sums[1] += y * weight;
        sums[2] += weight;
    }
    const double cx = sums[0] / sums[2];
    const double cy = sums[1] / sums[2];
    if (std::isnan(cx + cy) || !kept.PtInRect({static_cast<int>(cx + 0.5), static_cast<int>(cy + 0.5)})) {
        return {(kept.left + kept.right) / 2, (kept.top + kept.bottom) / 2};
    }
    return {cx, cy};
}

} // namespace

TEST(Centroid, EqualsThePlainForm)
{
    int offCentre = 0;
    const auto check = [&](CStlImage& image) {
        const Plain plain(image);
        ForEachRect(image, [&](CRect* rect) {
            const CRect kept = rect ? *rect : CRect(0, 0, plain.width, plain.height);
            CArray<int, int> halfWidths;
            for (int i = 0, radius = std::max(kept.Height() / 2, 0); i <= radius; ++i) {
                halfWidths.Add(static_cast<int>(std::sqrt(radius * radius - i * i)));
            }
            for (const bool isCircle : {false, true}) {
                const auto found = [&](auto x) {
                    auto y = x;
                    isCircle ? image.GetCenterOfGravityCircle(x, y, rect, &halfWidths)
                             : image.GetCenterOfGravity(x, y, rect);
                    return std::pair(x, y);
                };
                const auto [ex, ey] = PlainCentroid(plain, kept, isCircle ? &halfWidths : nullptr);
                const auto [cx, cy] = found(-99.0);
                EXPECT_NEAR(cx, ex, 1e-9);
                EXPECT_NEAR(cy, ey, 1e-9);
                EXPECT_EQ(found(-99), std::pair(static_cast<int>(cx + 0.5), static_cast<int>(cy + 0.5)));
                offCentre += cx != std::floor(cx);
            }
        });
    };
    ForEachImage(check, true);
    EXPECT_GT(offCentre, 40);
    ForEachImage(check); // one NaN or infinity, and the rectangle's centre is the answer
}

TEST(Centroid, RegionIsThatOfTheHalfWidthsWhateverTheNumbers)
{
    constexpr int kLow = INT_MIN;
    constexpr int kHigh = INT_MAX;
    CArray<int, int> halfWidths;
    for (const int halfWidth : {2, 1, 0}) {
        halfWidths.Add(halfWidth);
    }
    const std::tuple<int, int, double, double, double, double, int> cases[] = {
        {12, 10, 10, 10, 2, 2, 1}, {11, 11, 10, 10, 2, 2, 1},         {11, 12, 10, 10, 2, 2, 0},
        {13, 10, 10, 10, 9, 2, 0}, {12, 10, 10.9, 10.9, 2.9, 0.9, 1}, {10, 10, 10, 10, -1, 2, 0},
        {10, 13, 10, 10, 9, 9, 0}, {kLow, 0, kHigh, 0, 2, 2, 0},      {0, kHigh, 0, kLow, 9e9, 9e9, 0},
        {0, 0, 1e300, 0, 2, 2, 0}, {0, 0, 0, NAN, 2, 2, 0},           {0, 0, 0, 0, 2, NAN, 0}};
    for (const auto& [x, y, cx, cy, rx, ry, isInside] : cases) {
        EXPECT_EQ(CStlImage::PtInRgn(x, y, cx, cy, rx, ry, &halfWidths), isInside) << x << ' ' << cx;
    }
    CArray<int, int> none;
    EXPECT_EQ(CStlImage::PtInRgn(0, 0, 0.0, 0.0, 2.0, 2.0, &none), 0);
    for (const auto& [rect, x, y] : {std::tuple{CRect(kHigh - 4, kLow, kHigh, kLow + 2), kHigh - 2.0, kLow + 1.0},
                                     {CRect(kHigh, kHigh, kLow, kLow), 0.0, 0.0}}) {
        CRect kept(rect);
        double cx = -1.0;
        double cy = -1.0;
        RandomImage({3, 3}, 1, 1).GetCenterOfGravityCircle(cx, cy, &kept, &halfWidths);
        EXPECT_EQ(std::pair(cx, cy), std::pair(x, y));
    }
}

TEST(ReferencePoints, FitParameters)
{
    const std::tuple<CfPoint, CfPoint, CfPoint, CfPoint, int, double, double, double> cases[] = {
        {{-1, -1}, {1, 1}, {1, 1}, {2, 2}, 0, 0, 0, 0},
        {{1, 1}, {2, 2}, {-1, -1}, {2, 2}, 0, 0, 0, 0},
        {{3.5, 1.25}, {-1, -1}, {1, 2}, {9, 9}, 1, 2.5, -0.75, 0},
        {{10, 10}, {0, 10}, {10, 10}, {10, 20}, 2, 0, 0, 89.9}, // a quarter turn one way falls just short
        {{10, 10}, {0, 10}, {10, 10}, {10, 0}, 2, 0, 0, -90.0}, // and the other way it does not
        {{100, 0}, {0, 0}, {100, 0}, {0, 1}, 2, 0, 0, 0.5},     // 0.573 degrees, rounded down
        {{100, 0}, {0, 0}, {100, 0}, {0, -1}, 2, 0, 0, -0.6},
        {{10, 10}, {0, 10}, {10, 10}, {-1, -1}, 2, 0, 0, -45.0}, // the reference's point is not tested
        {{10, 10}, {10.9, 10.0}, {5, 5}, {9, 9}, 1, 5, 5, 0},    // points that coincide
        {{10, 10}, {20, 10}, {5, 5}, {5.5, 5.5}, 1, 5, 5, 0},
    };
    for (const auto& [own0, own1, ref0, ref1, found, ex, ey, turn] : cases) {
        CStlImage own = RandomImage({3, 3}, 1, 1);
        CStlImage ref = RandomImage({9, 7}, 1, 1);
        own.SetStdPt(0, own0);
        own.SetStdPt(1, own1);
        ref.SetStdPt(0, ref0);
        ref.SetStdPt(1, ref1);
        double dx = 9.0;
        double dy = 9.0;
        double angle = 9.0;
        EXPECT_EQ(own.GetFitPrm(&ref, dx, dy, angle), found);
        EXPECT_EQ(std::pair(dx, dy), std::pair(ex, ey));
        EXPECT_NEAR(angle, turn, 1e-12);
        EXPECT_EQ(ref.GetStdCtr().ix, ref0.x == -1 ? 4 : ref0.ix);
        EXPECT_EQ(own.GetFitPrm(&ref, dx, dy, angle, 0.5, 0.25, 2.0), found);
        EXPECT_EQ(std::pair(dx, dy), found > 0 ? std::pair(ex + 0.5, ey + 0.25) : std::pair(0.0, 0.0));
        EXPECT_NEAR(angle, found == 2 ? turn + 2.0 : 0.0, 1e-12);
    }
}
