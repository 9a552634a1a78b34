#pragma once

#include <cstddef>
#include <vector>

#include "corvane/combine/drop.h"
#include "corvane/core/aligned_row.h"
#include "corvane/platform/export.h"

namespace corvane {

/// Pixels of a row that drops are gathered for together.
inline constexpr int kDropStretch = 256;

/// What falls into a stretch of a row of a grid.
struct CORVANE_VISIBLE DropSums {
    int x;
    int row;
    int count;
    double value[kDropStretch] = {};  ///< sums of weight times value
    double weight[kDropStretch] = {}; ///< sums of weight
    int frames[kDropStretch] = {};    ///< of which something has fallen into the pixel
    /// @name What the noise is told by, if it is wanted
    /// @{
    bool wantsNoise;
    double square[kDropStretch] = {}; ///< sums of weight times value squared
    double parts[kDropStretch] = {};  ///< sums of parts of drops
    double worth[kDropStretch] = {};  ///< sums of weight times part squared
    /// @}

    DropSums(int left, int y, int columns, bool withNoise) : x(left), row(y), count(columns), wantsNoise(withNoise) {}
    /// Stores means, weights, numbers of frames and noise; null for those that are not wanted.
    void Store(int blank, float* means, float* weights, float* coverage, float* noise) const;

private:
    double Noise(int i) const;
};

/// The rows of a frame that are in memory, to be dropped onto a grid.
class CORVANE_VISIBLE DroppedRows {
public:
    /// Of a frame of so many columns and planes, which lies on the grid by a mapping and counts by a weight; drops are
    /// `size` wide [pixels of the frame, 0..1].
    DroppedRows(const Mapping& onGrid, double size, DropKernel kernel, int width, int planes, double weight);

    /// Takes room for other rows of all planes.
    void Begin(const RowSpan& rows);
    /// A row of a plane, to be filled; NaN is not dropped.
    float* Row(int plane, int y) { return samples_.data() + Index(plane, y); }
    /// Adds what falls into a stretch.
    void Add(int plane, DropSums& sums) const;

private:
    std::ptrdiff_t Index(int plane, int y) const
    {
        return (static_cast<std::ptrdiff_t>(plane) * (rows_.end - rows_.first) + (y - rows_.first)) * width_;
    }
    template <class Noisy>
    void AddDrops(int plane, const int* columns, const int* rows, const double* parts, Noisy isNoisy, int* seen,
                  DropSums& sums) const;
    void PointParts(const int* columns, const int* rows, const DropSums& sums, double* parts) const;

    Mapping onGrid_;
    Drop drop_; ///< everywhere, where the mapping is an alignment
    double size_;
    DropKernel kernel_;
    int width_;
    int planes_;
    double weight_;
    RowSpan rows_{0, 0};
    std::vector<float> samples_;
};

} // namespace corvane
