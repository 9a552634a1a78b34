#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/platform/export.h"
#include "stack/combine/combine.h"

namespace corvane::stack {

/// Bits of the columns of a row, column x the bit x % 64 of the word x / 64.
using ColumnBits = std::vector<std::uint64_t>;

inline bool HasColumn(const ColumnBits& bits, int x)
{
    return (bits[static_cast<std::size_t>(x / 64)] >> (x % 64) & 1) != 0;
}

/// What is dropped beside values that were rejected as too high: a trail, or a larger hit, goes on below the limit at
/// its edges. A rejected value belongs to one where at least 4 of the 5 x 5 values about it were rejected in its frame;
/// then all of the frame within so many columns and rows of it are dropped, whatever they are, so that noise is not
/// judged by its sign.
///
/// Rows of a grid are entered, in any order and each by one thread; when all within `Reach` of a row are there, or all
/// that the grid has, the row can be asked for.
class CORVANE_VISIBLE GrownRejection {
public:
    /// For frames and planes of a plan's grid, if it grows.
    GrownRejection(const CombinePlan& plan, int planes);

    bool Grows() const { return grow_ > 0; }
    /// How far away what is rejected has a say [rows or columns].
    int Reach() const { return Grows() ? grow_ + kNear : 0; }
    /// Bytes for each row of the grid.
    std::uint64_t RowBytes() const { return Grows() ? sizeof(std::uint64_t) * frames_ * planes_ * words_ : 0; }
    /// The rows, and those of the grid that have a say in them.
    RowSpan Around(const RowSpan& rows) const;

    /// Begins with other rows, nothing of which is rejected.
    void Begin(const RowSpan& rows);
    /// Enters a stretch, given the values of all frames and the highest that are kept.
    void Enter(const Stretch& stretch, const std::vector<CombineLine>& lines, const double* high);
    /// The columns at which a frame's values are dropped, rejected ones included. Returns false if there are none.
    bool Find(std::size_t frame, int plane, int row, ColumnBits& columns) const;

private:
    static constexpr int kNear = 2; // how far a value looks for others

    const std::uint64_t* Row(std::size_t frame, int plane, int row) const;
    std::uint64_t InStructures(const std::uint64_t* const* near, std::size_t word) const;

    int grow_;
    int height_;
    std::size_t frames_;
    std::size_t planes_;
    std::size_t words_; ///< of a row
    RowSpan rows_{0, 0};
    std::vector<std::uint64_t> high_; ///< what was rejected, by frame, plane and row
    ColumnBits nothing_;              ///< a row beyond the others
};

} // namespace corvane::stack
