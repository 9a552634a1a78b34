#include "stars/patch.h"

#include <cmath>
#include <vector>

#include "tests/support/images.h"

namespace corvane::stars {
namespace {

struct Disc {
    double x;
    double y;
    double radius;
    double light;
};

/// Discs with soft edges on a noisy sky, and a hot pixel that stays where it is.
CStlImage Planets(double sky, const std::vector<Disc>& discs)
{
    test::Random random(3);
    CStlImage image = test::Make(160, 140, 1, [&](int x, int y, int) {
        double s = sky + random.Between(-3.0, 3.0);
        for (const Disc& disc : discs) {
            s += disc.light / (1.0 + std::exp(2.0 * (std::hypot(x - disc.x, y - disc.y) - disc.radius)));
        }
        return s;
    });
    image.SetPixelGrayRaw(70, 60, 5e4F, 0);
    return image;
}

std::vector<PatchPlace> PlacesOf(const Patch& patch, const CStlImage& frame, std::size_t count)
{
    std::vector<PatchPlace> places;
    const auto visit = [&](const PatchPlace& place) {
        places.push_back(place);
        return places.size() < count;
    };
    const int found = patch.Find(frame, visit, {});
    EXPECT_EQ(found, static_cast<int>(places.size()));
    return places;
}

} // namespace

TEST(Patch, FindsAPlanetOfAnyBrightnessThroughAnotherSkyAndHits)
{
    const CStlImage first = Planets(100.0, {{70.0, 66.0, 9.0, 2000.0}});
    const CStlImage second = Planets(-400.0, {{62.7, 71.4, 9.0, 300.0}});
    const Patch patch(first, CPoint(68, 68), 40, 12, PatchLight::kAny);
    EXPECT_TRUE(patch.ShowsObject());
    const auto places = PlacesOf(patch, second, 1);
    ASSERT_EQ(places.size(), 1U);
    EXPECT_NEAR(places[0].dx, 7.3, 0.1001);
    EXPECT_NEAR(places[0].dy, -5.4, 0.1001);
    EXPECT_GT(places[0].correlation, 0.99);
    EXPECT_EQ(patch.Find(Planets(0.0, {}), [](const PatchPlace&) { return true; }, {}), 0);
    EXPECT_FALSE(Patch(first, CPoint(20, 120), 40, 4, PatchLight::kAny).ShowsObject());
    EXPECT_THROW(patch.Find(second, [](const PatchPlace&) { return false; }, {.cancelled = [] { return true; }}),
                 Cancelled);
}

TEST(Patch, TellsTheOneOfItsBrightnessFirstAndWhatLiesOnIt)
{
    const Patch patch(Planets(100.0, {{60.0, 64.0, 2.0, 900.0}}), CPoint(60, 64), 24, 25, PatchLight::kSame);
    const auto places = PlacesOf(patch, Planets(100.0, {{50.0, 64.0, 2.0, 450.0}, {75.0, 70.0, 2.0, 900.0}}), 2);
    ASSERT_EQ(places.size(), 2U);
    EXPECT_NEAR(places[0].dx, -15.0, 0.1001);
    EXPECT_NEAR(places[0].gain, 1.0, 0.05);
    EXPECT_LT(places[0].drift, 0.1);
    EXPECT_NEAR(places[1].dx, 10.0, 0.3); // it is not like the patch
    EXPECT_NEAR(places[1].gain, 0.5, 0.05);
    const auto touched = PlacesOf(patch, Planets(100.0, {{60.0, 64.0, 2.0, 900.0}, {64.0, 64.0, 2.0, 600.0}}), 1);
    EXPECT_GT(touched.at(0).drift, 0.25);
}

} // namespace corvane::stars
