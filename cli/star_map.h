#pragma once

#include <string>
#include <vector>

#include "io/frame.h"

namespace corvane::cli {

/// A star to be marked.
struct Mark {
    double x;    ///< place, rows in the file's order
    double y;    ///< likewise
    double fwhm; ///< the ring's radius is 2.5 times that [pixels]
    bool isUsed; ///< green; otherwise orange
};

/// Writes the frame as a picture for the screen, shown as `corvane render` shows it, with a ring about each star, which
/// few have their numbers beside, from 1. Throws Error.
void SaveStarMap(const std::string& path, const io::Frame& frame, const std::vector<Mark>& marks);

} // namespace corvane::cli
