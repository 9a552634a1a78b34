#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "stack/combine/row_window.h"
#include "stack/combine/workbench.h"

namespace corvane::stack {

/// Where rejected values are counted: images of the grid's width, null for those that are not wanted.
struct RejectedCounts {
    CStlImage* low;
    CStlImage* high;
    int firstRow; ///< of the grid, that they begin with
};

/// Which values of frames are kept on rows of a grid: a bit for each frame, plane and pixel.
class JudgedRows {
public:
    using WindowOf = std::function<const RowWindow&(std::size_t frame)>;

    /// The plan must outlive this.
    JudgedRows(const CombinePlan& plan, int planes) : plan_(plan), planes_(planes), grown_(plan, planes) {}

    const GrownRejection& Grown() const { return grown_; }

    /// Begins with other rows, which are judged by so many threads.
    void Begin(const RowSpan& rows, int threads, bool countsRejected);
    /// Judges a row. What is rejected is counted if it `isOwn`, no row that is judged for others, and that in the tally
    /// of rows that began with one, too.
    void Judge(int row, int thread, bool isOwn, const RejectedCounts& counts, const WindowOf& windowOf);
    /// Drops what lies beside trails and hits on a row, once all rows are judged.
    void Grow(int row, int thread, bool isOwn, const RejectedCounts& counts, const WindowOf& windowOf);
    /// Adds what all threads have counted.
    void AddTo(RejectionTally& tally) const;
    /// Whether the value of the frame on the pixel at which a position lies is kept; false outside of the rows.
    bool Has(std::size_t frame, int plane, const Position& at) const;

private:
    void Sample(const Stretch& stretch, Workbench& bench, const WindowOf& windowOf) const;
    void Keep(const Stretch& stretch, const Workbench& bench);
    std::size_t Index(std::size_t frame, int plane, int x, int row) const
    {
        const std::size_t line = (frame * planes_ + plane) * (rows_.end - rows_.first) + (row - rows_.first);
        return line * ((plan_.grid.width + 7) / 8) + x / 8;
    }

    const CombinePlan& plan_;
    int planes_;
    RowSpan rows_{0, 0};
    std::vector<std::uint8_t> kept_;
    std::vector<Workbench> benches_;
    GrownRejection grown_;
};

} // namespace corvane::stack
