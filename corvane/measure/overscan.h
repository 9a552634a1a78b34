#pragma once

#include <optional>

#include "corvane/core/stl_image.h"

/// Takes the bias level off that the overscan strip of a sensor shows.
class CORVANE_API CImgOverScan : public CStlImage {
public:
    CImgOverScan() = default;
    /// A copy of the image to be changed.
    explicit CImgOverScan(const CStlImage& source) : CStlImage(source) {}

    /// Subtracts the absolute value of the strip's bias from plane 0 of the whole image, in place, and then chooses
    /// display levels by the settings of section "PrcAutoLevel" (`CImgAutoLevel`). Other planes keep their samples.
    ///
    /// The edges belong to the strip, all four, and may be turned over; positions outside the image count as the edge
    /// pixel next to them. The bias is the strip's mean, with `clip` non-zero that of what `SigmaClipping` leaves. A
    /// blank ends its row, in the strip and in the image: it and what follows neither counts nor changes. Where no
    /// sample counts, because all are blank or clipped, the image stays as it is, its levels included. A NaN in the
    /// strip makes plane 0 NaN; with `clip` it leaves nothing that counts. Reports no progress. The strip, which is
    /// small, is measured on one thread: its sum would depend on where a block of rows begins.
    void Do(int left, int right, int top, int bottom, int clip);

    /// Keeps the values strictly within 3 standard deviations of the median values[count / 2], of the population, in
    /// ascending order at the front of the array, and sets `count` to their number. Equal values are none within 0
    /// deviations: nothing is left. So it is with a NaN or an infinity among them. One pass.
    void SigmaClipping(int& count, double* values);
};

namespace corvane {

/// The bias that `CImgOverScan::Do` finds in a strip, with its sign; nothing where no sample counts.
CORVANE_API std::optional<double> OverscanBias(const CStlImage& image, int left, int right, int top, int bottom,
                                               int clip);

} // namespace corvane
