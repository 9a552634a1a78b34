#include "stars/star_colours.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "stars/find_stars.h"
#include "stars/full_well.h"
#include "stars/robust.h"
#include "stars/sky_mesh.h"
#include "stars/star_light.h"

namespace corvane::stars {

namespace {

constexpr double kLeastRise = 20.0; // deviations: fainter stars tell little
constexpr std::size_t kMostColours = 1000;

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
