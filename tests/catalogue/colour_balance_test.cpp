#include "catalogue/colour_balance.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "catalogue/apply.h"
#include "corvane/core/blank.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

/// Planes of skies 200, 260 and 320 with noise 4, and stars of three colours, some of which saturate red at 9000.
CStlImage StarsOfThreeColours()
{
    constexpr double kColours[3][3]{{1.6, 1.0, 0.5}, {1.5, 1.0, 0.6}, {0.9, 1.0, 1.2}};
    std::mt19937 random(4);
    std::normal_distribution<double> normal;
    return test::Make(300, 260, 3, [&](int x, int y, int p) {
        const int star = x / 30 + y / 26 * 10;
        const double square = std::pow(x % 30 - 14.3, 2) + std::pow(y % 26 - 12.6, 2);
        const double peak = star % 7 == 0 ? 30000.0 : 1500.0 + 20.0 * star;
        const double light = kColours[star % 3][p] * peak * std::exp(-square / 4.0);
        return std::min(200.0 + 60.0 * p + light + 4.0 * normal(random), 9000.0);
    });
}

double MedianOfPlane(const CStlImage& image, int plane)
{
    std::vector<float> samples = test::Samples(image);
    const auto first = samples.begin() + 300 * 260 * plane;
    std::nth_element(first, first + 39000, first + 78000);
    return first[39000];
}

TEST(ColourBalance, BringsSkiesToOneValueAndStarsToWhite)
{
    const CStlImage image = StarsOfThreeColours();
    const CStlImage neutral = Apply(image, "neutral-sky", {});
    const CStlImage asked = Apply(image, "neutral-sky", {{"value", 50.0}});
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_NEAR(MedianOfPlane(neutral, plane), 260.4, 0.4);
        EXPECT_NEAR(MedianOfPlane(asked, plane), 50.4, 0.4);
        const float before = image.GetPixelGrayRaw(7, 9, plane) - image.GetPixelGrayRaw(100, 90, plane);
        EXPECT_NEAR(neutral.GetPixelGrayRaw(7, 9, plane) - neutral.GetPixelGrayRaw(100, 90, plane), before, 1e-3);
    }
    const CStlImage white = Apply(image, "white-balance", {});
    EXPECT_NEAR(white.GetPixelGrayRaw(7, 9, 0) / image.GetPixelGrayRaw(7, 9, 0), 1.0 / 1.5, 0.01);
    EXPECT_EQ(white.GetPixelGrayRaw(7, 9, 1), image.GetPixelGrayRaw(7, 9, 1));
    EXPECT_NEAR(white.GetPixelGrayRaw(7, 9, 2) / image.GetPixelGrayRaw(7, 9, 2), 1.0 / 0.6, 0.03);
    EXPECT_EQ(
        test::ErrorOf([] { Apply(test::Make(60, 60, 3, [](int x, int, int) { return x % 2; }), "white-balance", {}); }),
        "white-balance: image: has no star to tell its colour by; give red, green and blue");
}

TEST(ColourBalance, IsThePlainFormBesideWhatIsUndefined)
{
    test::ForEachImage([](const CStlImage& image) {
        if (image.GetPlanes() < 3) {
            return;
        }
        const CStlImage doubled = Apply(image, "white-balance", {{"green", 2.5}});
        const CStlImage less = Apply(image, "scnr", {{"strength", 0.75}});
        const CStlImage least = Apply(image, "scnr", {{"mode", "maximum"}});
        const BlankTest isBlank(image);
        for (int i = 0; i < image.GetWidth() * image.GetHeight(); ++i) {
            const auto sample = [i](const CStlImage& of, int plane) {
                return of.GetPixelGrayRaw(i % of.GetWidth(), i / of.GetWidth(), plane);
            };
            const float r = sample(image, 0);
            const float g = sample(image, 1);
            const float b = sample(image, 2);
            const bool stays = isBlank(r) || isBlank(g) || isBlank(b) || !std::isfinite(r + g + b);
            const auto lowered = [=](double most, double strength) {
                return stays || !(g > most) ? g : static_cast<float>(g - strength * (g - most));
            };
            EXPECT_TRUE(test::SameSamples(
                {sample(doubled, 0), sample(doubled, 1), sample(less, 1), sample(least, 1), sample(least, 2)},
                {r, isBlank(g) ? g : static_cast<float>(2.5 * g), lowered((0.0 + r + b) / 2.0, 0.75),
                 lowered(r > b ? r : b, 1.0), b}))
                << i;
        }
    });
}

} // namespace
} // namespace corvane::catalogue
