#include "catalogue/sky_black.h"

#include <algorithm>

#include "catalogue/display_levels.h"
#include "stars/plane_of.h"

namespace corvane::catalogue {
namespace {

constexpr double kBelowSky = 3.0; // standard deviations

} // namespace

void GiveSkyBlack(CStlImage& image)
{
    for (int plane = 0; plane < image.GetPlanes() && image.HasOwnLevel() == 0; ++plane) {
        const Sky sky = MeasureSky(stars::PlaneOf(image, plane)); // that of a colour image is that of its brightness
        const double black = std::max(sky.mean - kBelowSky * sky.sigma, image.GetLevelMin(plane));
        if (black < image.GetLevelMax(plane)) {
            image.SetLevel(plane, black, image.GetLevelMax(plane));
        }
    }
}

} // namespace corvane::catalogue
