#include "stars/star_light.h"

#include <cmath>
#include <vector>

#include "corvane/core/defined.h"
#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr double kLight = 1.5;      // FWHM: within this radius is the light
constexpr double kRing = 3.0;       // FWHM: from here on is the sky
constexpr double kColourRing = 4.0; // pixels

} // namespace

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

} // namespace corvane::stars
