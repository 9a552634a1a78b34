#include "examples/night/night.h"

#include <cmath>
#include <cstdint>
#include <numeric>
#include <stdexcept>

#include <gtest/gtest.h>

#include "examples/night/draw.h"
#include "tests/support/error_of.h"

namespace corvane::night {

namespace {

/// A small night without anything that comes by chance but noise.
NightSettings Quiet()
{
    NightSettings s;
    s.width = 180;
    s.height = 150;
    s.lights = 4;
    s.stars = s.trails = 0;
    s.cosmicHits = s.jitter = 0.0;
    return s;
}

} // namespace

TEST(Draw, StarsMayLieAcrossTheEdgeAndBeyond)
{
    Plane plane(41, 41);
    AddStar(plane, {-0.5, 20.0, 1e6, 3.0}, Profile::kGaussian); // half of it falls outside, of the next ones all
    AddStar(plane, {1e7, 20.0, 1e6, 3.0}, Profile::kMoffat);
    AddStar(plane, {20.0, -60.0, 1e6, 3.0}, Profile::kMoffat);
    EXPECT_NEAR(std::accumulate(plane.samples.begin(), plane.samples.end(), 0.0), 0.5e6, 20.0);
}

TEST(Night, NoiseIsThatOfPhotonsAndReading)
{
    for (const double sky : {0.0, 0.3, 3.5, 400.0}) {
        NightSettings settings = Quiet();
        settings.sky = sky;
        settings.exposure = 10.0;
        settings.readNoise = 4.0;
        const Night night(settings);
        const Plane counts = night.Light(0).counts;
        double chi = 0.0;
        const Sensor& sensor = night.GetSensor();
        for (std::size_t i = 0; i < counts.samples.size(); ++i) {
            const double electrons = 10.0 * (sky * sensor.Response().samples[i] + sensor.DarkCurrent().samples[i]);
            const double variance = (electrons + 16.0) / (settings.gain * settings.gain) + 1.0 / 12.0;
            const double off = counts.samples[i] - sensor.Bias().samples[i] - electrons / settings.gain;
            chi += off * off / variance;
        }
        const auto samples = static_cast<double>(counts.samples.size());
        EXPECT_NEAR(chi / samples, 1.0, 4.0 * std::sqrt(2.0 / samples)) << sky;
    }
}

TEST(Night, TheSeedDecidesEveryBit)
{
    NightSettings settings = Quiet();
    settings.stars = 40;
    settings.cosmicHits = 5.0;
    settings.trails = 2;
    settings.jitter = 0.3;
    settings.turn = 0.1;
    settings.bayer = "GBRG";
    settings.trailedLights = {3};
    const auto checksum = [&](std::uint64_t seed) {
        settings.seed = seed;
        const Night n(settings);
        std::uint64_t sum = 0;
        for (const Frame& frame :
             {n.Light(0), n.Light(3), n.Dark(0, 60.0), n.Dark(1, 60.0), n.Flat(0), n.FlatDark(0), n.Bias(0)}) {
            for (const float sample : frame.counts.samples) {
                sum = (sum ^ static_cast<std::uint64_t>(sample)) * 0x100000001b3;
            }
        }
        return sum;
    };
    EXPECT_EQ(checksum(1), 7134216429332776754U); // the same on every machine and from every compiler
    EXPECT_NE(checksum(2), checksum(1));
}

TEST(Night, SaysWhichSettingIsWrong)
{
    const auto refusal = [](double gain, int light) {
        NightSettings settings = Quiet();
        settings.gain = gain;
        return test::ErrorOf<std::invalid_argument>([&] { Night(settings).Light(light); });
    };
    EXPECT_EQ(refusal(1.0, 3), "no error");
    EXPECT_EQ(refusal(std::nan(""), 3), "gain is nan, must be in 0.01..1000");
    EXPECT_EQ(refusal(1.0, 4), "light is 4, must be in 0..3");
}

} // namespace corvane::night
