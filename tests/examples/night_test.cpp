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

double Sum(const Plane& plane)
{
    return std::accumulate(plane.samples.begin(), plane.samples.end(), 0.0);
}

} // namespace

TEST(Draw, StarsKeepFluxPlaceAndWidth)
{
    for (const Profile profile : {Profile::kGaussian, Profile::kMoffat}) {
        for (const double fwhm : {1.6, 6.0}) {
            Plane plane(121, 99);
            AddStar(plane, {60.37, 48.81, 1e6, fwhm}, profile);
            double x = 0.0;
            double y = 0.0;
            for (int i = 0; i < 121 * 99; ++i) {
                x += i % 121 * 1e-6 * plane.Row(0)[i];
                y += i / 121 * 1e-6 * plane.Row(0)[i];
            }
            EXPECT_NEAR(Sum(plane), 1e6, 50.0) << fwhm;
            EXPECT_NEAR(x, 60.37, 5e-3) << fwhm;
            EXPECT_NEAR(y, 48.81, 5e-3) << fwhm;
        }
        Plane wide(201, 201);
        AddStar(wide, {100.0, 100.0, 1e6, 24.0}, profile);
        EXPECT_NEAR(wide.Row(100)[112] / wide.Row(100)[100], 0.5, 0.002);
        EXPECT_NEAR(wide.Row(88)[100] / wide.Row(100)[100], 0.5, 0.002);
    }
    Plane edge(41, 41);
    AddStar(edge, {-0.5, 20.0, 1e6, 3.0}, Profile::kGaussian); // half of it falls outside, of the next ones all
    AddStar(edge, {1e7, 20.0, 1e6, 3.0}, Profile::kMoffat);
    AddStar(edge, {20.0, -60.0, 1e6, 3.0}, Profile::kMoffat);
    EXPECT_NEAR(Sum(edge), 0.5e6, 20.0);
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

TEST(Night, StarsOfATrailedLightAreDrawnOut)
{
    NightSettings settings = Quiet();
    settings.sky = 0.0;
    settings.ownStars = {{90.0, 75.0, 1e6, 3.0}};
    settings.profile = Profile::kGaussian;
    settings.driftX = settings.driftY = 0.0;
    settings.trailedLights = {2};
    const Night night(settings);
    const auto moment = [&](int light, double ux, double uy) {
        const Plane scene = night.SceneOf(light);
        double sum = 0.0;
        for (int i = 0; i < 180 * 150; ++i) {
            const double t = (i % 180 - 90.0) * ux + (i / 180 - 75.0) * uy;
            sum += t * t * 1e-6 * scene.samples[static_cast<std::size_t>(i)];
        }
        return sum;
    };
    EXPECT_NEAR(moment(2, 0.8, 0.6) - moment(1, 0.8, 0.6), 15.0 * 15.0 / 12.0, 0.05);
    EXPECT_NEAR(moment(2, -0.6, 0.8), moment(1, -0.6, 0.8), 0.001);
}

TEST(Night, AGalaxyMovesWithTheField)
{
    NightSettings settings = Quiet();
    settings.sky = settings.stars = 0;
    settings.driftX = 6.0;
    settings.driftY = -4.0;
    settings.galaxy = 10.0;
    settings.cloudyLights = {2};
    settings.strayLights = {3};
    const Night night(settings);
    const auto at = [&](int light, int x, int y) { return night.SceneOf(light).Row(y)[x]; };
    const double core = 10.0 * settings.exposure;
    EXPECT_NEAR(at(0, 90, 75), core, 0.001 * core);
    EXPECT_NEAR(at(0, 90 + 21, 75 + 13), at(0, 90 - 21, 75 - 13), 1e-4); // two arms
    EXPECT_GT(at(0, 90 + 21, 75 + 13), 0.01 * core);
    EXPECT_NEAR(at(1, 90 + 6 + 21, 75 - 4 + 13), at(0, 90 + 21, 75 + 13), 1e-4);
    EXPECT_NEAR(at(2, 90 + 12, 75 - 8), 0.05 * core, 1e-4 * core);
    EXPECT_EQ(at(3, 90 + 18, 75 - 12), 0.0F);
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
