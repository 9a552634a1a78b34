#include "corvane/combine/row_combiner.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "bench/combine/plain_statistic.h"
#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

/// A way to combine, and what part of the pixels every fifth frame lacks.
struct Kind {
    const char* name;
    CombineMethod method;
    bool isWeighted;
    int missing; ///< columns of each row, a sixteenth each
    double limit;
};

constexpr Kind kKinds[] = {
    {"median, all there", CombineMethod::kMedian, false, 0, 0.35},
    {"median, a quarter in gaps", CombineMethod::kMedian, false, 4, 0.35},
    {"clipped median, a quarter in gaps", CombineMethod::kClippedMedian, false, 4, 0.5},
    {"clipped mean, a quarter in gaps", CombineMethod::kClippedMean, false, 4, 0.5},
    {"clipped mean, weighted, all there", CombineMethod::kClippedMean, true, 0, 0.5},
    {"clipped mean, weighted, in gaps all over", CombineMethod::kClippedMean, true, 16, 0.5},
};

/// Frames as a stack hands them on: rows of doubles, and which of these count.
class Rows {
public:
    Rows(int frames, int width, int height, const Kind& kind) : width_(width), values_(frames)
    {
        for (int i = 0; i < frames; ++i) {
            Sky& frame = frames_.emplace_back(width, height, 1, static_cast<std::uint64_t>(i) + 10);
            const bool lacks = i % 5 == 2;
            values_[i].resize(width);
            valid_.emplace_back(width, 1);
            std::fill_n(valid_[i].begin(), lacks ? width * kind.missing / 16 : 0, 0);
            weights_.push_back(kind.isWeighted ? 1.0 / (1 + i % 3) : 1.0);
            lines_.push_back({values_[i].data(), valid_[i].data()});
            bytes_ += frame.GetImageSize();
        }
    }

    void Stack(CStlImage& target, RowCombiner& combiner)
    {
        for (int y = 0; y < target.GetHeight(); ++y) {
            for (std::size_t i = 0; i < frames_.size(); ++i) {
                std::copy_n(frames_[i].GetImageAdr(0, y, 0, 1), width_, values_[i].data());
            }
            combiner.Combine(lines_.data(), width_, {target.GetImageAdr(0, y, 0)});
        }
    }

    double Expected(int x, int y, const Kind& kind) const
    {
        std::vector<double> values;
        std::vector<double> weights;
        for (std::size_t i = 0; i < frames_.size(); ++i) {
            if (valid_[i][x] != 0) {
                values.push_back(frames_[i].GetPixelGrayRaw(x, y, 0));
                weights.push_back(weights_[i]);
            }
        }
        return PlainStatistic(values, weights, kind.method);
    }

    const std::vector<double>& Weights() const { return weights_; }
    std::uint64_t Bytes() const { return bytes_; }

private:
    int width_;
    std::deque<Sky> frames_;
    std::vector<std::vector<double>> values_;
    std::vector<std::vector<int>> valid_;
    std::vector<double> weights_;
    std::vector<CombineLine> lines_;
    std::uint64_t bytes_ = 0;
};

void TimeKind(Run& run, const Kind& kind)
{
    const int width = Size(2048, 75);
    const int height = Size(2048, 19);
    Rows rows(20, width, height, kind);
    RowCombiner combiner(kind.method, Coverage::kAny, rows.Weights(), 0.0);
    CStlImage target(-32, width, height, 1, 1.0, 0.0, 1);
    rows.Stack(target, combiner);
    CheckSamples(target, [&](int x, int y, int) { return rows.Expected(x, y, kind); });
    run.Time(rows.Bytes(), [&] { rows.Stack(target, combiner); });
}

std::deque<Line> MakeRowCombinerLines()
{
    std::deque<Line> lines;
    for (const Kind& kind : kKinds) {
        lines.emplace_back(std::string("combine/CoveredRows/") + kind.name + ", 20 frames", Seconds(kind.limit),
                           [&kind](Run& run) { TimeKind(run, kind); });
    }
    return lines;
}

const std::deque<Line> rowCombinerLines = MakeRowCombinerLines();

} // namespace
} // namespace corvane::bench
