#pragma once

#include <cstddef>

#include "corvane/core/blank.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

// Gaps: the undefined samples of an image, brought into one form, NaN.
namespace corvane {

/// True when a sample of a row is defined: neither blank nor NaN nor infinite.
CORVANE_VISIBLE bool HoldsDefined(const float* row, std::ptrdiff_t count, const BlankTest& isBlank);

/// Makes every undefined sample, whether blank, NaN or infinite, NaN, and the image use no blank value. Returns how
/// many there are; an image without any is left as it is.
CORVANE_VISIBLE long long MarkGaps(CStlImage& image);

/// Mean of the samples of a plane that are not NaN, on one thread, in one sum; NaN when there is none.
CORVANE_VISIBLE double MeanBesideGaps(const CStlImage& image, int plane);

/// Makes the samples of a row NaN where those of another one are.
CORVANE_VISIBLE void CopyGaps(const float* from, float* to, int count);

} // namespace corvane
