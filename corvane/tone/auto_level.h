#pragma once

#include "corvane/core/stl_image.h"

/// Chooses display levels from the statistics of the image's own samples, which it does not change.
///
/// An application reads the parameters of `Do` from its settings, section "PrcAutoLevel": "Min" (double, default 0.2),
/// "Max" (double, default 1.0), "Plane" (int, default 0); see `corvane::AutoLevelSettings`.
class CORVANE_API CImgAutoLevel : public CStlImage {
public:
    CImgAutoLevel() = default;
    /// A copy of the image whose levels are to be chosen.
    explicit CImgAutoLevel(const CStlImage& source) : CStlImage(source) {}

    /// Sets the levels to mean - lowSigma * sigma and mean + highSigma * sigma, cut to the data's own range. Statistics
    /// come from a grid of about a million samples of the rectangle; null means the whole image. Mean and sigma of a
    /// monochrome image are clipped at 3 sigma until the whole part of the mean settles. A colour image gets one pair
    /// of levels from its luminance, or with perPlane a pair for each plane. Blanks, NaN and infinities are left out.
    /// Levels stay as they are when nothing can be counted. The wait cursor is shown meanwhile. The grid is walked on
    /// one thread, since its sums would depend on where a block of rows begins; extremes are found on several.
    void Do(double lowSigma, double highSigma, int perPlane, CRect* rect);

    /// Tells where plane 0's levels lie in the cumulative distribution of the rectangle's samples, as fractions from 0
    /// (all samples are above) to 1; levels outside the data give fractions outside 0..1. An empty rectangle gives 0
    /// and 1.
    void Get(double& lowFraction, double& highFraction, CRect* rect);
};

namespace corvane {

/// The settings of `CImgAutoLevel::Do`.
struct AutoLevelSettings {
    double lowSigma = 0.2;
    double highSigma = 1.0;
    int perPlane = 0;
};

/// Reads the settings of section "PrcAutoLevel", with the defaults for what is not set.
CORVANE_API AutoLevelSettings ReadAutoLevelSettings();

} // namespace corvane
