#pragma once

#include <functional>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "corvane/platform/rect.h"

namespace corvane::stars {

/// Where a frame is like a patch, and how like.
struct PatchPlace {
    double dx = 0.0; ///< shift that brings the frame onto that of the patch [pixels, tenths]
    double dy = 0.0;
    double correlation = 0.0; ///< Pearson's coefficient over all planes [-1..1]
    double gain = 0.0;        ///< so many times the patch's brightness
    double drift = 0.0;       ///< of the object's centroid from that in the patch, along either axis [pixels]
};

/// The brightness of a patch's object in other frames.
enum class PatchLight {
    kSame, ///< about the same: of two objects that of the patch's brightness is found
    kAny,  ///< any, as behind another filter: the brightest object is taken for that of the patch
};

/// A square of a frame with an object in it, to be found in other frames to a tenth of a pixel: a star, a planet, a
/// comet's head, two stars.
///
/// The search is that of `CImgMatching`, on squares that are smoothed, without their sky and without hits, so that
/// neither what stays put on the sensor nor a change of the sky draws the match away. What is undefined, or lies beyond
/// the frame, counts as sky. What differs by more than 0.3 of the object's peak belongs to one of the two frames alone
/// (a track, a trail), and does not count in correlation and gain.
class CORVANE_VISIBLE Patch {
public:
    /// The square of `size` pixels about a place of an image, moved as far as it takes to lie inside. It is looked for
    /// within `search` pixels either way.
    Patch(const CStlImage& image, const CPoint& centre, int size, int search, PatchLight light);

    /// True when its brightest sample stands clear of the noise.
    bool ShowsObject() const { return showsObject_; }
    /// The place in the image of the brightest sample, which is the object's.
    CPoint Top() const { return {left_ + topX_, top_ + topY_}; }
    /// Height of that sample above the sky, smoothed as it is.
    double Peak() const { return peak_; }

    /// Calls visit with the place of a frame that is most like the patch and, while it returns true, with the next
    /// one, after the object of the one before was taken out. Returns how many places there were: none where nothing
    /// can be compared, or with `PatchLight::kAny` when no object is seen. The frame has as many planes as the image.
    int Find(const CStlImage& frame, const std::function<bool(const PatchPlace&)>& visit, const Run& run) const;

private:
    PatchPlace Compare(const CStlImage& window, double x, double y) const;

    int search_;
    PatchLight light_;
    int left_; ///< in the image that it is of
    int top_;
    CStlImage image_;
    double level_ = 0.0; ///< of the sky in it
    double peak_ = 0.0;
    int topX_ = 0; ///< of the brightest sample, in it
    int topY_ = 0;
    bool showsObject_ = false;
};

} // namespace corvane::stars
