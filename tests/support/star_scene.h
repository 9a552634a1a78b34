#pragma once

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "corvane/core/mapping.h"
#include "tests/support/images.h"

namespace corvane::test {

/// What a camera sees of a field of 120 stars about a first frame of 480 x 360, with a nebula in its middle.
struct StarScene {
    Mapping place{};    ///< from places in the first frame to those in this one
    double scale = 1.0; ///< of that
    Size size{480, 360};
    double light = 1.0;  ///< of the stars
    double nebula = 0.0; ///< its light in the middle
    double sky = 200.0;  ///<
    double noise = 2.0;  ///< its largest, either way
    double fwhm = 3.2;   ///< of the stars [pixels of the first frame]
    double full = 6e4;   ///< larger samples are cut
    int seed = 1;        ///< of the noise
    int stars = 120;     ///< how many shine
};

inline CStlImage Shot(const StarScene& scene)
{
    Random sky(77);
    std::vector<std::pair<Position, double>> stars; // and their peaks
    while (static_cast<int>(stars.size()) < scene.stars) {
        const Position at{sky.Between(-60.0, 540.0), sky.Between(-60.0, 420.0)};
        stars.emplace_back(scene.place.Map(at.x, at.y), scene.light * 300.0 * std::exp(sky.Between(0.0, 4.0)));
    }
    const double twice = 2.0 * std::pow(scene.fwhm / 2.3548 * scene.scale, 2);
    Random noise(static_cast<std::uint64_t>(scene.seed));
    CStlImage image = Make(scene.size.width, scene.size.height, 1, [&](int x, int y, int) {
        const Position from = scene.nebula > 0.0 ? scene.place.Inverse({1.0 * x, 1.0 * y}) : Position{};
        const double far = std::pow((from.x - 240.0) / 60.0, 2) + std::pow((from.y - 180.0) / 45.0, 2);
        double v = scene.sky + scene.nebula * std::exp(-far) + noise.Between(-scene.noise, scene.noise);
        for (const auto& [at, peak] : stars) {
            const double square = (x - at.x) * (x - at.x) + (y - at.y) * (y - at.y);
            v += square < 20.0 * twice ? peak * std::exp(-square / twice) : 0.0;
        }
        return std::min(v, scene.full);
    });
    image.SetDefaultCenter();
    return image;
}

/// A frame that is shifted, turned and scaled about its middle.
inline StarScene Moved(StarScene scene, double dx, double dy, double degrees, double scale = 1.0)
{
    Alignment alignment = Alignment::Turned(dx, dy, degrees, CfPoint(scene.size.width / 2, scene.size.height / 2));
    alignment.scale = scale;
    scene.place = alignment;
    scene.scale = scale;
    return scene;
}

} // namespace corvane::test
