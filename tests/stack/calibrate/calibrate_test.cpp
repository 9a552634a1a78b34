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
        const CStlImage image = stack::Stack(options).image;
        EXPECT_TRUE(test::Agree(image, test::Plain(Make(kWidth, kHeight, image.GetPlanes(), expected)), 4));
    }

    static double MeanOf(const Values& flat) { return Make(kWidth, kHeight, 1, flat).GetAvrGrayRaw(0); }
};

TEST_F(CalibrateTest, TakesOffBiasOrDarkScaledAboveTheBias)
{
    const auto dark = [](double exposure) -> Values {
        return [=](int x, int y, int p) { return Bias(x, y, p) + exposure * Current(x, y, p); };
    };
    const auto above = [](const Values& taken) -> Values {
        return [=](int x, int y, int p) { return std::max(Light(x, y, p) - static_cast<float>(taken(x, y, p)), 0.0); };
    };
    const std::tuple<std::vector<Values>, std::vector<Values>, double, Values> cases[] = {
        {Scattered(Bias), {}, 0.0, above(Bias)},
        {Scattered(Bias), {dark(60.2)}, 60.2, above(dark(60.2))}, // within half a per cent
        {{}, {dark(60.2)}, 60.2, above(dark(60.2))},
        {{Bias}, Scattered(dark(40.0)), 40.0, above(dark(60.0))}};
    for (const auto& [bias, darks, exposure, expected] : cases) {
        Options options;
        options.lights = SaveAll("light", {Light}, 60.0, 3);
        options.bias = SaveAll("bias", bias, 0.0);
        options.darks = SaveAll("dark", darks, exposure);
        ExpectStack(options, expected);
    }
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
    EXPECT_EQ(stack::Stack(options).header.Number("PEDESTAL"), -2.5);
}

TEST_F(CalibrateTest, BringsFlatsAboveTheirDarkToOneLevelBeforeTheirMedian)
{
    std::vector<Values> lamps; // of which the first would be the median everywhere, were they not levelled
    std::vector<double> means;
    for (const double level : {1.0, 0.25, 2.0}) {
        lamps.emplace_back([=](int x, int y, int p) {
            const double star = x == 5 && y == 40 * level ? 500 : 0; // in one of the flats at each place
            return level * (Vignette(x, y, p) + star);
        });
        means.push_back(MeanOf(lamps.back()));
    }
    const Values master = [&](int x, int y, int p) {
        std::vector<double> values;
        for (std::size_t i = 0; i < 3; ++i) {
            values.push_back(lamps[i](x, y, p) * means[0] / means[i]);
        }
        std::sort(values.begin(), values.end());
        return values[1];
    };
    Options options;
    options.lights = SaveAll("light", {Light}, 60.0, 3);
    options.bias = SaveAll("bias", {Bias}, 0.0);
    for (const int dark : {1, 2}) { // times the bias, which stands for a dark of the flats where there is none
        const auto flatDark = [=](int x, int y, int p) { return dark * Bias(x, y, p); };
        std::vector<Values> flats;
        for (const Values& lamp : lamps) {
            flats.emplace_back([=](int x, int y, int p) { return lamp(x, y, p) + flatDark(x, y, p); });
        }
        options.flats = SaveAll("flat", flats, 2.0);
        options.flatDarks = dark == 1 ? std::vector<std::string>() : SaveAll("flatdark", {flatDark}, 2.0);
        ExpectStack(options, [&, mean = MeanOf(master)](int x, int y, int p) {
            return (Light(x, y, p) - Bias(x, y, p)) * mean / static_cast<float>(master(x, y, 0));
        });
    }
}

} // namespace corvane::stack
