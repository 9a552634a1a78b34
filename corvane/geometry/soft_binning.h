#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Adds blocks of samples up into one, as a camera bins on its chip.
class CORVANE_API CImgSoftBinning : public CStlImage {
public:
    CImgSoftBinning() = default;
    /// A copy of the image to be binned.
    explicit CImgSoftBinning(const CStlImage& source) : CStlImage(source) {}

    /// Each sample becomes the sum, not the mean, of bx x by samples of `source`, added in single precision row by row,
    /// each row from the left. Blanks are added like any other value.
    ///
    /// The size becomes this image's width / bx x height / by, rounded down, or with `keepPartial` up: the last column
    /// and row then hold sums of fewer samples. With `scaleLevels` the levels are multiplied by bx * by. The reference
    /// points are unset; the world coordinates stay as they are. `source` must be another image, usually the one that
    /// this is a copy of; a plane that it lacks repeats its last one. Reports "Changing canvas size..." and "Applying
    /// software binning..."; ESC is ignored. Returns 1, or 0 when a factor is below 1, a side would be, or there is no
    /// room: then only the reference points have changed.
    int Do(int bx, int by, int keepPartial, int scaleLevels, CStlImage* source, int showProgress);
    /// The same, as a part of a run.
    int Do(int bx, int by, int keepPartial, int scaleLevels, const CStlImage& source, const corvane::Run& run);
};
