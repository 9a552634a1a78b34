#include "catalogue/sky_black.h"

#include <algorithm>

#include "catalogue/display_levels.h"

namespace corvane::catalogue {
namespace {

constexpr double kBelowSky = 3.0; // standard deviations

/// A plane alone, since the sky of a colour image is that of its brightness.
CStlImage Alone(const CStlImage& image, int plane)
{
    CStlImage alone(-32, image.GetWidth(), image.GetHeight(), 1, 1.0, 0.0, 1);
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::copy_n(image.GetImageAdr(0, y, plane, 1), image.GetWidth(), alone.GetImageAdr(0, y, 0));
    }
    return alone;
}

} // namespace

void GiveSkyBlack(CStlImage& image)
{
    for (int plane = 0; plane < image.GetPlanes() && image.HasOwnLevel() == 0; ++plane) {
        const CStlImage alone = Alone(image, plane);
        const Sky sky = MeasureSky(alone);
        const double black = std::max(sky.mean - kBelowSky * sky.sigma, image.GetLevelMin(plane));
        if (black < image.GetLevelMax(plane)) {
            image.SetLevel(plane, black, image.GetLevelMax(plane));
        }
    }
}

} // namespace corvane::catalogue
