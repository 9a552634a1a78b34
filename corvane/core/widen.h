#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Blurs a frame as worse seeing would: writes into `result`, a copy of `source`, each plane convolved with a kernel of
/// sum 1 that has exactly this variance along rows and along columns [pixels squared, 0..400] and the shape of a
/// Gaussian, the nearer the wider it is.
///
/// A Gaussian that is cut off or taken at whole pixels has another variance than its name says, most of all a narrow
/// one. So means of three samples are taken in turn, of half a square pixel or less each, whose variances add up (the
/// kernel is their product, and binomial where all have the most). In double precision. The samples of an edge stand
/// for those beyond it; NaN spreads as far as the kernel reaches, about five deviations. Blanks are not known. Reports
/// "Blurring..."; throws Cancelled.
CORVANE_VISIBLE void Widen(CStlImage& result, const CStlImage& source, double variance, const Run& run);

} // namespace corvane
