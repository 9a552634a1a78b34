#pragma once

#include "corvane/core/blank.h"
#include "corvane/platform/export.h"

namespace corvane {

/// How blanks pass from a calibration frame to the image that it calibrates.
///
/// Built for one run. An image that declares no blank takes the frame's. A sample is blank where either is, and becomes
/// the image's blank value.
class CORVANE_VISIBLE BlankRule {
public:
    BlankRule() = default; ///< nothing is blank
    /// Chooses the rule; the image is made to declare the frame's blank when only the frame declares one.
    BlankRule(const CImage& frame, CImage& image);
    virtual ~BlankRule() = default;
    BlankRule(const BlankRule&) = default;
    BlankRule& operator=(const BlankRule&) = default;

    /// 1 both declare a blank, 2 only the frame, 3 only the image, 4 neither.
    int Mode() const { return mode_; }
    /// Tells blanks of the calibration frame.
    const BlankTest& FrameTest() const { return frameTest_; }
    /// Tells blanks of the image.
    const BlankTest& ImageTest() const { return imageTest_; }
    /// What a blank sample becomes.
    int Blank() const { return blank_; }

private:
    int mode_ = 4;
    BlankTest frameTest_;
    BlankTest imageTest_;
    int blank_ = 0;
};

/// Takes a dark off a row of samples: s - d, blanks by the rule, and 0 for what is 0 or less.
CORVANE_VISIBLE void SubtractDarkRow(float* samples, const float* dark, int count, const BlankRule& rule);

/// Divides a row of samples by a flat: s * mean / f where f > 0, blanks by the rule; samples with f <= 0 stay.
CORVANE_VISIBLE void DivideFlatRow(float* samples, const float* flat, int count, double mean, const BlankRule& rule);

} // namespace corvane
