#pragma once

#include <string>

#include "examples/night/plane.h"

namespace corvane::night {

/// @name What the filters of a colour sensor let through, as shares of what falls on a sensor without filters
/// `filter` is 'R', 'G' or 'B'.
/// @{
double WhiteShare(char filter);                ///< Of white light: that of a flat, of satellites.
double SkyShare(char filter);                  ///< Of a night sky above a town, which is orange.
double StarShare(char filter, double redness); ///< Of a star's light; `redness` is -1 (blue) to 1 (red).
/// @}

/// The filter over a pixel; `pattern` has those of the first 2 x 2 pixels, as "RGGB".
inline char FilterAt(const std::string& pattern, int x, int y)
{
    return pattern[static_cast<std::size_t>(2 * (y % 2) + x % 2)];
}

/// Copies the samples below a filter to another plane of the same size.
void CopyBelow(char filter, const std::string& pattern, const Plane& from, Plane& to);

} // namespace corvane::night
