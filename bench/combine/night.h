#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <vector>

#include "bench/combine/plain_statistic.h"
#include "bench/support/bench.h"
#include "corvane/core/blank.h"

namespace corvane::bench {

/// A night's frames in memory, each with its own shift.
class Night {
public:
    Night(int frames, int width, int height, double fraction) : fraction_(fraction)
    {
        for (int i = 0; i < frames; ++i) {
            Sky& frame = frames_.emplace_back(width, height, 1, static_cast<std::uint64_t>(i) + 10);
            frame.SetBlank(kBlank); // stacking makes a shifted frame use blanks: do so at once, for equal runs
            frame.SetBlankUsed(1);
        }
    }

    static constexpr int kBlank = -32768;

    int Count() const { return static_cast<int>(frames_.size()); }
    CStlImage& Frame(int i) { return frames_[static_cast<std::size_t>(i)]; }
    double ShiftX(int i) const { return i % 7 - 3.0 + fraction_ * i; }
    double ShiftY(int i) const { return i % 5 - 2.0 - fraction_ * i; }
    std::uint64_t Bytes() const { return frames_.size() * frames_.front().GetImageSize(); }

    /// The defined result of one pixel: from every frame, or of the last one that has nothing there.
    double Expected(int x, int y, CombineMethod method) const
    {
        std::vector<double> values;
        double undefined = 0.0;
        for (int i = 0; i < Count(); ++i) {
            const CStlImage& frame = frames_[static_cast<std::size_t>(i)];
            int isOutside = 0;
            const double v = frame.GetPixelGrayRaw(x, y, ShiftX(i), ShiftY(i), 0.0, 1.0, 1.0, 0, UndefinedValue(frame),
                                                   0, &isOutside, nullptr, nullptr);
            isOutside != 0 ? static_cast<void>(undefined = v) : values.push_back(v);
        }
        const std::vector<double> weights(values.size(), 1.0);
        return values.size() < frames_.size() ? undefined : PlainStatistic(values, weights, method);
    }

private:
    std::deque<Sky> frames_;
    double fraction_;
};

} // namespace corvane::bench
