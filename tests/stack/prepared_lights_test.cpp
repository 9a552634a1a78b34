#include <numeric>

#include "corvane/colour/demosaic.h"
#include "tests/stack/test_night.h"
#include "tests/support/plain.h"
#include "tests/support/storage.h"

namespace corvane::stack {

using PreparedLightsTest = Night;

TEST_F(PreparedLightsTest, WeightsByNoiseAndCountsWhatIsClipped)
{
    constexpr double kNoise[] = {1.0, 1.0, 2.0, 2.0, 4.0, 1.0, 3.0, 2.0};
    Options options;
    double precision = 0.0;
    for (const double noise : kNoise) {
        const CStlImage sky = Sky(300, 300, 1, {}); // of level 200 and noise 2
        const auto sample = [&](int x, int y, int) { return noise * (sky.GetPixelGrayRaw(x, y, 0) - 200.0) / 2.0; };
        CStlImage light = Make(300, 300, 1, sample);
        light.SetPixelGrayRaw(70, 9, noise == 3.0 ? 5000.0F : 0.0F, 0);
        light.SetPixelGrayRaw(30, 40, noise == 4.0 ? -5000.0F : 0.0F, 0);
        options.lights.push_back(Save(std::to_string(options.lights.size()) + ".fits", light));
        precision += 1.0 / (noise * noise);
    }
    options.align = AlignMethod::kNone;
    options.method = CombineMethod::kClippedMean;
    options.weight = WeightMethod::kNoise;
    options.wantsRejected = true;
    options.wantsNoise = true;
    options.wantsReport = true;
    const Result result = stack::Stack(options);
    EXPECT_NEAR(MeasureFrame(result.image, 0).noise * std::sqrt(precision), 1.0, 0.1); // 1.6 without weights
    EXPECT_NEAR(result.frames[4].weight, 1.0 / 16.0, 0.005);
    EXPECT_EQ(result.rejected.GetPixelGrayRaw(70, 9, 1), 1.0);
    EXPECT_EQ(result.rejected.GetPixelGrayRaw(30, 40, 0), 1.0);
    const auto sumOf = [](const CStlImage& image, int plane) {
        const std::vector<float> samples = test::Samples(image);
        const auto begin = samples.begin() + plane * image.GetWidth() * image.GetHeight();
        return std::accumulate(begin, begin + image.GetWidth() * image.GetHeight(), 0.0);
    };
    RejectedValues all;
    for (const FrameReport& frame : result.frames) {
        all.low += frame.rejected->low;
        all.high += frame.rejected->high;
        EXPECT_EQ(frame.rejected->values, 300 * 300);
    }
    EXPECT_EQ(all.low, sumOf(result.rejected, 0));
    EXPECT_EQ(all.high, sumOf(result.rejected, 1));
    EXPECT_EQ(all.low + all.high, sumOf(result.rejectedPlaces, 0));
    EXPECT_GE(result.rejectedPlaces.GetPixelGrayRaw(70 / 2, 9 / 2, 0), 1.0); // a pixel for 2 x 2
    double variance = 0.0;
    for (const float noise : test::Samples(result.noise)) {
        variance += noise * noise / (300.0 * 300.0);
    }
    EXPECT_NEAR(variance * precision, 1.0, 0.05); // 1.6 if lights were alike in noise
    EXPECT_NEAR(result.depth->ideal * std::sqrt(precision), 1.0, 0.03);
    EXPECT_EQ(result.depth->stack, MeasureFrame(result.image, 0).noise);
    const CStlImage& small = result.thumbnails[6];
    EXPECT_EQ(std::pair(small.GetWidth(), small.GetHeight()), std::pair(75, 75));
    EXPECT_GT(small.GetPixelGrayRaw(70 / 4, 9 / 4, 0), 250.0); // 5000 among 16 pixels
}

TEST_F(PreparedLightsTest, MendsHotPixelsAmongThoseOfTheirFilter)
{
    const auto isHot = [](int x, int y) { return x == 20 && y == 64; };
    const auto dark = [&](int x, int y, int) { return isHot(x, y) ? 900 : 100 + x % 3; };
    const auto light = [&](int x, int y, int) { return isHot(x, y) ? 30000 : 500 + 1000 * (x % 2) + 500 * (y % 2); };
    for (const auto& [pattern, expected] : {std::pair("RGGB", 400.0), {"", 1650.0}}) {
        const auto name = [=](io::Header& header) { header.Set("BAYERPAT", pattern); };
        Options options;
        options.lights = {Save("a.fits", Make(80, 90, 1, light), 60.0, name)};
        options.darks = {Save("dark.fits", Make(80, 90, 1, dark))};
        options.cosmetic = true;
        options.align = AlignMethod::kNone;
        const Result result = stack::Stack(options);
        EXPECT_NEAR(result.image.GetPixelGrayRaw(20, 64, 0), expected, 2.0) << pattern;
    }
}

TEST_F(PreparedLightsTest, KnowsSaturatedStarsByTheirRawSamples)
{
    const auto dark = [](int x, int y, int) { return x == 70 ? 60000 : 500 + (x * 7 + y * 13) % 29; }; // a hot column
    const auto flat = [](int x, int y, int) { return 20000 - std::hypot(x - 200, y - 150) * 25 + (x * 5 + y) % 17; };
    std::vector<Place> places;
    for (int i = 0; i < 35; ++i) {
        places.push_back({30.2 + 55.1 * (i % 7), 30.4 + 53.3 * (i / 7), i % 7 == 3 ? 1e5 : 5000.0});
    }
    const CStlImage sky = Sky(400, 300, 1, places);
    const auto light = [&](int x, int y, int) {
        return std::min(60000.0, dark(x, y, 0) + sky.GetPixelGrayRaw(x, y, 0) * flat(x, y, 0) / 18000.0);
    };
    Options options;
    options.lights = {Save("a.fits", Make(400, 300, 1, light)), Save("b.fits", Make(400, 300, 1, light))};
    options.darks = {Save("dark.fits", Make(400, 300, 1, dark))};
    options.flats = {Save("flat.fits", Make(400, 300, 1, flat))};
    for (const FrameReport& frame : stack::Register(options).frames) {
        EXPECT_EQ(frame.stars, 30);
    }
}

TEST_F(PreparedLightsTest, BandsOfAMosaicBecomeTheColoursOfTheWhole)
{
    std::vector<std::int16_t> samples(301 * 150);
    test::Random random(3);
    for (std::int16_t& sample : samples) {
        const int s = random.Whole(-60, 3000);
        sample = static_cast<std::int16_t>(s < 0 ? -32768 : s);
    }
    Options options;
    options.lights = {
        Write("mosaic.fits", test::Hdu(test::Cards(16, {301, 150}, {"BLANK   = -32768", "BAYERPAT= 'GBRG'"}),
                                       test::Bytes(samples, true)))};
    for (const DemosaicMethod method : {DemosaicMethod::kEdgeAware, DemosaicMethod::kBilinear}) {
        options.demosaic = method;
        CStlImage expected(io::Load(options.lights[0]).image);
        Demosaic(expected, BayerPattern::kGbrg, method, expected, {});
        const test::TightMemory tiny(1 << 20);
        EXPECT_TRUE(test::Agree(stack::Stack(options).image, test::Plain(expected)));
    }
}

} // namespace corvane::stack
