#pragma once

#include <vector>

#include "corvane/core/defined.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::stars {

/// A copy of the square about a sample, above the sky. What is undefined or beyond the image is 0 there.
class CORVANE_VISIBLE Stamp {
public:
    Stamp(const CStlImage& image, int plane, int reach);

    void MoveTo(int x, int y, double sky);

    int X() const { return x_; }
    int Y() const { return y_; }
    int Reach() const { return reach_; }
    int Side() const { return 2 * reach_ + 1; }
    /// A row of the square, `Side()` samples; -reach..reach.
    const float* Row(int dy) const { return excess_.data() + Index(dy); }
    /// For each sample of a row 1 where it is undefined, else 0.
    const float* Gaps(int dy) const { return gaps_.data() + Index(dy); }
    bool HasGaps() const { return hasGaps_; }

private:
    std::ptrdiff_t Index(int dy) const { return static_cast<std::ptrdiff_t>(dy + reach_) * Side(); }

    const CStlImage& image_;
    int plane_;
    int reach_;
    DefinedTest isDefined_;
    int x_ = 0;
    int y_ = 0;
    std::vector<float> excess_;
    std::vector<float> gaps_;
    bool hasGaps_ = false;
};

} // namespace corvane::stars
