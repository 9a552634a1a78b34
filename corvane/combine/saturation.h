#pragma once

#include "corvane/combine/aligned_pixels.h"
#include "corvane/core/alignment.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// What `CImgComposit::Abr` says of its parameters holds for these.
struct SaturationSettings {
    double ratio;
    Space space;
    double fraction;
    int radius;
};

/// Replaces what is saturated in one plane of a base by an aligned overlay: writes the area of the result, as far as
/// the base has it, from the top, and counts its rows.
void ReplaceSaturated(CStlImage& result, const CStlImage& base, const CStlImage& overlay, const Alignment& alignment,
                      int plane, const SaturationSettings& settings, const CRect& area, Stage& stage);

} // namespace corvane
