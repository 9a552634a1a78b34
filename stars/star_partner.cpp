#include "stars/star_partner.h"

#include <algorithm>
#include <cmath>

namespace corvane::stars {

namespace {

constexpr double kPartnerDistance = 2.0; // pixels

} // namespace

const FieldStar* PartnerOf(const FieldStar& star, const std::vector<FieldStar>& frame, const Mapping& mapping)
{
    const Position at = mapping.Map(star.x, star.y);
    const auto found = std::find_if(frame.begin(), frame.end(), [&](const FieldStar& other) {
        return other.IsUsable() && std::hypot(other.x - at.x, other.y - at.y) < kPartnerDistance;
    });
    return found == frame.end() ? nullptr : &*found;
}

} // namespace corvane::stars
