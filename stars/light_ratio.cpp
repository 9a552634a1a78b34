#include "stars/light_ratio.h"

#include <cmath>
#include <limits>
#include <optional>
#include <vector>

#include "stars/find_stars.h"
#include "stars/robust.h"
#include "stars/star_light.h"
#include "stars/star_partner.h"

namespace corvane::stars {

namespace {

constexpr double kLeastRatioRise = 20.0; // deviations
constexpr std::size_t kMostRatios = 300;
constexpr std::size_t kMostPartners = 3000;
constexpr double kMedianToMean = 1.2533; // the standard error of a median over that of the mean, of normal noise

/// The light of a star that is known not to be saturated.
std::optional<double> UncutLightOf(const ImagePlane& of, const FieldStar& star, double fwhm)
{
    return LightOf(of.image, of.plane, star, fwhm, std::numeric_limits<double>::infinity());
}

} // namespace

LightRatio MeasureLightRatio(const ImagePlane& first, const ImagePlane& other, const Mapping& mapping, const Run& run)
{
    const StarField field =
        FindFieldStars(first.image, first.plane, {.sigmas = kLeastRatioRise, .limit = kMostRatios}, run);
    const StarField partners =
        FindFieldStars(other.image, other.plane, {.sigmas = kLeastRatioRise, .limit = kMostPartners}, run);
    const double area = mapping.Scale() * mapping.Scale(); // of a pixel of the first, in those of the other
    std::vector<double> ratios;
    for (const FieldStar& star : field.stars) {
        const FieldStar* const partner = star.IsUsable() ? PartnerOf(star, partners.stars, mapping) : nullptr;
        const auto light = partner != nullptr ? UncutLightOf(first, star, field.fwhm) : std::nullopt;
        const auto otherLight = light ? UncutLightOf(other, *partner, partners.fwhm) : std::nullopt;
        if (otherLight) {
            ratios.push_back(*light / *otherLight * area);
        }
    }
    if (ratios.empty()) {
        return {};
    }
    const RobustLevel level = MeasureLevel(ratios);
    const auto count = static_cast<double>(ratios.size());
    return {level.median, kMedianToMean * level.deviation / std::sqrt(count), static_cast<int>(ratios.size())};
}

} // namespace corvane::stars
