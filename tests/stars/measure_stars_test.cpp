#include "stars/measure_stars.h"

#include <cmath>
#include <limits>

#include "tests/io/files.h"

namespace corvane::stars {

namespace {

struct Gaussian {
    double x, y, fwhm, peak;
};

constexpr Gaussian kStars[] = {{30.3, 40.2, 3.0, 900.0},
                               {100.0, 41.0, 6.0, 500.0},
                               {75.6, 100.4, 4.0, 700.0},
                               {0.6, 70.0, 4.0, 800.0},
                               {130.0, 120.0, 30.0, 300.0}};

/// Stars on a sky of 100 with noise of median deviation 0.865, in the last plane; other planes are flat.
CStlImage Field(int planes)
{
    test::Random random(5);
    return test::Make(150, 140, planes, [&](int x, int y, int p) {
        double s = 100.0 + random.Between(-1.73, 1.73);
        for (const auto& star : kStars) {
            const double far = std::pow(x - star.x, 2) + std::pow(y - star.y, 2);
            s += p == planes - 1 ? star.peak * std::exp2(-4.0 * far / (star.fwhm * star.fwhm)) : 0.0;
        }
        return s;
    });
}

} // namespace

TEST(MeasureStars, GivesWidthLightAndPlace)
{
    for (const int planes : {1, 3}) {
        CStlImage image = Field(planes);
        const FieldWidths widths = MeasureStars(image, planes - 1, {CPoint(32, 39), {99, 41}, {76, 99}}, 5.0);
        double roots = 0.0;
        for (std::size_t i = 0; i < widths.stars.size(); ++i) {
            const MeasuredStar& star = widths.stars[i];
            const Gaussian& truth = kStars[i];
            EXPECT_NEAR(star.x, truth.x, 0.05);
            EXPECT_NEAR(star.y, truth.y, 0.05);
            EXPECT_NEAR(star.fwhm, truth.fwhm, 0.3);
            EXPECT_NEAR(star.sky, 100.0, 0.5);
            EXPECT_NEAR(star.noise, 1.28, 0.25);
            EXPECT_NEAR(star.flux, 1.1331 * truth.peak * truth.fwhm * truth.fwhm, 0.02 * star.flux);
            roots += std::sqrt(star.fwhm) / 3.0;
        }
        ASSERT_EQ(widths.used, 3);
        EXPECT_NEAR(widths.meanFwhm, roots * roots, 1e-5);
        EXPECT_NEAR(widths.medianFwhm, widths.stars[2].fwhm, 1e-5);
        EXPECT_EQ(widths.parts[0][2].stars, 1);
        EXPECT_EQ(widths.parts[2][1].stars, 1);
        EXPECT_NEAR(widths.parts[0][2].fwhm, widths.stars[1].fwhm, 1e-5);
    }
}

TEST(MeasureStars, SaysWhyAStarDoesNotCount)
{
    CStlImage image = Field(1);
    image.SetPixelGrayRaw(140, 10, std::numeric_limits<float>::quiet_NaN(), 0);
    image.SetPixelGrayRaw(140, 20, std::numeric_limits<float>::infinity(), 0);
    const std::pair<CPoint, const char*> cases[] = {{{30, 40}, ""},
                                                    {{31, 41}, "the same as star 1"},
                                                    {{20, 120}, "not 50 standard deviations above the sky"},
                                                    {{1, 70}, "at the edge of the image"},
                                                    {{130, 120}, "no width below 20 pixels"},
                                                    {{140, 10}, "no defined sample"},
                                                    {{139, 21}, "no defined sample"},
                                                    {{-9999, 70}, "at the edge of the image"}};
    std::vector<CPoint> places;
    std::vector<FieldStar> found(1, {.x = 30.3, .y = 40.2, .isSaturated = true, .isCrowded = true});
    for (const auto& [place, fault] : cases) {
        places.push_back(place);
    }
    const FieldWidths widths = MeasureStars(image, 0, places, 50.0);
    for (std::size_t i = 0; i < places.size(); ++i) {
        EXPECT_EQ(widths.stars[i].fault, cases[i].second) << places[i].x << ',' << places[i].y;
    }
    EXPECT_EQ(widths.used, 1);
    const FieldWidths flagged = MeasureStars(image, 0, found, 50.0);
    EXPECT_EQ(flagged.stars[0].fault, "saturated crowded");
    EXPECT_EQ(flagged.used, 0);
    CStlImage empty;
    EXPECT_EQ(MeasureStars(empty, 0, places, 50.0).stars.size(), 0U);
}

} // namespace corvane::stars
