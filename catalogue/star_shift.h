#pragma once

#include <array>

#include "catalogue/operation.h"
#include "catalogue/placement.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// @name Ranges and defaults of the search for a star
/// @{
inline constexpr int kMinPatch = 9;       ///< smallest patch [pixels]
inline constexpr int kMaxPatch = 255;     ///< largest patch [pixels]
inline constexpr int kDefaultPatch = 33;  ///< [pixels]
inline constexpr int kMinSearch = 4;      ///< smallest range [pixels]
inline constexpr int kDefaultSearch = 64; ///< [pixels]
/// @}

/// Which star is looked for, and where.
struct StarSearch {
    std::array<double, 2> at{}; ///< about where it is in the first frame [column, row]
    int size = kDefaultPatch;   ///< side of the square about it that is looked for [pixels, 9..255]
    int range = kDefaultSearch; ///< it is looked for within half of it either way [pixels, 4..1024]
};

/// Finds the shift that brings a star of one frame onto the same star of the first, to a tenth of a pixel, by matching
/// the star's surroundings in one plane of each; see CImgMatching. Sky and brightness may differ. The star should be the
/// brightest within patch and range, and wider than two pixels. Its place becomes the frame's standard centre.
///
/// Throws Error when the star lies outside of the first frame, when a frame shows no star there, or when the match
/// lies at the edge of the range.
Fit FindShift(const io::Frame& first, int firstPlane, io::Frame& frame, int plane, const StarSearch& search,
              const Context& context);

} // namespace corvane::catalogue
