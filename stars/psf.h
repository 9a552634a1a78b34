#pragma once

#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "stars/psf_profile.h"

namespace corvane::stars {

/// What a point-spread function is made of.
enum class PsfModel {
    kGaussian, ///< an elliptical Gaussian
    kMoffat,   ///< an elliptical profile of Moffat, its beta fitted
    kStars,    ///< the stars' own mean about a profile of Moffat
};

/// How it is measured.
struct PsfOptions {
    PsfModel model = PsfModel::kMoffat;
    int zones = 1;                    ///< along each axis, each with a function of its own
    int size = 0;                     ///< of the square of samples [pixels, 1 or more]; 0: by the width of the stars
    std::optional<double> fullWell{}; ///< samples from here on are saturated; unset: told from the samples
};

/// The point-spread function of a zone.
struct ZonePsf {
    int stars = 0;         ///< that it was fitted to; without any, there is no more
    PsfWidths widths;      ///< of the profile
    double residual = 0.0; ///< median over the stars of the root mean square of what the profile leaves, over the peak
    PsfSamples samples{};
};

/// Those of a field.
struct FieldPsf {
    int size = 0;                 ///< of each square of samples [pixels]
    std::vector<ZonePsf> zones{}; ///< row by row
};

/// Measures the point-spread function of one plane by its stars: those that may be measured with
/// (`FieldStar::IsUsable`) and have the width that the frame's stars have in common, at most 200 of each zone, the
/// brightest, and faint ones only where there are few others. Samples nearer than two widths to another star do not
/// count; a star that loses much by that is left out. A frame without stars has size 0. Throws Cancelled.
CORVANE_VISIBLE FieldPsf MeasurePsf(const CStlImage& image, int plane, const PsfOptions& options, const Run& run = {});

} // namespace corvane::stars
