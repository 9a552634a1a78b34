#pragma once

#include <memory>
#include <optional>

#include "corvane/core/calibration_rows.h"
#include "corvane/core/stl_image.h"

namespace corvane::stack {

/// The calibration frames, each one image made of all files of its kind; null for none.
struct Masters {
    std::shared_ptr<const CStlImage> bias;
    std::shared_ptr<const CStlImage> dark;
    std::shared_ptr<const CStlImage> flat;
    double flatMean = 0.0;  ///< mean of the flat's plane 0
    long long flatGaps = 0; ///< its undefined samples, all NaN; they make those of each light NaN

    bool IsEmpty() const { return !bias && !dark && !flat; }
};

/// What calibrating one frame needs besides the masters.
struct FrameCalibration {
    BlankTest isBlank;      ///< tells the blanks of the frame as it was read
    double pedestal = 0.0;  ///< added first
    double darkScale = 1.0; ///< frame's exposure / dark's; 1: the dark is taken off as it is
    bool isDarkScaled = false;
    BlankRule darkRule;
    BlankRule flatRule;
    std::optional<int> blank; ///< of the frame afterwards
};

/// Prepares a frame, given its record, for the masters: bias and dark alone, or together when the dark is scaled.
FrameCalibration PrepareFrame(const CImage& record, const Masters& masters, double pedestal, double darkScale);

/// Calibrates rows of one plane in place: pedestal, dark (or bias alone), flat. The result is that of
/// `CStlImage::DarkClbrtn` and `CStlImage::FlatClbrtn` on the whole frame, and NaN where the flat is.
void CalibrateRows(const FrameCalibration& frame, const Masters& masters, int plane, int firstRow, int rowCount,
                   int width, float* samples);

} // namespace corvane::stack
