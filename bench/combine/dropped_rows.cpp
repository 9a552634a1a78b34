#include "corvane/combine/dropped_rows.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

constexpr int kMargin = 40; // of a grid about the frame, so that nothing is lost

/// Drops a frame onto a grid twice as fine. Returns the sum of all that falls.
double DropAll(const DroppedRows& rows, int width, int height, CStlImage& grid)
{
    double sum = 0.0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; x += kDropStretch) {
            DropSums sums(x, y, std::min(kDropStretch, width - x), false);
            rows.Add(0, sums);
            sums.Store(0, grid.GetImageAdr(x, y, 0), nullptr, nullptr, nullptr);
            for (int i = 0; i < sums.count; ++i) {
                sum += sums.value[i];
            }
        }
    }
    return sum;
}

const Line turned("combine/DroppedRows/turn, drops of 0.7 onto a grid twice as fine", Seconds(0.25), [](Run& run) {
    Sky frame(Size(1024, 96), Size(768, 64), 1, 3);
    const int width = frame.GetWidth();
    const int height = frame.GetHeight();
    const CfPoint centre{width / 2.0, height / 2.0};
    const Mapping onReference = Alignment::Turned(0.3, 0.4, 0.3, centre);
    DroppedRows rows(onReference.From(-kMargin / 2.0, -kMargin / 2.0).Scaled(2.0), 0.7, DropKernel::kSquare, width, 1,
                     1.0);
    rows.Begin({0, height});
    double light = 0.0;
    for (int y = 0; y < height; ++y) {
        std::copy_n(frame.GetImageAdr(0, y, 0, 1), width, rows.Row(0, y));
        light = std::accumulate(rows.Row(0, y), rows.Row(0, y) + width, light);
    }
    CStlImage grid(-32, 2 * (width + kMargin), 2 * (height + kMargin), 1, 1.0, 0.0, 1);
    const auto drop = [&] { return DropAll(rows, grid.GetWidth(), grid.GetHeight(), grid); };
    Require(std::fabs(drop() / light - 1.0) < 1e-9, "drops have lost light");
    run.Time(grid.GetImageSize(), drop);
});

} // namespace
} // namespace corvane::bench
