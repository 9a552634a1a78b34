#include "tests/stack/test_night.h"
#include "tests/support/plain.h"

namespace corvane::stack {

namespace {

using Values = std::function<double(int, int, int)>;

constexpr int kWidth = 37;
constexpr int kHeight = 70; // more rows than are measured at once

constexpr auto Bias = [](int x, int y, int) -> double { return 300 + x % 3 + y % 2; };
constexpr auto Light = [](int x, int y, int p) -> double { return 1000 + 17 * x + 3 * y + 100 * p; };
constexpr auto Current = [](int x, int y, int) { return 0.5 * (x % 11) + 0.25 * (y % 7); };
constexpr auto Vignette = [](int x, int y, int) -> double {
    return 5000 - (x - 18) * (x - 18) * 3 - (y - 35) * (y - 35);
};

/// Three frames whose median is the given one.
std::vector<Values> Scattered(const Values& middle)
{
    return {middle, [=](int x, int y, int p) { return middle(x, y, p) + (x + y) % 5; },
            [=](int x, int y, int p) { return middle(x, y, p) - (x * y) % 4; }};
}

} // namespace

class CalibrateTest : public Night {
protected:
    std::vector<std::string> SaveAll(const std::string& kind, const std::vector<Values>& frames, double exposure,
                                     int planes = 1)
    {
        std::vector<std::string> files;
        for (const Values& frame : frames) {
            files.push_back(kind + std::to_string(files.size()) + ".fits");
            files.back() = Save(files.back(), Make(kWidth, kHeight, planes, frame), exposure);
        }
        return files;
    }

    void ExpectStack(const Options& options, const Values& expected)
    {
        const CStlImage image = stack::Run(options).image;
        EXPECT_TRUE(test::Agree(image, test::Plain(Make(kWidth, kHeight, image.GetPlanes(), expected)), 4));
    }

    static double MeanOf(const Values& flat) { return Make(kWidth, kHeight, 1, flat).GetAvrGrayRaw(0); }
};

TEST_F(CalibrateTest, TakesOffBiasOrDarkAsItIs)
{
    Options options;
    options.lights = SaveAll("light", {Light}, 60.0, 3);
    options.bias = SaveAll("bias", Scattered(Bias), 0.0);
    ExpectStack(options, [](int x, int y, int p) { return Light(x, y, p) - Bias(x, y, p); });

    const Values dark = [](int x, int y, int p) { return Bias(x, y, p) + 60.2 * Current(x, y, p); };
    options.darks = SaveAll("dark", {dark}, 60.2); // within half a per cent
    ExpectStack(options, [&](int x, int y, int p) { return std::max(Light(x, y, p) - dark(x, y, p), 0.0); });
    options.bias.clear();
    ExpectStack(options, [&](int x, int y, int p) { return std::max(Light(x, y, p) - dark(x, y, p), 0.0); });
}

TEST_F(CalibrateTest, ScalesTheDarkOfAnotherExposureAboveTheBias)
{
    Options options;
    options.lights = SaveAll("light", {Light}, 90.0, 3);
    options.bias = SaveAll("bias", {Bias}, 0.0, 3);
    options.darks =
        SaveAll("dark", Scattered([](int x, int y, int p) { return Bias(x, y, p) + 60 * Current(x, y, p); }), 60.0);
    ExpectStack(options, [](int x, int y, int p) {
        return std::max(Light(x, y, p) - static_cast<float>(Bias(x, y, p) + 90 * Current(x, y, p)), 0.0);
    });
}

TEST_F(CalibrateTest, KeepsNoiseBelowZeroAboveThePedestal)
{
    Options options;
    options.lights = SaveAll("light", {Bias}, 60.0);
    const Values dark = [](int x, int y, int p) { return Bias(x, y, p) + x % 4; };
    options.darks = SaveAll("dark", {dark}, 60.0);
    ExpectStack(options, [](int, int, int) { return 0.0; });
    options.pedestal = 2.5;
    ExpectStack(options, [](int x, int, int) { return std::max(2.5 - x % 4, 0.0); });
    EXPECT_EQ(stack::Run(options).header.Number("PEDESTAL"), -2.5);
}

TEST_F(CalibrateTest, BringsFlatsToOneLevelBeforeTheirMedian)
{
    Options options;
    options.lights = SaveAll("light", {Light}, 60.0, 3);
    options.bias = SaveAll("bias", {Bias}, 0.0);
    std::vector<Values> flats;
    for (const double level : {1.0, 0.25, 2.0}) { // without levelling the first would be the median everywhere
        flats.emplace_back([=](int x, int y, int p) {
            const double star = x == 5 && y == 40 * level ? 500 : 0; // in one of the flats at each place
            return Bias(x, y, p) + level * (Vignette(x, y, p) + star);
        });
    }
    options.flats = SaveAll("flat", flats, 2.0);
    const auto level = [](const Values& flat) {
        return MeanOf([&](int x, int y, int p) { return flat(x, y, p) - Bias(x, y, p); });
    };
    const double levels[] = {level(flats[0]), level(flats[1]), level(flats[2])};
    const Values master = [&](int x, int y, int p) {
        std::vector<double> values;
        for (std::size_t i = 0; i < 3; ++i) {
            values.push_back((flats[i](x, y, p) - Bias(x, y, p)) * levels[0] / levels[i]);
        }
        std::sort(values.begin(), values.end());
        return values[1];
    };
    const double mean = MeanOf(master);
    ExpectStack(options, [&](int x, int y, int p) {
        return (Light(x, y, p) - Bias(x, y, p)) * mean / static_cast<float>(master(x, y, 0));
    });
}

TEST_F(CalibrateTest, FlatDarksStandBeforeTheBias)
{
    Options options;
    options.lights = SaveAll("light", {Light}, 60.0);
    options.bias = SaveAll("bias", {Bias}, 0.0);
    options.flats = SaveAll("flat", {Vignette}, 2.0);
    const Values flatDark = [](int x, int y, int p) { return 2 * Bias(x, y, p); };
    options.flatDarks = SaveAll("flatdark", {flatDark}, 2.0);
    const Values flat = [&](int x, int y, int p) { return Vignette(x, y, p) - flatDark(x, y, p); };
    const double mean = MeanOf(flat);
    ExpectStack(options, [&](int x, int y, int p) { return (Light(x, y, p) - Bias(x, y, p)) * mean / flat(x, y, p); });
}

} // namespace corvane::stack
