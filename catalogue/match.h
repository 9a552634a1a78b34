#pragma once

#include <array>
#include <optional>

#include "catalogue/operation.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// @name Ranges and defaults of a match
/// @{
inline constexpr int kMaxMatchRange = 1024;   ///< largest range [pixels]
inline constexpr int kDefaultMatchRange = 64; ///< [pixels]
/// Two single, noisy frames of one field may have less; but a star is like any other, and no place is better than a
/// wrong one.
inline constexpr double kLeastCorrelation = 0.7;
/// @}

/// How a cut-out is looked for in an image; see `FindCutOut`.
struct MatchOptions {
    /// Where its first sample is expected [column and row of the image]; unset looks everywhere.
    std::optional<std::array<double, 2>> start{};
    int range = kDefaultMatchRange; ///< places within half of it of the start, either way, are tried [pixels, 0..1024]
    double least = kLeastCorrelation; ///< a smaller correlation is no match [0..1]
};

/// Where a cut-out fits best.
struct Match {
    double x;           ///< column of the image on which its first sample falls
    double y;           ///< row
    double correlation; ///< 1 where the two differ by pedestal and gain alone
    double rms;         ///< root of the mean squared difference once both are matched [raw units of the image]
    double rival;       ///< the correlation at the best place that lies elsewhere; -1 for none
};

/// Throws Error, which names the option, its value and what is allowed.
void CheckMatch(const MatchOptions& options);

/// Finds the reference in the image, where it must lie whole, to a tenth of a pixel. Throws Error for options and
/// Cancelled; Error when the planes of the two differ, when the reference is the larger one or flat, when the image
/// shows nothing like it, and when it does so in several places, none of which leads clearly. A
/// reference of the other order of rows is turned upside down first.
Match RunMatch(io::Frame& reference, io::Frame& image, const MatchOptions& options, const Context& context);

} // namespace corvane::catalogue
