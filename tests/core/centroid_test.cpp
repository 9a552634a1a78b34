#include <cmath>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

/// The centroid in its plain form; without half-widths the whole rectangle counts.
std::pair<double, double> PlainCentroid(const Plain& image, const CRect& kept, const std::vector<int>* halfWidths)
{
    const int left = std::max<int>(kept.left, 0);
    const int top = std::max<int>(kept.top, 0);
    const int right = std::min<int>(kept.right, image.width);
    const int bottom = std::min<int>(kept.bottom, image.height);
    const auto isInside = [&](int x, int y) {
        const int dx = std::abs(x - static_cast<int>(left + (right - left) * 0.5));
        const int dy = std::abs(y - static_cast<int>(top + (bottom - top) * 0.5));
        return halfWidths == nullptr ||
               (dx <= static_cast<int>((right - left) * 0.5) && dy <= static_cast<int>((bottom - top) * 0.5) &&
                dx <= (*halfWidths)[static_cast<std::size_t>(dy)]);
    };
    double m = 0.0;
    double sums[3] = {};
    for (const int pass : {1, 2}) {
        double total = 0.0;
        int count = 0;
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                bool blank = true;
                double d[3] = {};
                for (int p = 0; p < image.planes; ++p) {
                    blank = blank && image.IsBlank(image.At(x, y, p));
                    d[p] = image.To256(image.At(x, y, p), p);
                    d[p] = (pass == 1 || !image.Colour()) && d[p] < 0.0 ? 0.0 : d[p];
                }
                if (isInside(x, y) && blank) {
                    break;
                }
                if (isInside(x, y)) {
                    const double v = image.Colour() ? 0.299 * d[0] + 0.587 * d[1] + 0.114 * d[2] : d[0];
                    const double w = pass == 1 || v - m <= 0.0 ? 0.0 : (v - m) * (v - m);
                    total += v;
                    ++count;
                    sums[0] += x * w;
                    sums[1] += y * w;
                    sums[2] += w;
                }
            }
        }
        m = pass == 1 ? total / count : m;
    }
    const double cx = sums[0] / sums[2];
    const double cy = sums[1] / sums[2];
    if (std::trunc(cx + 0.5) >= kept.left && std::trunc(cx + 0.5) < kept.right && std::trunc(cy + 0.5) >= kept.top &&
        std::trunc(cy + 0.5) < kept.bottom) {
        return {cx, cy};
    }
    return {static_cast<int>(kept.left + kept.right) / 2, static_cast<int>(kept.top + kept.bottom) / 2};
}

} // namespace

TEST(Centroid, EqualsThePlainForm)
{
    int offCentre = 0;
    ForEachImage(
        [&](CStlImage& image) {
            const Plain plain(image);
            ForEachRect(image, [&](CRect* rect) {
                const CRect kept = rect ? *rect : CRect(0, 0, plain.width, plain.height);
                std::vector<int> circle;
                CArray<int, int> halfWidths;
                for (int i = 0, radius = std::max(kept.Height() / 2, 0); i <= radius; ++i) {
                    circle.push_back(static_cast<int>(std::sqrt(radius * radius - i * i)));
                    halfWidths.Add(circle.back());
                }
                const bool reachesOut =
                    kept.left < 0 || kept.top < 0 || kept.right > plain.width || kept.bottom > plain.height;
                for (const bool isCircle : {false, !reachesOut}) {
                    const auto [ex, ey] = PlainCentroid(plain, kept, isCircle ? &circle : nullptr);
                    double cx = -99.0;
                    double cy = -99.0;
                    int ix = -99;
                    int iy = -99;
                    isCircle ? image.GetCenterOfGravityCircle(cx, cy, rect, &halfWidths)
                             : image.GetCenterOfGravity(cx, cy, rect);
                    isCircle ? image.GetCenterOfGravityCircle(ix, iy, rect, &halfWidths)
                             : image.GetCenterOfGravity(ix, iy, rect);
                    EXPECT_NEAR(cx, ex, 1e-9);
                    EXPECT_NEAR(cy, ey, 1e-9);
                    EXPECT_EQ(ix, static_cast<int>(cx + 0.5));
                    EXPECT_EQ(iy, static_cast<int>(cy + 0.5));
                    offCentre += cx != std::floor(cx);
                }
            });
        },
        true);
    EXPECT_GT(offCentre, 40);
}

TEST(ReferencePoints, FitParameters)
{
    struct At {
        double x, y;
        operator CfPoint() const { return {x, y}; }
    };
    struct Case {
        At own0, own1, ref0, ref1;
        int found;
        double dx, dy, angle;
    };
    for (const Case& c : {
             Case{{-1, -1}, {1, 1}, {1, 1}, {2, 2}, 0, 0, 0, 0},
             {{1, 1}, {2, 2}, {-1, -1}, {2, 2}, 0, 0, 0, 0},
             {{3.5, 1.25}, {-1, -1}, {1, 2}, {9, 9}, 1, 2.5, -0.75, 0},
             {{10, 10}, {0, 10}, {10, 10}, {10, 20}, 2, 0, 0, 89.9}, // a quarter turn one way falls just short
             {{10, 10}, {0, 10}, {10, 10}, {10, 0}, 2, 0, 0, -90.0}, // and the other way it does not
             {{10, 10}, {0, 10}, {11.5, 9.5}, {1.5, 9.5}, 2, -1.5, 0.5, 0.0},
             {{100, 0}, {0, 0}, {100, 0}, {0, 1}, 2, 0, 0, 0.5}, // 0.573 degrees, rounded down
             {{100, 0}, {0, 0}, {100, 0}, {0, -1}, 2, 0, 0, -0.6},
             {{10, 10}, {0, 10}, {10, 10}, {-1, -1}, 2, 0, 0, -45.0}, // the reference's point is not tested
             {{10, 10}, {10.9, 10}, {5, 5}, {9, 9}, 1, 5, 5, 0},      // points that coincide
             {{10, 10}, {20, 10}, {5, 5}, {5.5, 5.5}, 1, 5, 5, 0},
         }) {
        CStlImage own = RandomImage({3, 3}, 1, 1);
        CStlImage ref = RandomImage({9, 7}, 1, 1);
        own.SetStdPt(0, c.own0);
        own.SetStdPt(1, c.own1);
        ref.SetStdPt(0, c.ref0);
        ref.SetStdPt(1, c.ref1);
        double dx = 9.0;
        double dy = 9.0;
        double angle = 9.0;
        EXPECT_EQ(own.GetFitPrm(&ref, dx, dy, angle), c.found);
        EXPECT_EQ(dx, c.dx);
        EXPECT_EQ(dy, c.dy);
        EXPECT_NEAR(angle, c.angle, 1e-12);
        EXPECT_EQ(ref.GetStdCtr().ix, c.ref0.x == -1 ? 4 : static_cast<int>(c.ref0.x));
        EXPECT_EQ(own.GetFitPrm(&ref, dx, dy, angle, 0.5, 0.25, 2.0), c.found);
        EXPECT_EQ(dx, c.found > 0 ? c.dx + 0.5 : 0.0);
        EXPECT_EQ(dy, c.found > 0 ? c.dy + 0.25 : 0.0);
        EXPECT_NEAR(angle, c.found == 2 ? c.angle + 2.0 : 0.0, 1e-12);
    }
}
