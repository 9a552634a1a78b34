#pragma once

#include "corvane/restore/samples.h"

namespace corvane {

/// The total variation of a grid: the sum of the lengths of its gradient, from each sample to the next in its row and
/// in its column, beyond the edges 0. The square of what counts as flat is added to that of a length, so that what is
/// smaller hardly has a direction.
///
/// L. I. Rudin, S. Osher, E. Fatemi, Physica D 60, 259 (1992).
class TotalVariation {
public:
    TotalVariation(int width, int height, int threads) : width_(width), height_(height), threads_(threads) {}

    /// What counts as flat [raw units].
    void SetLeast(double least) { square_ = least * least; }

    /// curvature = div(grad u / |grad u|), by which the total variation falls where a sample rises.
    void FindCurvature(const Samples& image, Samples& curvature) const;

private:
    template <class Work>
    void ForRows(Work work) const;
    const float* RowOf(const Samples& samples, int y) const;

    int width_;
    int height_;
    int threads_;
    double square_ = 0.0;
};

} // namespace corvane
