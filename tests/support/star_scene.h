#pragma once

#include <algorithm>
#include <cmath>

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
    CStlImage image = Make(scene.size.width, scene.size.height, 1, [&](int x, int y, int) {
        const Position at = scene.place.Inverse({1.0 * x, 1.0 * y});
        const double square = std::pow((at.x - 240.0) / 60.0, 2) + std::pow((at.y - 180.0) / 45.0, 2);
        return scene.sky + scene.nebula * std::exp(-square);
    });
    Random sky(77);
    const double sigma = scene.fwhm / 2.3548 * scene.scale;
    for (int star = 0; star < scene.stars; ++star) {
        const double x = sky.Between(-60.0, 540.0);
        const double y = sky.Between(-60.0, 420.0);
        const double peak = scene.light * 300.0 * std::exp(sky.Between(0.0, 4.0));
        const Position at = scene.place.Map(x, y);
        const int reach = static_cast<int>(6.0 * sigma) + 1;
        for (int row = static_cast<int>(at.y) - reach; row <= at.y + reach; ++row) {
            for (int column = static_cast<int>(at.x) - reach; column <= at.x + reach; ++column) {
                const bool isInside = column >= 0 && row >= 0 && column < scene.size.width && row < scene.size.height;
                if (isInside) {
                    const double square = std::pow(column - at.x, 2) + std::pow(row - at.y, 2);
                    const double light = peak * std::exp(-square / (2.0 * sigma * sigma));
                    image.SetPixelGrayRaw(column, row,
                                          static_cast<float>(image.GetPixelGrayRaw(column, row, 0) + light), 0);
                }
            }
        }
    }
    Random noise(static_cast<std::uint64_t>(scene.seed));
    for (int i = 0; i < scene.size.width * scene.size.height; ++i) {
        float* const sample = image.GetImageAdr(i % scene.size.width, i / scene.size.width, 0);
        *sample = static_cast<float>(std::min(*sample + noise.Between(-scene.noise, scene.noise), scene.full));
    }
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
