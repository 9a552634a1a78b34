#include "corvane/filter/cosmic_rays.h"

#include <cmath>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

constexpr double kSky = 200.0;
constexpr int kApart = 61; // from star to star, which is also how far hits lie off

/// A number from -1 to 1 that looks random.
double Chance(int x, int y)
{
    std::uint32_t v = static_cast<std::uint32_t>(y) * 2654435761U + static_cast<std::uint32_t>(x) * 40503U;
    v = (v ^ v >> 15) * 2246822519U;
    v = (v ^ v >> 13) * 3266489917U;
    return static_cast<double>(v ^ v >> 16) / 2147483648.0 - 1.0;
}

bool IsHit(int x, int y)
{
    return x % kApart == 0 && y % (8 * kApart) == 0;
}

/// A sky of stars of FWHM 2.6 with noise 5, and hits between them.
CStlImage Light(int size)
{
    CStlImage image(-32, size, size, 1, 1.0, 0.0, 1);
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const double dx = x % kApart - kApart / 2;
            const double dy = y % kApart - kApart / 2;
            const double star = 9000.0 * std::pow(1.0 + (dx * dx + dy * dy) / 5.3, -2.5);
            const double noise = 8.66 * Chance(x, y);
            image.SetPixelGrayRaw(x, y, static_cast<float>(kSky + star + noise + (IsHit(x, y) ? 900.0 : 0.0)), 0);
        }
    }
    return image;
}

void TimeCosmicRays(Run& run)
{
    const CStlImage light(Light(static_cast<int>(std::min<LONG>(LargeFrame().GetWidth(), 2048))));
    const std::vector<SampleNoise> noises{{25.0, 0.67, kSky}};
    const auto find = [&] { return FindCosmicRays(light, 0, {}, noises); };
    long long expected = 0;
    for (int i = 0; i < light.GetWidth() * light.GetHeight(); ++i) {
        expected += IsHit(i % light.GetWidth(), i / light.GetWidth()) ? 1 : 0;
    }
    for (const CosmicHit& hit : find()) {
        expected -= IsHit(hit.x, hit.y) ? 1 : 0;
    }
    Require(expected == 0, "hits are left");
    run.Time(
        light.GetImageSize(), [] { return std::vector<CosmicHit>(); },
        [&](std::vector<CosmicHit>& hits) { hits = find(); });
}

const Line line("filter/CosmicRays", {}, TimeCosmicRays);

} // namespace
} // namespace corvane::bench
