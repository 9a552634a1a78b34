#pragma once

#include <cmath>
#include <limits>

#include "corvane/core/image.h"

namespace corvane {

/// Tells blank samples: those whose value, truncated towards zero, equals an image's blank value.
///
/// The values that truncate to one integer are an interval, so the test is two comparisons and vectorises on any
/// processor. NaN and infinities are never blank.
struct BlankTest {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    BlankTest() = default; ///< nothing is blank

    /// Samples that truncate to `blank`.
    explicit BlankTest(int blank)
    {
        const double below = blank > 0 ? blank : std::nextafter(blank - 1.0, 0.0);
        const double above = blank < 0 ? blank : std::nextafter(blank + 1.0, 0.0);
        low = below;
        high = above;
    }

    /// Samples that are blank in the image; nothing when it uses no blank value.
    explicit BlankTest(const CImage& image) : BlankTest(image.IsBlankUsed() ? BlankTest(image.GetBlank()) : BlankTest())
    {}

    bool operator()(double v) const { return (v >= low) & (v <= high); }
    /// True when nothing is blank.
    bool IsNever() const { return low > high; }
};

/// The value for samples that an operation leaves undefined: the image's blank value, or else one chosen by the bits
/// per pixel that its file was loaded with.
inline double UndefinedValue(const CImage& image)
{
    if (image.IsBlankUsed()) {
        return image.GetBlank();
    }
    switch (image.GetOrgBitsPixel()) {
    case -64:
    case -32:
    case 32:
        return -2147483648.0;
    case 16:
        return -32768.0;
    default:
        return 0.0;
    }
}

} // namespace corvane
