#include "stack/combine/judged_rows.h"

#include <algorithm>
#include <cmath>

namespace corvane::stack {

void JudgedRows::Begin(const RowSpan& rows, int threads, bool countsRejected)
{
    rows_ = rows;
    kept_.assign(Index(plan_.frames.size(), 0, 0, rows.first), 0);
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
            for (std::size_t i = 0; i < plan_.frames.size(); ++i) {
                windowOf(i).Sample(plane, x, row, count, 0.0, bench.Values(i), bench.Valid(i));
                windowOf(i).LeaveOutWrapped(x, row, count, bench.Valid(i));
                Normalise(plan_.frames[i], plan_.grid, {x, row, plane, count}, bench.Values(i), bench.Valid(i));
            }
            const auto in = [&](CStlImage* image) {
                return image != nullptr && isOwn ? image->GetImageAdr(x, row - counts.firstRow, plane) : nullptr;
            };
            bench.combiner.Combine(bench.lines.data(), count,
                                   {values, nullptr, in(counts.low), in(counts.high), bench.low, bench.high});
            if (bench.tally && isOwn) {
                bench.tally->Add(x, row, count, bench.lines, bench.low, bench.high);
            }
            for (std::size_t i = 0; i < plan_.frames.size(); ++i) {
                for (int k = 0; k < count; ++k) {
                    const double v = bench.Values(i)[k];
                    const bool isKept = (bench.Valid(i)[k] != 0) & (v >= bench.low[k]) & (v <= bench.high[k]);
                    kept_[Index(i, plane, x + k, row)] |= static_cast<std::uint8_t>((isKept ? 1 : 0) << (k % 8));
                }
            }
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
