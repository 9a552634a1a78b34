#pragma once

#include <memory>
#include <optional>

#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stack/combine/offset_field.h"

namespace corvane::stack {

/// How frames are made comparable before they are combined.
enum class NormaliseMethod {
    kNone,
    kOffset, ///< the background is brought to the reference's by a sum: another sky over the same stars
    kScale,  ///< the background is brought to the reference's by a factor: all light grows alike, as in flats
    kBoth,   ///< brightness by a factor, then the background by a sum: clouds or another exposure, and another sky
    kLocal,  ///< the same with a sum that changes over the frame: a sky with gradients that are not the reference's
};

/// The brightness of one plane of a frame, by statistics that stars and hits hardly move.
struct FrameLevel {
    double background = 0.0; ///< median [raw units]
    double spread = 0.0;     ///< of the samples about it: structure and noise together, as a standard deviation
    double noise = 0.0;      ///< standard deviation of what differs from sample to sample [raw units]
};

/// What makes a sample of a frame one of the reference: sample * factor + offset.
struct Normalisation {
    double factor = 1.0;
    double offset = 0.0;
    std::shared_ptr<const OffsetField>
        field{}; ///< in place of the offset, over the reference; null: one for all samples

    bool ChangesNothing() const { return factor == 1.0 && offset == 0.0 && field == nullptr; }
    /// The offset at a place of the reference.
    double OffsetAt(double x, double y) const { return field == nullptr ? offset : field->At(x, y); }
};

/// Measures one plane of an image on rows and columns spread over it. Blanks, NaN and infinities are passed over;
/// zeros when nothing is left.
///
/// Background and spread are those of `MeasureLevel`. The noise is measured on 2 s(x) - s(x - 2) - s(x + 2) along rows,
/// in which sky, nebulae and slopes cancel, also those of a colour filter mosaic, by its median size.
/// F. Stoehr et al., DER_SNR: a simple and general spectroscopic signal-to-noise measurement algorithm, Astronomical
/// Data Analysis Software and Systems XVII, ASP Conference Series 394, 2008.
CORVANE_VISIBLE FrameLevel MeasureFrame(const CStlImage& image, int plane);

/// What brings a plane of a frame to the level of the reference.
///
/// For `kBoth` the factor is `fluxRatio`, the flux of the reference's stars by that of the same stars in the frame, if
/// the caller knows it. That is the truth about the light; the ratio of the spreads, which is taken without it, is that
/// only where the structure of the sky outweighs its noise, or where both grow with the light. `kLocal`, whose
/// gradients spread samples too, takes the stars' ratio alone. The other methods do not ask for it. A factor that
/// cannot be told (no number above 0) is 1, so that the others change the background alone and `kScale` nothing. B.
/// Zackay and E. O. Ofek, How to coadd images I, Astrophysical Journal 836, 187, 2017, section 2.
CORVANE_VISIBLE Normalisation NormalisationOf(const FrameLevel& reference, const FrameLevel& frame,
                                              NormaliseMethod method, std::optional<double> fluxRatio = {});

} // namespace corvane::stack
