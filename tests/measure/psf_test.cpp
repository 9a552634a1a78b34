#include "corvane/measure/psf.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

/// Values from a peak outwards, the peak included.
using Ray = std::vector<double>;

/// Where a ray has fallen to a height; NaN when it does not.
double Crossing(const Ray& ray, double half)
{
    std::size_t i = 1;
    while (i < ray.size() && !(ray[i] <= half)) {
        ++i;
    }
    return i < ray.size() ? static_cast<double>(i) - (half - ray[i]) / (ray[i - 1] - ray[i]) : NAN;
}

/// The width of the star that a climb from a point leads to; NaN when it is refused.
double PlainWidth(const Plain& image, CPoint point)
{
    const CRect inside(0, 0, image.width, image.height);
    const auto at = [&](CPoint p) {
        const double first = image.At(p.x, p.y, 0);
        return image.planes < 3 ? first : (first + image.At(p.x, p.y, 1) + image.At(p.x, p.y, 2)) / 3.0;
    };
    for (CPoint from(point.x - 1, 0); !(from == point);) {
        from = point;
        for (int n = 0; n < 9; ++n) {
            const CPoint to(from.x + n / 3 - 1, from.y + n % 3 - 1);
            point = inside.PtInRect(to) && at(to) > at(point) && !image.IsBlank(at(to)) ? to : point;
        }
    }
    std::vector<Ray> rays(4);
    Ray sky;
    for (int d = 0; d < 4; ++d) {
        Ray& ray = rays[static_cast<std::size_t>(d)];
        for (CPoint p = point; inside.PtInRect(p); (d < 2 ? p.x : p.y) += d % 2 == 0 ? -1 : 1) {
            ray.push_back(at(p));
        }
        std::size_t end = 1;
        while (end < ray.size() && !(ray[end] > ray[end - 1])) {
            ++end;
        }
        for (std::size_t i = end + 2; i < std::min(end + 14, ray.size()); ++i) {
            sky.push_back(ray[i]);
        }
    }
    std::sort(sky.begin(), sky.end(), [](double a, double b) { return a < b || (a == a && b != b); });
    const double base = sky.empty() ? NAN : sky[sky.size() / 2];
    double width = at(point) > base ? 0.0 : NAN;
    for (const Ray& ray : rays) {
        width += Crossing(ray, (at(point) + base) * 0.5) * 0.5;
    }
    return width >= 0.0 && width < 20.0 ? width : NAN;
}

/// A star on a sky that ripples as little as it must for wings to have an end.
CStlImage StarImage(double x, double y, double sigma)
{
    return Make(65, 65, 1, [=](int px, int py, int) {
        const double r2 = std::pow(px - x, 2) + std::pow(py - y, 2);
        return 1e4 * std::exp(-r2 / (2.0 * sigma * sigma)) + 1e-3 * ((px + py) % 2);
    });
}

} // namespace

TEST(Psf, EqualsThePlainForm)
{
    int kept = 0;
    const auto check = [&](CStlImage& image) {
        const int columns = image.GetWidth() + 6;
        const int points = columns * (image.GetHeight() + 6);
        for (int n = 0; n<points; n += points> 6000 ? 37 : 1) {
            const CPoint point(n % columns - 3, n / columns - 3);
            PSF psf(&image);
            double width = 0.0;
            const double expected = PlainWidth(Plain(image), point);
            ASSERT_EQ(psf.Add(point), std::isnan(expected) ? 0 : 1) << point.x << ", " << point.y;
            if (psf.GetMeanFWHM(&width) != 0) { // it is above 0
                ++kept;
                EXPECT_NEAR(std::sqrt(width), std::sqrt(expected) * (0.4246609 * 2.354820045829508), 1e-12);
            }
        }
    };
    ForEachImage(check);
    CStlImage star = StarImage(20.3, 15.6, 2.1);
    SprinkleOddities(star, 4);
    check(star);
    star.SetBlank(static_cast<int>(star.GetPixelGrayRaw(20, 16, 0))); // the peak is blank
    check(star);
    EXPECT_GT(kept, 1000);
}

TEST(Psf, MeasuresGaussianStarsWithinTheBiasOfSampling)
{
    for (const double sigma : {1.0, 1.7, 4.0}) {
        for (const auto& [dx, dy] : {std::pair{0.0, 0.0}, {0.25, -0.4}, {-0.49, 0.49}}) {
            CStlImage image = StarImage(32.0 + dx, 32.0 + dy, sigma);
            PSF psf(&image);
            double width = 0.0;
            EXPECT_EQ(psf.Add({33, 30}), 1);
            EXPECT_EQ(psf.GetMedianFWHM(&width), 1);
            EXPECT_NEAR(width, 2.354820045829508 * sigma, 0.25);
        }
    }
}

TEST(Psf, AveragesRootsAndRefusesWhatIsTooWideOrTooFew)
{
    CStlImage image(-32, 150, 41, 1, 1.0, 0.0, 1);
    // Peaks that fall in lines to a sky of 0; a pixel that rises ends their wings.
    for (const auto& [x, fall] : {std::pair{20, 1.0}, {62, 9.0}, {120, 21.0}}) {
        for (int i = -20; i <= 20; ++i) {
            const double v = std::max(100.0 - 100.0 * std::abs(i) / fall, std::abs(i) == 16 ? 40.0 : 0.0);
            image.SetPixelGrayRaw(x + i, 20, static_cast<float>(v), 0);
            image.SetPixelGrayRaw(x, 20 + i, static_cast<float>(v), 0);
        }
    }
    PSF psf(&image);
    double p = 7.0;
    double width = 7.0;
    EXPECT_EQ(psf.GetMeanPSF(&p), 0);
    EXPECT_EQ(psf.GetMedianPSF(&p), 0);
    EXPECT_EQ(psf.GetMeanFWHM(&width), 0);
    EXPECT_EQ(p, 7.0);
    const int last = std::numeric_limits<int>::max();
    for (const CPoint point : {CPoint(62, 21), {20, 20}, {120, 20}, {0, 39}, {-last - 1, 20}, {20, last}}) {
        psf.Add(point);
    }
    EXPECT_EQ(psf.GetCount(), 2);
    EXPECT_TRUE(psf.GetMeanFWHM(&width) == 1 && Same(width, 4.0, 1e-6)) << width;
    EXPECT_TRUE(psf.GetMedianFWHM(&width) == 1 && Same(width, 9.0, 1e-6)) << width;
}
