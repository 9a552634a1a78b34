#include "examples/night/night.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/exponential.h"
#include "examples/night/colour_filters.h"
#include "examples/night/draw.h"
#include "examples/night/frame_header.h"
#include "examples/night/galaxy.h"
#include "examples/night/portable_math.h"

namespace corvane::night {

namespace {

constexpr double kPause = 5.0; // between two frames [s]
constexpr double kHour = 3600.0;
constexpr double kBiasTime = -3.0 * kHour; // of the first one, after the first light
constexpr double kFlatTime = -2.0 * kHour;
constexpr double kFlatDarkTime = -1.0 * kHour;

constexpr double kCloudTransparency = 0.05;
constexpr double kCloudGlow = 2.5; // sky brightness below clouds, which send the town's light back

constexpr double kSlipX = 12.0; // how far stars move during a trailed light [pixels]
constexpr double kSlipY = 9.0;

bool Contains(const std::vector<int>& lights, int i)
{
    return std::find(lights.begin(), lights.end(), i) != lights.end();
}

double TransparencyOf(const NightSettings& settings, int i)
{
    return Contains(settings.cloudyLights, i) ? kCloudTransparency : 1.0;
}

void CheckNumber(int i)
{
    CheckRange("frame number", i, 0.0, 1e9);
}

/// The part of the first light's plane that some light of the night shows.
struct Area {
    Point low;
    Point high;

