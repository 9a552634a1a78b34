#include "stack/combine/normalise.h"

#include "stack/calibrate/cosmetic.h"
#include "stack/combine/weights.h"
#include "tests/stack/test_night.h"
#include "tests/support/plain.h"

namespace corvane::stack {

using NormaliseTest = Night;

TEST_F(NormaliseTest, MeasuresWhatMostSamplesSayAndBringsItBack)
{
    CStlImage image = Sky(700, 500, 1, {{300, 200, 9000}, {123, 321, 50000}});
    test::Sprinkle(image, {std::nanf(""), std::numeric_limits<float>::infinity(), -9.0F}, 3);
    image.SetBlank(-9);
    image.SetBlankUsed(1);
    const FrameLevel reference = MeasureFrame(image, 0);
    EXPECT_NEAR(reference.background, 200.0, 0.05);
    EXPECT_NEAR(reference.spread, 2.0, 0.05);
    EXPECT_NEAR(reference.noise, 2.0, 0.05);
    const auto seen = [&](int x, int y, int) {
        const double v = image.GetPixelGrayRaw(x, y, 0);
        return v == -9.0 ? std::nan("") : v * 0.5 + 400.0;
    };
    const FrameLevel frame = MeasureFrame(Make(700, 500, 1, seen), 0); // through clouds, against another sky
    const std::tuple<NormaliseMethod, std::optional<double>, double, double> cases[] = {
        {NormaliseMethod::kNone, 3.0, 1.0, 0.0},   {NormaliseMethod::kOffset, 3.0, 1.0, -300.0},
        {NormaliseMethod::kScale, 3.0, 0.4, 0.0},  {NormaliseMethod::kBoth, {}, 2.0, -800.0},
        {NormaliseMethod::kBoth, 3.0, 3.0, -1300}, {NormaliseMethod::kBoth, -1.0, 1.0, -300.0}};
    for (const auto& [method, fluxRatio, factor, offset] : cases) {
        const Normalisation got = NormalisationOf(reference, frame, method, fluxRatio);
        EXPECT_NEAR(got.factor, factor, 1e-3 * factor) << static_cast<int>(method);
        EXPECT_NEAR(got.offset, offset, 0.1) << static_cast<int>(method);
    }
    EXPECT_EQ(NormalisationOf(reference, {}, NormaliseMethod::kScale).factor, 1.0);
}

TEST_F(NormaliseTest, WeightsFollowTheMeasure)
{
    const std::vector<FrameQuality> frames = {{2.0, 3.0, 50}, {4.0, 1.5, 0}, {0.0, std::nan(""), 25}};
    EXPECT_EQ(WeightsOf(frames, WeightMethod::kNone), (std::vector{1.0, 1.0, 1.0}));
    EXPECT_EQ(WeightsOf(frames, WeightMethod::kNoise), (std::vector{1.0, 0.25, 0.0}));
    EXPECT_EQ(WeightsOf(frames, WeightMethod::kFwhm), (std::vector{0.25, 1.0, 0.0}));
    EXPECT_EQ(WeightsOf(frames, WeightMethod::kStars), (std::vector{1.0, 0.0, 0.5}));
    EXPECT_EQ(WeightsOf({{}, {}}, WeightMethod::kNoise), (std::vector{1.0, 1.0}));
}

TEST_F(NormaliseTest, MendsHotPixelsByTheirNeighboursOfTheSameFilter)
{
    const auto level = [](int x, int y) { return 100.0 + (x * 7 + y * 13) % 5; };
    const std::pair<int, int> hot[] = {{20, 0}, {22, 0}, {41, 63}, {41, 64}, {43, 64}, {60, 149}};
    CStlImage dark = Make(80, 150, 1, [&](int x, int y, int) { return level(x, y) + (x < 15 ? 900 : 0); }); // glow
    CStlImage light = Make(80, 150, 1, [](int x, int y, int) { return 1000 * (x % 2) + 500 * (y % 2) + x + y; });
    CStlImage expected(light);
    for (const auto& [x, y] : hot) {
        dark.SetPixelGrayRaw(x, y, 300.0F, 0);
        light.SetPixelGrayRaw(x, y, 60000.0F, 0);
    }
    expected.SetPixelGrayRaw(20, 0, 21.0F, 0); // of 18, 20, 22 and 24: the border lacks three, and one is hot
    expected.SetPixelGrayRaw(22, 0, 24.0F, 0);
    expected.SetPixelGrayRaw(60, 149, 707.0F, 0);
    const HotPixels pixels(dark, 2);
    for (const int row : {0, 64, 128}) { // a band of rows, and what it looks at beyond them
        const int end = std::min(row + 64, 150);
        const int first = std::max(row - pixels.Margin(), 0);
        const RowBand band{light.GetImageAdr(0, first, 0), 80, first, std::min(end + pixels.Margin(), 150) - first};
        pixels.Clean(band, row, end, 0, BlankTest());
    }
    EXPECT_TRUE(test::Agree(light, test::Plain(expected)));
    EXPECT_EQ(pixels.Count(), std::size(hot));
    EXPECT_NE(HotPixels(Make(8, 8, 1, [](int x, int y, int) { return x == 3 && y > 2 ? 90 : 0; }), 1).Fault(), "");
}

} // namespace corvane::stack
