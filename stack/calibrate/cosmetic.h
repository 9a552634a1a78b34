#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::stack {

inline constexpr double kHotSigmas = 10.0; ///< what makes a pixel hot unless the user says otherwise [sigmas]

/// Rows of one plane of a frame that are in memory.
struct RowBand {
    float* samples; ///< of column 0 of the first row
    int width;
    int firstRow;
    int rowCount;
};

/// The hot pixels of a sensor, as its master dark shows them, and how they are taken out of frames.
///
/// A pixel is hot if it lies `sigmas` standard deviations (see `MeasureLevel`) above the median of the dark's plane and
/// as far above the median of its neighbours, so that the glow of an amplifier is none. Neighbours are the eight pixels
/// `step` away: 1, or 2 in a colour filter mosaic, where they have the same filter. Infinity is hot; blanks and NaN are
/// not. Pixels that are too dark are left to the flat.
class CORVANE_VISIBLE HotPixels {
public:
    HotPixels() = default; ///< none
    /// Finds them. More than 1 % of a plane are not kept: see `Fault`.
    HotPixels(const CStlImage& dark, int step, double sigmas = kHotSigmas);

    /// Why the dark cannot tell the hot pixels, as a text for its user; empty if it can.
    const std::string& Fault() const { return fault_; }
    /// How many there are in all planes.
    std::size_t Count() const;
    /// Rows above and below a band that cleaning it looks at.
    int Margin() const { return step_; }

    /// Gives hot pixels in rows first to end - 1 of a calibrated frame's band the median of their neighbours in the
    /// band, of an even number the mean of the two middle ones. Hot neighbours, blanks and NaN do not count; without
    /// any other the pixel stays, and so does one that is blank or NaN. `plane` is the frame's: a dark of one plane
    /// serves all.
    void Clean(const RowBand& band, int first, int end, int plane, const BlankTest& isBlank) const;

private:
    /// Index of a pixel in its plane, row after row.
    using Places = std::vector<std::ptrdiff_t>;

    Places Find(const CStlImage& dark, int plane, double sigmas, std::size_t most);

    int step_ = 1;
    std::vector<Places> planes_; ///< in order
    std::string fault_;
};

} // namespace corvane::stack
