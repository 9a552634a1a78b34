#pragma once

#include <vector>

#include "corvane/combine/aligned_pixels.h"
#include "corvane/core/alignment.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// What `CImgComposit::Abr` says of its parameters holds for these.
struct SaturationSettings {
    double ratio;
    Space space;
    double fraction;
    int radius;
};

/// Replaces what is saturated in one plane of a base by an aligned overlay, row by row from the top.
class SaturationReplacement {
public:
    /// The images must outlive this object; the result takes the rows.
    SaturationReplacement(CStlImage& result, const CStlImage& base, const CStlImage& overlay,
                          const Alignment& alignment, int plane, const SaturationSettings& settings);

    /// Writes columns left to right - 1 of row y, as far as the base has them.
    void Row(int y, int left, int right);

private:
    /// Display scale or, in raw space, none.
    struct Scale {
        bool isDisplay;
        DisplayScale display;

        double To(double v) const { return isDisplay ? display.To256(v) : v; }
        double Back(double v) const { return isDisplay ? display.ToRaw(v) : v; }
    };

    /// A pixel and what base and overlay have there.
    struct Pixel {
        int x;
        int y;
        Position at; ///< in the overlay
        double a;
        double b;
    };

    bool IsUsable(const Position& at) const;
    double Replaced(const Pixel& pixel) const;
    double BesideSaturation(const Pixel& pixel) const;
    double BetweenNeighbours(const Pixel& pixel, double q) const;
    double LargestInBase(const Pixel& pixel) const;
    double LargestInOverlay(const Pixel& pixel) const;

    CStlImage& result_;
    const CStlImage& base_;
    const CStlImage& overlay_;
    Alignment alignment_;
    int plane_;
    int basePlane_;
    int overlayPlane_;
    double ratio_;
    int radius_;
    Scale baseScale_; ///< plane 0's levels for every plane, but for the neighbours in the base
    Scale neighbourScale_;
    Scale overlayScale_;
    Scale resultScale_;
    double saturatedBase_;
    double saturatedOverlay_;
    std::vector<double> values_;
    std::vector<int> inside_;
};

} // namespace corvane
