#include "examples/night/night.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numbers>
#include <numeric>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/core/alignment.h"
#include "examples/night/draw.h"

namespace corvane::night {

namespace {

/// A small night without anything that comes by chance but noise.
NightSettings Quiet()
{
    NightSettings s;
    s.width = 180;
    s.height = 150;
    s.lights = 4;
    s.stars = 0;
    s.cosmicHits = 0.0;
    s.trails = 0;
    s.jitter = 0.0;
    return s;
}

double Sum(const Plane& plane)
{
    return std::accumulate(plane.samples.begin(), plane.samples.end(), 0.0);
}

double Mean(const Plane& plane)
{
    return Sum(plane) / static_cast<double>(plane.samples.size());
}

Point Centroid(const Plane& plane)
{
    Point sum{0.0, 0.0};
    for (int y = 0; y < plane.height; ++y) {
        for (int x = 0; x < plane.width; ++x) {
            sum.x += x * static_cast<double>(plane.Row(y)[x]);
            sum.y += y * static_cast<double>(plane.Row(y)[x]);
        }
    }
    return {sum.x / Sum(plane), sum.y / Sum(plane)};
}

/// What fell on the sensor, as well as a calibration with perfect masters can tell [electrons].
Plane Calibrated(const Night& night, const Plane& counts, double exposure)
{
    const Sensor& sensor = night.GetSensor();
    Plane result = counts;
    for (std::size_t i = 0; i < counts.samples.size(); ++i) {
        const double charge = (counts.samples[i] - sensor.Bias().samples[i]) * night.Settings().gain;
        const double light = charge - sensor.DarkCurrent().samples[i] * exposure;
        result.samples[i] = static_cast<float>(light / sensor.Response().samples[i]);
    }
    return result;
}

} // namespace

TEST(PortableMath, AgreesWithTheSystem)
{
    for (double x = -699.0; x < 699.0; x += 0.37) {
        ASSERT_NEAR(Exp(x) / std::exp(x), 1.0, 1e-15) << x;
        ASSERT_NEAR(Log(std::exp(x)), x, 2e-15 * std::max(1.0, std::abs(x))) << x;
        const SineCosine turn = TurnBy(x);
        ASSERT_NEAR(turn.sine, std::sin(x * std::numbers::pi / 180.0), 1e-13) << x;
        ASSERT_NEAR(turn.cosine, std::cos(x * std::numbers::pi / 180.0), 1e-13) << x;
    }
}

TEST(Random, GaussianHasItsShapeFarIntoTheTail)
{
    constexpr int kDraws = 4000000;
    constexpr double kLimits[] = {-3.7, -3.44, -3.0, -1.5, -0.3, 0.0, 0.2, 0.9, 2.0, 3.2, 3.5, 4.0};
    int below[std::size(kLimits)] = {};
    Random random(5, Purpose::kLightNoise);
    for (int i = 0; i < kDraws; ++i) {
        const double g = random.Gaussian();
        for (std::size_t k = 0; k < std::size(kLimits); ++k) {
            below[k] += g < kLimits[k];
        }
    }
    for (std::size_t k = 0; k < std::size(kLimits); ++k) {
        const double p = 0.5 * std::erfc(-kLimits[k] / std::numbers::sqrt2);
        EXPECT_NEAR(below[k], kDraws * p, 4.0 * std::sqrt(kDraws * p * (1.0 - p))) << kLimits[k];
    }
}

TEST(Draw, StarsKeepFluxPlaceAndWidth)
{
    for (const Profile profile : {Profile::kGaussian, Profile::kMoffat}) {
        // Pixels as wide as the star move its centroid by a hundredth, however exact their integrals are.
        for (const auto& [fwhm, shift] : {std::pair{1.0, 0.01}, std::pair{1.6, 5e-4}, std::pair{6.0, 5e-4}}) {
            const Star star{60.37, 48.81, 1e6, fwhm};
            Plane plane(121, 99);
            AddStar(plane, star, profile);
            EXPECT_NEAR(Sum(plane), star.flux, 5e-5 * star.flux) << fwhm;
            EXPECT_NEAR(Centroid(plane).x, star.x, shift) << fwhm;
            EXPECT_NEAR(Centroid(plane).y, star.y, shift) << fwhm;
        }
        Plane wide(201, 201);
        AddStar(wide, {100.0, 100.0, 1e6, 24.0}, profile);
        EXPECT_NEAR(wide.Row(100)[112] / wide.Row(100)[100], 0.5, 0.002);
        EXPECT_NEAR(wide.Row(88)[100] / wide.Row(100)[100], 0.5, 0.002);
    }
    Plane edge(41, 41);
    AddStar(edge, {-0.5, 20.0, 1e6, 3.0}, Profile::kGaussian); // half of it falls outside, of the next ones all
    for (const Point far : {Point{-60.0, 20.0}, Point{1e7, 20.0}, Point{20.0, -1e7}, Point{20.0, 90.0}}) {
        AddStar(edge, {far.x, far.y, 1e6, 3.0}, Profile::kMoffat);
    }
    EXPECT_NEAR(Sum(edge), 0.5e6, 20.0);
}

TEST(Draw, StreaksLeaveTheirCharge)
{
    // A row across a trail holds its charge per length times the length within the row; so does a column.
    for (const Trail& trail : {Trail{10.0, 0.0, 70.0, 80.0, 500.0, 3.0}, Trail{70.0, 0.0, 10.0, 80.0, 500.0, 3.0}}) {
        Plane plane(81, 81);
        AddTrail(plane, trail);
        const float* row = plane.Row(40);
        EXPECT_NEAR(std::accumulate(row, row + 81, 0.0), 500.0 * 1.25, 0.05);
        EXPECT_GT(row[40], row[43]);
        EXPECT_FLOAT_EQ(row[38], row[42]);
    }
    Plane hit(21, 21);
    AddCosmicHit(hit, {5.0, 6.0, 9.0, 6.0, 900.0});
    EXPECT_NEAR(Sum(hit), 900.0, 1e-3);
}

TEST(Night, AStarHasItsFluxAndPlaceAfterCalibration)
{
    for (const Profile profile : {Profile::kGaussian, Profile::kMoffat}) {
        NightSettings settings = Quiet();
        settings.profile = profile;
        settings.hotPixels = 0.0;
        settings.ownStars = {{90.3, 70.6, 300000.0, 3.0}};
        settings.driftX = 4.7;
        const Night night(settings);
        const Star truth = night.StarsOf(2).at(0);
        EXPECT_NEAR(truth.x, 90.3 + 2 * 4.7, 1e-12);
        Plane light = Calibrated(night, night.Light(2).counts, settings.exposure);
        const double sky = settings.sky * settings.exposure;
        Plane window(61, 61);
        for (int y = 0; y < window.height; ++y) {
            std::transform(light.Row(y + 40) + 70, light.Row(y + 40) + 131, window.Row(y),
                           [sky](float v) { return static_cast<float>(v - sky); });
        }
        const double noise = std::sqrt(truth.flux + 61 * 61 * (sky + 3.0 + 9.0)) * 1.1; // dark, read; response
        EXPECT_NEAR(Sum(window), truth.flux, 4.0 * noise);
        EXPECT_NEAR(Centroid(window).x, truth.x - 70.0, 0.15);
        EXPECT_NEAR(Centroid(window).y, truth.y - 40.0, 0.15);
    }
}

TEST(Night, NoiseIsThatOfPhotonsAndReading)
{
    for (const double sky : {0.0, 0.3, 2.0, 3.5, 400.0}) {
        NightSettings settings = Quiet();
        settings.sky = sky;
        settings.exposure = 10.0;
        settings.readNoise = 4.0;
        const Night night(settings);
        const Plane counts = night.Light(0).counts;
        double chi = 0.0;
        for (std::size_t i = 0; i < counts.samples.size(); ++i) {
            const Sensor& sensor = night.GetSensor();
            const double electrons = 10.0 * (sky * sensor.Response().samples[i] + sensor.DarkCurrent().samples[i]);
            const double variance = (electrons + 16.0) / (settings.gain * settings.gain) + 1.0 / 12.0;
            const double off = counts.samples[i] - sensor.Bias().samples[i] - electrons / settings.gain;
            chi += off * off / variance;
        }
        const auto samples = static_cast<double>(counts.samples.size());
        EXPECT_NEAR(chi / samples, 1.0, 4.0 * std::sqrt(2.0 / samples)) << sky;
    }
}

TEST(Night, DarkCurrentGrowsWithExposure)
{
    const Night night(Quiet());
    const Plane& current = night.GetSensor().DarkCurrent();
    const auto hot = std::count_if(current.samples.begin(), current.samples.end(), [](float c) { return c > 0.05F; });
    EXPECT_NEAR(static_cast<double>(hot), 0.0005 * 180 * 150, 12.0);
    for (const double exposure : {10.0, 300.0}) {
        const double above = Sum(night.Dark(0, exposure).counts) - Sum(night.GetSensor().Bias());
        const double electrons = Sum(current) * exposure;
        EXPECT_NEAR(above * 1.5, electrons, 4.0 * std::sqrt(electrons + 180 * 150 * 9.2)) << exposure;
    }
}

TEST(Night, FlatsShowTheResponse)
{
    const Night night(Quiet());
    const Plane& response = night.GetSensor().Response();
    EXPECT_NEAR(Mean(response), 1.0, 1e-6);
    EXPECT_NEAR(response.Row(0)[0] / response.Row(75)[90], 0.7, 0.08); // 1% to a pixel, and perhaps dust
    EXPECT_NEAR(Mean(night.Flat(10).counts) - Mean(night.GetSensor().Bias()), 30000.0 * std::pow(0.99, 10), 5.0);
    const Plane even = Calibrated(night, night.Flat(0).counts, 2.0);
    for (const float sample : even.samples) {
        ASSERT_NEAR(sample, 45000.0, 6.0 * std::sqrt(45000.0 / 0.6));
    }
}

TEST(Night, PlacementIsThatOfAlignedSampling)
{
    NightSettings settings = Quiet();
    settings.jitter = 0.5;
    settings.turn = 0.8;
    const Night night(settings);
    for (const int i : {0, 1, 3}) {
        const Placement placement = night.PlacementOf(i);
        const Alignment alignment = Alignment::Turned(placement.dx, placement.dy, placement.degrees, CfPoint(90, 75));
        for (const auto& [x, y] : {std::pair{0, 0}, std::pair{179, 3}, std::pair{41, 149}}) {
            const Point point = placement.ToLight({static_cast<double>(x), static_cast<double>(y)});
            EXPECT_NEAR(point.x, alignment.Map(x, y).x, 1e-7);
            EXPECT_NEAR(point.y, alignment.Map(x, y).y, 1e-7);
            EXPECT_NEAR(placement.ToFirst(point).x, x, 1e-10);
            EXPECT_NEAR(placement.ToFirst(point).y, y, 1e-10);
        }
    }
    settings.driftX = settings.driftY = settings.jitter = 0.0;
    const Point right = Night(settings).PlacementOf(1).ToLight({170.0, 75.0});
    EXPECT_NEAR(right.y, 75.0 + 80.0 * std::sin(0.8 * std::numbers::pi / 180.0), 1e-9); // clockwise on screen
}

TEST(Night, TheSeedDecidesEveryBit)
{
    NightSettings settings = Quiet();
    settings.stars = 40;
    settings.cosmicHits = 5.0;
    settings.trails = 2;
    settings.jitter = 0.3;
    settings.turn = 0.1;
    const Night night(settings);
    settings.seed = 2;
    const Night other(settings);
    const auto frames = [](const Night& n) {
        return std::vector{n.Light(0).counts.samples,      n.Light(3).counts.samples, n.Dark(0, 60.0).counts.samples,
                           n.Dark(1, 60.0).counts.samples, n.Flat(0).counts.samples,  n.FlatDark(0).counts.samples,
                           n.Bias(0).counts.samples};
    };
    const auto first = frames(night);
    const auto third = frames(other);
    std::uint64_t checksum = 0;
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_NE(first[i], third[i]) << i;
        for (const float sample : first[i]) {
            checksum = (checksum ^ static_cast<std::uint64_t>(sample)) * 0x100000001b3;
        }
    }
    EXPECT_NE(first[2], first[3]);
    EXPECT_EQ(checksum, 10588705958542308821U); // the same on every machine and from every compiler
}

TEST(Night, SaysWhichSettingIsWrong)
{
    NightSettings small = Quiet();
    small.fwhm = 0.5;
    NightSettings odd = Quiet();
    odd.gain = std::nan("");
    const Night night(Quiet());
    const std::pair<std::function<void()>, const char*> cases[] = {
        {[&] { Night{small}; }, "FWHM is 0.5, must be in 1..100"},
        {[&] { Night{odd}; }, "gain is nan, must be in 0.01..1000"},
        {[&] { night.Light(4); }, "light is 4, must be in 0..3"},
        {[&] { night.Dark(0, -1.0); }, "dark exposure is -1, must be in 0..86400"},
    };
    for (const auto& [action, reason] : cases) {
        try {
            action();
            ADD_FAILURE() << reason;
        } catch (const std::invalid_argument& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
}

} // namespace corvane::night
