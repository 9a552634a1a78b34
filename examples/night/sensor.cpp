#include "examples/night/sensor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "examples/night/draw.h"

namespace corvane::night {

namespace {

std::vector<double> Offsets(int count, double deviation, Random& random)
{
    std::vector<double> offsets(static_cast<std::size_t>(count));
    std::generate(offsets.begin(), offsets.end(), [&] { return deviation * random.Gaussian(); });
    return offsets;
}

Plane MakeBias(const NightSettings& settings)
{
    Random random(settings.seed, Purpose::kBiasPattern);
    const std::vector<double> columns = Offsets(settings.width, settings.biasPattern, random);
    const std::vector<double> rows = Offsets(settings.height, settings.biasPattern, random);
    Plane bias(settings.width, settings.height);
    for (int y = 0; y < bias.height; ++y) {
        for (int x = 0; x < bias.width; ++x) {
            bias.Row(y)[x] = static_cast<float>(settings.biasLevel + columns[x] + rows[y]);
        }
    }
    return bias;
}

Plane MakeDarkCurrent(const NightSettings& settings)
{
    Random random(settings.seed, Purpose::kDarkPattern);
    Plane current(settings.width, settings.height, static_cast<float>(settings.darkCurrent));
    for (float& sample : current.samples) {
        if (random.Uniform() < settings.hotPixels) {
            sample += static_cast<float>(settings.hotCurrent * random.Exponential());
        }
    }
    return current;
}

/// The shadow of a grain of dust near the sensor: a ring, since the beam around the mirror's own shadow is one.
struct Dust {
    double x;
    double y;
    double radius; ///< to the middle of the ring [pixels]
    double depth;  ///< share of the light lost there
};

void AddShadow(Plane& response, const Dust& dust)
{
    const double halfWidth = 0.4 * dust.radius;
    const double reach = dust.radius + halfWidth;
    const int top = std::max(0, static_cast<int>(std::floor(dust.y - reach)));
    const int bottom = std::min(response.height, static_cast<int>(std::ceil(dust.y + reach)) + 1);
    const int left = std::max(0, static_cast<int>(std::floor(dust.x - reach)));
    const int right = std::min(response.width, static_cast<int>(std::ceil(dust.x + reach)) + 1);
    for (int y = top; y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            const double distance = std::sqrt((x - dust.x) * (x - dust.x) + (y - dust.y) * (y - dust.y));
            const double t = std::min(1.0, std::abs(distance - dust.radius) / halfWidth);
            const double bell = (1.0 - t * t) * (1.0 - t * t);
            response.Row(y)[x] *= static_cast<float>(1.0 - dust.depth * bell);
        }
    }
}

/// Light falls off with the square of the distance from the middle; each pixel has its own sensitivity.
void AddFalloff(Plane& response, const NightSettings& settings, Random& random)
{
    const double middleX = 0.5 * (response.width - 1);
    const double middleY = 0.5 * (response.height - 1);
    const double corner = std::max(1.0, middleX * middleX + middleY * middleY);
    for (int y = 0; y < response.height; ++y) {
        for (int x = 0; x < response.width; ++x) {
            const double square = (x - middleX) * (x - middleX) + (y - middleY) * (y - middleY);
            const double pixel = std::max(0.0, 1.0 + settings.pixelResponseSpread * random.Gaussian());
            response.Row(y)[x] *= static_cast<float>(pixel * (1.0 - settings.vignetting * square / corner));
        }
    }
}

void MakeMeanOne(Plane& plane)
{
    double sum = 0.0;
    for (const float sample : plane.samples) {
        sum += sample;
    }
    const double scale = static_cast<double>(plane.samples.size()) / sum;
    for (float& sample : plane.samples) {
        sample = static_cast<float>(sample * scale);
    }
}

Plane MakeResponse(const NightSettings& settings)
{
    Random random(settings.seed, Purpose::kResponse);
    Plane response(settings.width, settings.height, 1.0F);
    for (int i = 0; i < settings.dustShadows; ++i) {
        const double x = random.Uniform(0.0, settings.width);
        const double y = random.Uniform(0.0, settings.height);
        const double radius = random.Uniform(8.0, 24.0);
        AddShadow(response, {x, y, radius, random.Uniform(0.03, 0.12)});
    }
    AddFalloff(response, settings, random);
    MakeMeanOne(response);
    return response;
}

} // namespace

Sensor::Sensor(const NightSettings& settings)
    : gain_(settings.gain), readNoise_(settings.readNoise), ceiling_((1 << settings.bits) - 1),
      bias_(MakeBias(settings)), darkCurrent_(MakeDarkCurrent(settings)), response_(MakeResponse(settings))
{}

Plane Sensor::Expose(Plane light, double exposure, const std::vector<CosmicHit>& hits, Random& noise) const
{
    Plane frame = std::move(light);
    const auto seconds = static_cast<float>(exposure);
    for (std::size_t i = 0; i < frame.samples.size(); ++i) {
        frame.samples[i] = frame.samples[i] * response_.samples[i] + darkCurrent_.samples[i] * seconds;
    }
    for (const CosmicHit& hit : hits) {
        AddCosmicHit(frame, hit);
    }
    for (std::size_t i = 0; i < frame.samples.size(); ++i) {
        frame.samples[i] = Digitise(frame.samples[i], bias_.samples[i], noise);
    }
    return frame;
}

float Sensor::Digitise(double electrons, double bias, Random& noise) const
{
    // Shot and read noise of a well-filled pixel are one normal deviate, since both are normal.
    const double read = electrons < Random::kExactMean
                            ? noise.Poisson(electrons) + readNoise_ * noise.Gaussian()
                            : electrons + std::sqrt(electrons + readNoise_ * readNoise_) * noise.Gaussian();
    return static_cast<float>(static_cast<int>(std::clamp(bias + read / gain_, 0.0, ceiling_) + 0.5));
}

} // namespace corvane::night
