#include "stars/light_ratio.h"

#include <gtest/gtest.h>

#include "stars/place_field.h"
#include "tests/support/star_scene.h"

namespace corvane::stars {
namespace {

using test::Moved;
using test::StarScene;

FieldPlace Placed(const CStlImage& first, const CStlImage& other)
{
    const StarField seen = FindFieldStars(first, 0);
    const StarField field = FindFieldStars(other, 0);
    return PlaceField({seen.stars, first.GetWidth(), first.GetHeight()},
                      {field.stars, other.GetWidth(), other.GetHeight()}, other.GetStdCtr());
}

TEST(LightRatio, IsThatOfFramesThatLieAnyhow)
{
    const CStlImage first = test::Shot({.nebula = 80.0, .full = 9000.0});
    const std::pair<StarScene, double> cases[] = {
        {Moved({.light = 0.37, .sky = 20.0, .seed = 2}, 12.3, -8.8, 178.2), 1.0 / 0.37},
        {Moved({.light = 2.6, .nebula = 300.0, .fwhm = 3.9, .seed = 3}, -40.1, 20.0, -3.0),
         std::pow(3.2 / 3.9, 2) / 2.6},
        {Moved({.size = {240, 180}, .light = 2.0, .noise = 6.0, .seed = 4}, 120.0, 90.0, 0.5, 0.5), 1.0 / 2.0}};
    for (const auto& [scene, truth] : cases) {
        const CStlImage other = test::Shot(scene);
        const FieldPlace place = Placed(first, other);
        ASSERT_EQ(place.match.reason, "");
        for (const auto& [x, y] : {CPoint(100, 80), CPoint(300, 90), CPoint(200, 250)}) {
            EXPECT_NEAR(place.mapping.Map(x, y).x, scene.place.Map(x, y).x, 0.05);
            EXPECT_NEAR(place.mapping.Map(x, y).y, scene.place.Map(x, y).y, 0.05);
        }
        const LightRatio ratio = MeasureLightRatio({first, 0}, {other, 0}, place.mapping);
        EXPECT_NEAR(ratio.ratio, truth, 0.01 * truth) << truth;
        EXPECT_LT(ratio.error, 0.01 * truth);
        EXPECT_GT(ratio.stars, 25);
    }
}

TEST(LightRatio, OfNoStarsIsNone)
{
    const CStlImage empty = test::Shot({.stars = 0});
    EXPECT_EQ(MeasureLightRatio({empty, 0}, {test::Shot({}), 0}, {}).stars, 0);
    EXPECT_EQ(Placed(empty, test::Shot({})).match.reason, "the reference has 0 usable stars, and 3 are the least");
    CStlImage mirrored = test::Shot({});
    mirrored = test::Make(480, 360, 1,
                          [&, from = mirrored](int x, int y, int) { return from.GetPixelGrayRaw(479 - x, y, 0); });
    EXPECT_EQ(Placed(test::Shot({}), mirrored).match.reason, "it shows the reference in a mirror; flip it first");
}

} // namespace
} // namespace corvane::stars
