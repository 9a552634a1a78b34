#pragma once

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"

/// Changes the number of samples of an image: enlarges or reduces the picture to a new width and height.
///
/// The grids are aligned at the centres of the first samples: column i of the result lies at i * width / new width in
/// the source, so an enlarged picture repeats its last columns and rows. Bilinear between samples, also where one of
/// them is blank; NaN spreads to the samples that read it. Where the position is whole on both axes the sample itself
/// is taken: reducing to a half picks every second one, without a mean.
///
/// All members unset the reference points, keep the levels and report "Changing canvas size..." and "Changing image
/// resolution..."; ESC is ignored. `source` must be another image, usually the one that this is a copy of; the width
/// and height that count as old are this image's.
class CORVANE_API CImgResolution : public CStlImage {
public:
    CImgResolution() = default;
    /// A copy of the image to be resampled.
    explicit CImgResolution(const CStlImage& source) : CStlImage(source) {}

    /// `ByLiner`.
    int Do(CStlImage* source, int newWidth, int newHeight, int showProgress);
    /// The same, as a part of a run.
    int Do(const CStlImage& source, int newWidth, int newHeight, const corvane::Run& run);
    /// Resamples `source`. The world coordinates are multiplied by the factors of both axes, the 1-based reference
    /// pixel too, which is exact only for a pixel counted from 0. Returns 1, or 0 when a size is below 1 or there is no
    /// room: then only the reference points have changed.
    int ByLiner(CStlImage* source, int newWidth, int newHeight, int showProgress);
    /// The same, as a part of a run.
    int ByLiner(const CStlImage& source, int newWidth, int newHeight, const corvane::Run& run);
    /// Resamples `source` by cubic convolution with parameter -1 (R. G. Keys, IEEE Transactions on Acoustics, Speech
    /// and Signal Processing 29, 1981) over taps that are bilinear themselves. They lie at whole distances from the
    /// position, where the kernel is 1 for the position itself and 0 for all others: the samples are those of
    /// `ByLiner`. The world coordinates stay as they are.
    int ByCubic(CStlImage* source, int newWidth, int newHeight, int showProgress);
    /// The same, as a part of a run.
    int ByCubic(const CStlImage& source, int newWidth, int newHeight, const corvane::Run& run);
};
