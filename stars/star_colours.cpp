#include "stars/star_colours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "corvane/core/defined.h"
#include "stars/find_stars.h"
#include "stars/full_well.h"
#include "stars/robust.h"
#include "stars/sky_mesh.h"

namespace corvane::stars {

namespace {

constexpr double kLight = 1.5;      // FWHM: within this radius is the light
constexpr double kRing = 3.0;       // FWHM: from here on is the sky
constexpr double kColourRing = 4.0; // pixels
constexpr double kLeastRise = 20.0; // deviations: fainter stars tell little
constexpr std::size_t kMostColours = 1000;

/// The light of a star in a plane; nothing when it touches the edge, a ceiling, or what is undefined.
std::optional<double> LightOf(const CStlImage& image, int plane, const FieldStar& star, double fwhm, double ceiling)
{
    const DefinedTest isDefined(image);
    const double outer = kRing * fwhm + kColourRing;
    const int left = static_cast<int>(std::floor(star.x - outer));
    const int top = static_cast<int>(std::floor(star.y - outer));
    const int right = static_cast<int>(std::ceil(star.x + outer));
    const int bottom = static_cast<int>(std::ceil(star.y + outer));
    if (left < 0 || top < 0 || right >= image.GetWidth() || bottom >= image.GetHeight()) {
        return std::nullopt;
    }
    std::vector<double> ring;
    double sum = 0.0;
    int count = 0;
    for (int y = top; y <= bottom; ++y) {
        const float* const row = image.GetImageAdr(0, y, plane, 1);
        for (int x = left; x <= right; ++x) {
            const double square = (x - star.x) * (x - star.x) + (y - star.y) * (y - star.y);
            if (square <= kLight * fwhm * (kLight * fwhm)) {
                if (!isDefined(row[x]) || row[x] >= ceiling) {
                    return std::nullopt;
                }
                sum += row[x];
                ++count;
            } else if (square >= kRing * fwhm * (kRing * fwhm) && square <= outer * outer && isDefined(row[x])) {
                ring.push_back(row[x]);
            }
        }
    }
    const double light = ring.empty() ? 0.0 : sum - count * MedianOf(ring);
    return light > 0.0 ? std::optional(light) : std::nullopt;
}

} // namespace

StarColours MeasureStarColours(const CStlImage& image, const Run& run)
{
    const int green = StarPlane(image);
    std::array<double, 3> ceilings{};
    for (int plane = 0; plane < 3; ++plane) {
        const SkyMesh sky = MeasureSkyMesh(image, plane, run);
        ceilings[static_cast<std::size_t>(plane)] =
            FullWellLevel(image, plane, sky.level.Median(), sky.noise.Median(), run);
    }
    const StarField field = FindFieldStars(image, green, {.sigmas = kLeastRise, .limit = kMostColours}, run);
    std::vector<double> reds;
    std::vector<double> blues;
    for (const FieldStar& star : field.stars) {
        std::array<std::optional<double>, 3> light;
        for (int plane = 0; plane < 3 && star.IsUsable(); ++plane) {
            const auto i = static_cast<std::size_t>(plane);
            light[i] = LightOf(image, plane, star, field.fwhm, ceilings[i]);
        }
        if (light[0] && light[1] && light[2]) {
            reds.push_back(*light[0] / *light[1]);
            blues.push_back(*light[2] / *light[1]);
        }
    }
    const int count = static_cast<int>(reds.size());
    return count > 0 ? StarColours{MedianOf(reds), MedianOf(blues), count} : StarColours{};
}

} // namespace corvane::stars
