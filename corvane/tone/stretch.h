#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// A stretch: replaces each of `count` values x, which are 0 (black) to 1 (white), by its place after it. It rises, and
/// 0 and 1 stay. Blocks of an image are given to it on several threads at a time.
using StretchFunction = std::function<void(double* values, int count)>;

/// The stretch that replaces each value by function(value).
template <class Function>
StretchFunction StretchBy(Function function)
{
    return [function](double* values, int count) {
        const Function local = function; // in registers: values might lie where `function` does
        for (int i = 0; i < count; ++i) {
            values[i] = local(values[i]);
        }
    };
}

/// @name Stretches, in plain arithmetic that gives the same bits on every processor
/// @{

/// (m - 1) x / ((2 m - 1) x - m): m [above 0, below 1] becomes 1/2.
CORVANE_VISIBLE StretchFunction MidtoneStretch(double m);
/// The midtone m with which x [0..1] becomes `target` [above 0, below 1]; 1/2 where none does.
CORVANE_VISIBLE double MidtoneFor(double x, double target);
/// asinh(k x) / asinh(k), k above 0.
CORVANE_VISIBLE StretchFunction AsinhStretch(double k);
/// The k, from 1e-6 to 1e9, with which `AsinhStretch` brings x [above 0, below 1] closest to `target`.
CORVANE_VISIBLE double AsinhFor(double x, double target);
/// log(1 + k x) / log(1 + k), k above 0.
CORVANE_VISIBLE StretchFunction LogStretch(double k);
/// x to the power 1 / g, g above 0.
CORVANE_VISIBLE StretchFunction GammaStretch(double g);
/// Straight lines between the entries of a table, at least 2, at equal steps from 0 to 1.
CORVANE_VISIBLE StretchFunction TableStretch(std::vector<double> table);
/// @}

/// Between which samples a stretch works, and on what.
struct StretchScope {
    std::optional<double> low{};  ///< the sample where x is 0; else the level min of each plane [raw units]
    std::optional<double> high{}; ///< the sample where x is 1; else the level max of each plane [raw units]
    bool perPlane = true;         ///< false: the planes of a colour image keep their proportions
};

/// Writes the samples of `source` inside the rectangle, stretched, into `result`, whose samples are a copy of them; the
/// others stay. Null means the whole image. Planes beyond the functions that are given take the last one.
///
/// x is a sample's place between low and high, cut to 0..1; 0 and 1 come to the level min and max of its plane. The
/// levels are those of `result`, and stay. With `perPlane` each sample is stretched by itself. Without, the planes of a
/// pixel take one factor, by the first function: what the mean of their x grows by, or less where the brightest would
/// go beyond 1, so that colours stay (R. Lupton et al., Publications of the Astronomical Society of the Pacific 116,
/// 133, 2004).
///
/// Blanks and NaN stay, and do not count in means; infinities are cut. A plane whose high does not lie above its low,
/// or its level max above its level min, stays; so do all without `perPlane`. Reports "Stretching...", a step for each
/// row of each plane; throws Cancelled when the run asks to stop.
CORVANE_VISIBLE void Stretch(CStlImage& result, const CStlImage& source, const std::vector<StretchFunction>& functions,
                             const StretchScope& scope, const CRect* rect, const Run& run);

/// For each plane the stretch after which all steps of brightness between low and high are about equally frequent in
/// the rectangle, or without `perPlane` one for all planes together. x becomes the part of the samples between the ends
/// that lie below it, by 65,536 bins between which lines are straight. Undefined samples do not count. Reports as a
/// histogram for each plane.
CORVANE_VISIBLE std::vector<StretchFunction> EqualisingStretches(const CStlImage& image, const StretchScope& scope,
                                                                 const CRect* rect, const Run& run);

} // namespace corvane
