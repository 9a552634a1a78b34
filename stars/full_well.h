#pragma once

#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "corvane/platform/rect.h"

namespace corvane::stars {

/// Samples at the sensor's ceiling that touch each other, at corners too.
struct SaturatedArea {
    CRect box;      ///< right and bottom are the first column and row outside
    double x = 0.0; ///< mean place of the samples
    double y = 0.0;
    double sum = 0.0;  ///< of all of them
    double peak = 0.0; ///< the largest
    long long samples = 0;
};

/// The largest sample that a converter of 8 or 16 bits gives; infinite for others.
CORVANE_VISIBLE double FullScale(int bits);

/// The level from which on samples are saturated, near the largest sample of the plane; infinite when nothing shows a
/// ceiling. The largest sample is one when it is the full scale of the 8 or 16 bits that the image had in its file, or
/// when samples that have it lie side by side, far above a sky with that level and noise.
CORVANE_VISIBLE double FullWellLevel(const CStlImage& image, int plane, double sky, double noise, const Run& run = {});

/// Gives one value to the samples of a calibrated plane that are saturated in its raw one, from a level on: dark and
/// flat make them differ. The value is the largest of them, and is returned; nothing when there is none. What lost more
/// than half of its height above the sky, as hot pixels do to a dark, stays. Both planes have one size.
CORVANE_VISIBLE std::optional<double> LevelSaturated(const CStlImage& raw, int rawPlane, double level, CStlImage& image,
                                                     int plane, double sky);

/// The areas of samples from a level on, from the top down. Nothing is saturated when it is infinite. Undefined
/// samples (blanks, NaN, infinities) belong to none.
std::vector<SaturatedArea> FindSaturatedAreas(const CStlImage& image, int plane, double level, const Run& run);

} // namespace corvane::stars
