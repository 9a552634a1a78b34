#pragma once

#include <algorithm>
#include <limits>

#include "corvane/core/blank.h"

namespace corvane {

/// The smallest and largest of the values added; NaN is passed over.
class Extremes {
public:
    void Add(double v)
    {
        min_ = v < min_ ? v : min_;
        max_ = v > max_ ? v : max_;
    }

    /// Adds a row of samples, blanks passed over.
    void Add(const float* row, int count, const BlankTest& isBlank)
    {
        // A block of independent lanes: a single running minimum would wait for itself at every sample.
        constexpr int kLanes = 32;
        constexpr float kInfinity = std::numeric_limits<float>::infinity();
        float low[kLanes];
        float high[kLanes];
        std::fill_n(low, kLanes, kInfinity);
        std::fill_n(high, kLanes, -kInfinity);
        const bool skipsNothing = isBlank.low > isBlank.high;
        int x = 0;
        for (; skipsNothing && x + kLanes <= count; x += kLanes) {
            for (int lane = 0; lane < kLanes; ++lane) {
                const float v = row[x + lane];
                low[lane] = v < low[lane] ? v : low[lane];
                high[lane] = v > high[lane] ? v : high[lane];
            }
        }
        for (int lane = 0; lane < kLanes; ++lane) {
            min_ = low[lane] < min_ ? low[lane] : min_;
            max_ = high[lane] > max_ ? high[lane] : max_;
        }
        for (; x < count; ++x) {
            if (!isBlank(row[x])) {
                Add(row[x]);
            }
        }
    }

    bool Empty() const { return min_ > max_; }
    double Min() const { return min_; }
    double Max() const { return max_; }

private:
    double min_ = std::numeric_limits<double>::infinity();
    double max_ = -std::numeric_limits<double>::infinity();
};

} // namespace corvane
