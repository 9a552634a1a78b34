#pragma once

#include <optional>

#include "corvane/core/stl_image.h"
#include "stars/find_stars.h"

namespace corvane::stars {

/// The light of a star in a plane: the sum within 1.5 FWHM of its place above the median of a ring about it, which
/// begins at 3 FWHM. Nothing when it touches the edge, a sample from the ceiling on, or what is undefined, or shows no
/// light.
std::optional<double> LightOf(const CStlImage& image, int plane, const FieldStar& star, double fwhm, double ceiling);

} // namespace corvane::stars
