#include "stack/combine/judged_rows.h"

#include <algorithm>
#include <cmath>

namespace corvane::stack {

void JudgedRows::Begin(const RowSpan& rows, int threads, bool countsRejected)
{
    rows_ = rows;
    kept_.assign(Index(plan_.frames.size(), 0, 0, rows.first), 0);
    grown_.Begin(rows);
    while (static_cast<int>(benches_.size()) < threads) {
        benches_.emplace_back(plan_, countsRejected);
    }
}

void JudgedRows::Judge(int row, int thread, bool isOwn, const RejectedCounts& counts, const WindowOf& windowOf)
{
    Workbench& bench = benches_[static_cast<std::size_t>(thread)];
    float values[kStretch];
    for (int plane = 0; plane < planes_; ++plane) {
        for (int x = 0; x < plan_.grid.width; x += kStretch) {
            const int count = std::min(kStretch, plan_.grid.width - x);
            const Stretch stretch{x, row, plane, count};
            Sample(stretch, bench, windowOf);
            const auto in = [&](CStlImage* image) {
                return image != nullptr && isOwn ? image->GetImageAdr(x, row - counts.firstRow, plane) : nullptr;
            };
            bench.combiner.Combine(bench.lines.data(), count,
                                   {values, nullptr, in(counts.low), in(counts.high), bench.low, bench.high});
            if (bench.tally && isOwn) {
                bench.tally->Add(x, row, count, bench.lines, bench.low, bench.high);
            }
            Keep(stretch, bench);
            grown_.Enter(stretch, bench.lines, bench.high);
        }
    }
}

void JudgedRows::Sample(const Stretch& stretch, Workbench& bench, const WindowOf& windowOf) const
{
    const auto& [x, row, plane, count] = stretch;
    for (std::size_t i = 0; i < plan_.frames.size(); ++i) {
        windowOf(i).Sample(plane, x, row, count, 0.0, bench.Values(i), bench.Valid(i));
        windowOf(i).LeaveOutWrapped(x, row, count, bench.Valid(i));
        Normalise(plan_.frames[i], plan_.grid, stretch, bench.Values(i), bench.Valid(i));
    }
}

/// Enters what is kept of a stretch, which begins with a byte.
void JudgedRows::Keep(const Stretch& stretch, const Workbench& bench)
{
    for (std::size_t i = 0; i < plan_.frames.size(); ++i) {
        const auto& [values, valid] = bench.lines[i];
        for (int k = 0; k < stretch.count; ++k) {
            const double v = values[k];
            const bool isKept = (valid[k] != 0) & (v >= bench.low[k]) & (v <= bench.high[k]);
            std::uint8_t& bits = kept_[Index(i, stretch.plane, stretch.x + k, stretch.row)];
            bits = static_cast<std::uint8_t>((k % 8 == 0 ? 0 : bits) | (isKept ? 1 : 0) << (k % 8));
        }
    }
}

void JudgedRows::Grow(int row, int thread, bool isOwn, const RejectedCounts& counts, const WindowOf& windowOf)
{
    Workbench& bench = benches_[static_cast<std::size_t>(thread)];
    float values[kStretch];
    for (int plane = 0; plane < planes_; ++plane) {
        for (const Stretch& stretch : bench.FindGrown(grown_, plane, row, 0, plan_.grid.width)) {
            Sample(stretch, bench, windowOf);
            const auto in = [&](CStlImage* image) {
                return image != nullptr && isOwn ? image->GetImageAdr(stretch.x, row - counts.firstRow, plane)
                                                 : nullptr;
            };
            const CombinedRow result{.values = values, .rejectedLow = in(counts.low), .rejectedHigh = in(counts.high)};
            bench.CombineAgain(stretch, plan_.coverage, result, isOwn);
            Keep(stretch, bench);
        }
    }
}

void JudgedRows::AddTo(RejectionTally& tally) const
{
    for (const Workbench& bench : benches_) {
        if (bench.tally) {
            tally.Add(*bench.tally);
        }
    }
}

bool JudgedRows::Has(std::size_t frame, int plane, const Position& at) const
{
    const double x = std::floor(at.x + 0.5);
    const double y = std::floor(at.y + 0.5);
    const bool isInside = x >= 0.0 && x < plan_.grid.width && y >= rows_.first && y < rows_.end;
    const int column = isInside ? static_cast<int>(x) : 0;
    return isInside && (kept_[Index(frame, plane, column, static_cast<int>(y))] >> (column % 8) & 1) != 0;
}

} // namespace corvane::stack
