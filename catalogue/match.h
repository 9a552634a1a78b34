#pragma once

#include <array>
#include <optional>

#include "catalogue/operation.h"
#include "io/frame.h"

namespace corvane::catalogue {

inline constexpr int kMaxMatchRange = 1024; ///< largest range of a match [pixels]

/// How a cut-out is looked for in an image; see CImgMatching.
struct MatchOptions {
    /// Where its first sample is expected [column and row of the image]; unset puts it into the middle.
    std::optional<std::array<double, 2>> start{};
    int range = 64; ///< the offsets within half of it either way are tried [pixels, 0..1024]
};

/// Where a cut-out fits best.
struct Match {
    double x;   ///< column of the image on which its first sample falls
    double y;   ///< row
    double rms; ///< root of the mean squared difference, the mean brightness matched [raw units]
};

/// Throws Error, which names the option, its value and what is allowed.
void CheckMatch(const MatchOptions& options);

/// Finds the reference in the image, to a tenth of a pixel. The image is handed back as it was. Throws Error for
/// options, io::Error when the planes of the two differ or when no offset in the range lets them overlap.
/// A reference of the other order of rows is turned upside down first.
Match RunMatch(io::Frame& reference, io::Frame& image, const MatchOptions& options, const Context& context);

} // namespace corvane::catalogue
