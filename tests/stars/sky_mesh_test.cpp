#include "stars/sky_mesh.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <random>

#include "stars/sort_samples.h"
#include "tests/io/files.h"

namespace corvane::stars {

namespace {

/// A sky of 1000 that rises by 100 across the frame, with noise 8 and a star in every 28 x 28 samples.
CStlImage StarrySky(int width, int height)
{
    std::mt19937 random(3);
    std::normal_distribution<double> normal;
    return test::Make(width, height, 1, [&](int x, int y, int) {
        const double square = std::pow(x % 28 - 14, 2) + std::pow(y % 28 - 11, 2);
        return 1000.0 + 100.0 * x / width + 8.0 * normal(random) + 3000.0 * std::exp(-square / 4.0);
    });
}

} // namespace

TEST(SkyMesh, FollowsTheSkyUnderStars)
{
    const SkyMesh mesh = MeasureSkyMesh(StarrySky(611, 403), 0);
    for (int i = 0; i <= 20; ++i) {
        const double x = 40 + 531 * i / 20.0; // the level does not rise beyond the outer centres
        const double y = 403 * i / 20.0;
        EXPECT_NEAR(mesh.level.At(x, y), 1000.0 + 100.0 * x / 611, 2.0) << x << ", " << y;
        EXPECT_NEAR(mesh.noise.At(x, y), 8.0, 1.5) << x << ", " << y;
    }
    std::vector<float> row(611);
    for (const int y : {0, 240, 402}) {
        mesh.level.FillRow(y, row.data());
        for (int x = 0; x < 611; ++x) {
            EXPECT_NEAR(row[x], mesh.level.At(x, y), 1e-3) << x << ", " << y;
        }
    }
}

TEST(SkyMesh, SortsSamplesOfEitherSign)
{
    std::vector<float> samples{0.0F, -0.0F, 1e-40F, -1e-40F, 1e38F, -1e38F};
    std::mt19937 random(5);
    std::normal_distribution<float> normal(2.0F, 300.0F);
    std::generate_n(std::back_inserter(samples), 600, [&] { return normal(random); });
    std::vector<float> expected = samples;
    std::sort(expected.begin(), expected.end());
    SortSamples(samples);
    EXPECT_EQ(samples, expected);
}

TEST(SkyMesh, TakesWhatIsUnknownFromTheCellsAround)
{
    for (const float value : {NAN, std::numeric_limits<float>::infinity(), -5.0F, 0.0F}) {
        SCOPED_TRACE(value); // undefined, blank, and a border of one value
        CStlImage sky = StarrySky(611, 403);
        sky.SetBlank(-5);
        sky.SetBlankUsed(1);
        for (int i = 0; i < 150 * 403; ++i) {
            sky.SetPixelGrayRaw(200 + i / 403, i % 403, value, 0);
        }
        const SkyMesh mesh = MeasureSkyMesh(sky, 0);
        EXPECT_FALSE(mesh.IsEmpty());
        EXPECT_NEAR(mesh.level.At(150, 200), 1025.0, 5.0);
        EXPECT_NEAR(mesh.level.At(275, 200), 1045.0, 12.0); // in the middle of nothing
        EXPECT_NEAR(mesh.noise.At(275, 200), 8.0, 1.0);
    }
}

TEST(SkyMesh, CountsTheStepsOfWholeNumbersAsNoise)
{
    for (const auto& [noise, level, low, high] : {std::tuple(3.0, 100.3, 2.7, 3.3),
                                                  {1.0, 100.0, 0.93, 1.15},
                                                  {0.4, 100.0, 0.4, 0.6},
                                                  {0.3, 100.2, 0.28, 0.5},
                                                  {0.05, 100.5, 0.4, 0.6},
                                                  {0.2, 100.0, 0.05, 0.4}}) {
        std::mt19937 random(5);
        std::normal_distribution<double> normal(level, noise);
        const SkyMesh mesh =
            MeasureSkyMesh(test::Make(300, 200, 1, [&](int, int, int) { return std::round(normal(random)); }), 0);
        EXPECT_GT(mesh.noise.Median(), low) << noise << " about " << level;
        EXPECT_LT(mesh.noise.Median(), high) << noise << " about " << level;
        EXPECT_NEAR(mesh.level.Median(), level, 0.1 + 0.1 * noise) << noise;
    }
}

} // namespace corvane::stars