    void Include(Point p)
    {
        low = {std::min(low.x, p.x), std::min(low.y, p.y)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    double Size() const { return (high.x - low.x) * (high.y - low.y); }
};

Area AreaOf(const Night& night)
{
    const double right = night.Settings().width - 0.5;
    const double bottom = night.Settings().height - 0.5;
    Area area{{-0.5, -0.5}, {right, bottom}};
    for (int i = 1; i < night.Settings().lights; ++i) {
        const Placement placement = night.PlacementOf(i);
        for (const Point corner : {Point{-0.5, -0.5}, Point{right, -0.5}, Point{-0.5, bottom}, Point{right, bottom}}) {
            area.Include(placement.ToFirst(corner));
        }
    }
    return area;
}

/// Twice as faint, twice as many: the number of stars above a flux falls with the flux, up to the brightest.
double RandomFlux(const NightSettings& settings, Random& random)
{
    const double reached = settings.faintest / settings.brightest;
    return settings.exposure * settings.faintest / random.Uniform(reached, 1.0);
}

/// Where the optics show a point of the sensor's plane: moved outwards with the cube of its distance from the middle.
Point Distorted(const NightSettings& settings, Point p)
{
    const Point middle{0.5 * settings.width, 0.5 * settings.height};
    const Point off{p.x - middle.x, p.y - middle.y};
    const double corner = middle.x * middle.x + middle.y * middle.y;
    const double factor = settings.distortion * (off.x * off.x + off.y * off.y) / (corner * std::sqrt(corner));
    return {p.x + factor * off.x, p.y + factor * off.y};
}

/// From the left edge to the right one, or from the top to the bottom.
Trail RandomTrail(const NightSettings& settings, Random& random)
{
    const double right = settings.width - 0.5;
    const double bottom = settings.height - 0.5;
    const double electrons = random.Uniform(500.0, 5000.0);
    const double from = random.Uniform();
    const double to = random.Uniform();
    if (random.Uniform() < 0.5) {
        return {-0.5, from * settings.height - 0.5, right, to * settings.height - 0.5, electrons, settings.fwhm};
    }
    return {from * settings.width - 0.5, -0.5, to * settings.width - 0.5, bottom, electrons, settings.fwhm};
}

CosmicHit RandomHit(const NightSettings& settings, Random& random)
{
    const double x = random.Uniform(-0.5, settings.width - 0.5);
    const double y = random.Uniform(-0.5, settings.height - 0.5);
    const double length = 3.0 * random.Exponential();
    const double u = random.Gaussian();
    const double v = random.Gaussian();
    const double scale = length / std::sqrt(u * u + v * v);
    const double electrons = (300.0 + 1500.0 * random.Exponential()) * (1.0 + length);
    return {x, y, x + u * scale, y + v * scale, electrons};
}

} // namespace

CStlImage ToImage(const Plane& plane)
{
    CStlImage image(-32, plane.width, plane.height, 1, 1.0, 0.0, 1);
    for (int y = 0; y < plane.height; ++y) {
        std::copy_n(plane.Row(y), plane.width, image.GetImageAdr(0, y, 0));
    }
    return image;
}

Night::Night(const NightSettings& settings)
    : settings_(Checked(settings)), sensor_(settings_),
      field_(settings.ownStars.empty() ? MakeField(Purpose::kField) : settings.ownStars),
      otherField_(MakeField(Purpose::kOtherField))
{}

Frame Night::Light(int i) const
{
    Random noise(settings_.seed, Purpose::kLightNoise, static_cast<std::uint64_t>(i));
    Frame frame;
    frame.counts = sensor_.Expose(SceneOf(i), settings_.exposure, CosmicHitsOf(i), noise);
    frame.header = FrameHeader(settings_, "Light Frame", settings_.exposure, i * (settings_.exposure + kPause));
    AddFilterCard(settings_, frame.header);
    AddLightCards(frame.header, PlacementOf(i));
    return frame;
}

Frame Night::Dark(int i, double exposure) const
{
    CheckNumber(i);
    CheckRange("dark exposure", exposure, 0.0, 86400.0);
    const double time = settings_.lights * (settings_.exposure + kPause) + i * (exposure + kPause);
    const auto milliseconds = static_cast<std::uint64_t>(exposure * 1000.0);
    const Random noise(settings_.seed, Purpose::kDarkNoise, (milliseconds << 32) + static_cast<std::uint64_t>(i));
    return ExposeDark(noise, exposure, "Dark Frame", time);
}

Frame Night::Flat(int i) const
{
    CheckNumber(i);
    constexpr double kFading = 0.99;
    const double electrons = settings_.flatLevel * settings_.gain * Exp(i * Log(kFading));
    Random noise(settings_.seed, Purpose::kFlatNoise, static_cast<std::uint64_t>(i));
    Frame frame;
    frame.counts = sensor_.Expose(EvenLight(electrons), settings_.flatExposure, {}, noise);
    frame.header =
        FrameHeader(settings_, "Flat Field", settings_.flatExposure, kFlatTime + i * (settings_.flatExposure + kPause));
    AddFilterCard(settings_, frame.header);
    return frame;
}

Plane Night::EvenLight(double electrons) const
{
    Plane light(settings_.width, settings_.height, static_cast<float>(electrons));
    for (int i = 0; !settings_.bayer.empty() && i < light.width * light.height; ++i) {
        light.samples[i] *= static_cast<float>(WhiteShare(FilterAt(settings_.bayer, i % light.width, i / light.width)));
    }
    return light;
}

Frame Night::FlatDark(int i) const
{
    CheckNumber(i);
    const Random noise(settings_.seed, Purpose::kFlatDarkNoise, static_cast<std::uint64_t>(i));
    return ExposeDark(noise, settings_.flatExposure, "Dark Frame",
                      kFlatDarkTime + i * (settings_.flatExposure + kPause));
}

Frame Night::Bias(int i) const
{
    CheckNumber(i);
    const Random noise(settings_.seed, Purpose::kBiasNoise, static_cast<std::uint64_t>(i));
    return ExposeDark(noise, 0.0, "Bias Frame", kBiasTime + i * kPause);
}

Frame Night::ExposeDark(Random noise, double exposure, const char* type, double time) const
{
    Frame frame;
    frame.counts = sensor_.Expose(Plane(settings_.width, settings_.height), exposure, {}, noise);
    frame.header = FrameHeader(settings_, type, exposure, time);
    return frame;
}

Placement Night::PlacementOf(int i) const
{
    CheckRange("light", i, 0.0, settings_.lights - 1.0);
    Random random(settings_.seed, Purpose::kJitter, static_cast<std::uint64_t>(i));
    const double jitter = i == 0 ? 0.0 : settings_.jitter;
    const double movedX = i * settings_.driftX + jitter * random.Gaussian();
    const double movedY = i * settings_.driftY + jitter * random.Gaussian();
    return {0.0 - movedX, 0.0 - movedY, 0.0 - i * settings_.turn, static_cast<double>(settings_.width / 2),
            static_cast<double>(settings_.height / 2)};
}

std::vector<Star> Night::StarsOf(int i) const
{
    std::vector<Star> stars = MovedStars(i);
    const double right = settings_.width - 0.5;
    const double bottom = settings_.height - 0.5;
    std::erase_if(stars, [=](const Star& s) { return s.x < -0.5 || s.x >= right || s.y < -0.5 || s.y >= bottom; });
    return stars;
}

std::vector<Trail> Night::TrailsOf(int i) const
{
    CheckRange("light", i, 0.0, settings_.lights - 1.0);
    std::vector<Trail> trails;
    for (int t = 0; t < settings_.trails; ++t) {
        Random random(settings_.seed, Purpose::kTrails, static_cast<std::uint64_t>(t));
        if (static_cast<int>(random.Uniform() * settings_.lights) == i) {
            trails.push_back(RandomTrail(settings_, random));
        }
    }
    return trails;
}

std::vector<CosmicHit> Night::CosmicHitsOf(int i) const
{
    CheckRange("light", i, 0.0, settings_.lights - 1.0);
    Random random(settings_.seed, Purpose::kCosmicHits, static_cast<std::uint64_t>(i));
    std::vector<CosmicHit> hits(static_cast<std::size_t>(random.Poisson(settings_.cosmicHits)));
    std::generate(hits.begin(), hits.end(), [&] { return RandomHit(settings_, random); });
    return hits;
}

Plane Night::SceneOf(int i) const
{
    if (settings_.bayer.empty()) {
        return SceneBelow({}, i);
    }
    Plane scene(settings_.width, settings_.height);
    for (const char filter : {'R', 'G', 'B'}) {
        CopyBelow(filter, settings_.bayer, SceneBelow(filter, i), scene);
    }
    return scene;
}

/// What falls on a sensor with one filter over all of it, or none.
Plane Night::SceneBelow(std::optional<char> filter, int i) const
{
    const double glow = Contains(settings_.cloudyLights, i) ? kCloudGlow : 1.0;
    const double sky = settings_.sky * settings_.exposure * glow * (filter ? SkyShare(*filter) : 1.0);
    Plane scene(settings_.width, settings_.height);
    Random gradient(settings_.seed, Purpose::kGradient, static_cast<std::uint64_t>(i));
    const double own = settings_.lightGradient;
    const double across = settings_.skyGradient + gradient.Uniform(-own, own);
    const double down = gradient.Uniform(-own, own);
    for (int y = 0; y < scene.height; ++y) {
        const double level = 1.0 + down * ((y + 0.5) / scene.height - 0.5);
        for (int x = 0; x < scene.width; ++x) {
            const double place = (x + 0.5) / scene.width - 0.5;
            scene.Row(y)[x] = static_cast<float>(sky * std::max(0.0, level + across * place));
        }
    }
    if (settings_.galaxy > 0.0 && !Contains(settings_.strayLights, i)) {
        AddGalaxy(scene, settings_.galaxy * settings_.exposure * TransparencyOf(settings_, i), filter, PlacementOf(i));
    }
    const double slip = Contains(settings_.trailedLights, i) ? 1.0 : 0.0;
    for (Star star : MovedStars(i)) {
        star.flux *= filter ? StarShare(*filter, star.redness) : 1.0;
        AddMovingStar(scene, star, settings_.profile, slip * kSlipX, slip * kSlipY);
    }
    for (Trail trail : TrailsOf(i)) {
        trail.electronsPerPixel *= filter ? WhiteShare(*filter) : 1.0;
        AddTrail(scene, trail);
    }
    return scene;
}

std::vector<Star> Night::MakeField(Purpose purpose) const
{
    const Area area = AreaOf(*this);
    const double mean = settings_.stars * area.Size() / (static_cast<double>(settings_.width) * settings_.height);
    Random random(settings_.seed, purpose);
    std::vector<Star> stars(static_cast<std::size_t>(mean + 0.5));
    for (Star& star : stars) {
        star.x = random.Uniform(area.low.x, area.high.x);
        star.y = random.Uniform(area.low.y, area.high.y);
        star.flux = RandomFlux(settings_, random);
        star.fwhm = settings_.fwhm;
    }
    Random colours(settings_.seed, Purpose::kStarColours, static_cast<std::uint64_t>(purpose));
    for (Star& star : stars) {
        star.redness = colours.Uniform(-1.0, 1.0);
    }
    return stars;
}

/// All stars of the field where light i has them, also those outside of it.
std::vector<Star> Night::MovedStars(int i) const
{
    const Placement placement = PlacementOf(i);
    const double transparency = TransparencyOf(settings_, i);
    std::vector<Star> stars = Contains(settings_.strayLights, i) ? otherField_ : field_;
    for (Star& star : stars) {
        const Point moved = Distorted(settings_, placement.ToLight({star.x, star.y}));
        star.x = moved.x;
        star.y = moved.y;
        star.flux *= transparency;
    }
    return stars;
}

} // namespace corvane::night
