#pragma once

#include <algorithm>
#include <cmath>

#include "stars/find_stars.h"

namespace corvane::stars {

/// The first star of a field within two pixels of a place; null where there is none.
inline const FieldStar* StarAt(const StarField& field, double x, double y)
{
    const auto isNear = [=](const FieldStar& s) { return std::hypot(s.x - x, s.y - y) < 2.0; };
    const auto star = std::find_if(field.stars.begin(), field.stars.end(), isNear);
    return star == field.stars.end() ? nullptr : &*star;
}

} // namespace corvane::stars
