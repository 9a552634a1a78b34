#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>

#include "corvane/core/blank.h"

// What many values come to: extremes and sums. They are kept in lanes, since a single running value would wait for
// itself at every sample. Which lane a value goes to depends on its place alone, and lanes are folded in order: so the
// bits are the same on every processor.
namespace corvane {

/// The smallest and largest of the values added; NaN is passed over.
class Extremes {
public:
    void Add(double v)
    {
        min_ = v < min_ ? v : min_;
        max_ = v > max_ ? v : max_;
    }

    /// Adds valueOf(x) for x in 0..count - 1; those that isSkipped holds for are passed over.
    template <class ValueOf, class IsSkipped>
    void Add(int count, ValueOf valueOf, IsSkipped isSkipped)
    {
        using Value = decltype(valueOf(0));
        constexpr int kAbreast = 128 / sizeof(Value); // what registers hold
        constexpr Value kInfinity = std::numeric_limits<Value>::infinity();
        Value low[kAbreast];
        Value high[kAbreast];
        std::fill_n(low, kAbreast, kInfinity);
        std::fill_n(high, kAbreast, -kInfinity);
        const auto add = [=](Value v, Value& least, Value& most) {
            const bool isSkippedHere = isSkipped(v);
            const Value forLeast = isSkippedHere ? kInfinity : v;
            const Value forMost = isSkippedHere ? -kInfinity : v;
            least = forLeast < least ? forLeast : least;
            most = forMost > most ? forMost : most;
        };
        int x = 0;
        for (; x + kAbreast <= count; x += kAbreast) {
            for (int lane = 0; lane < kAbreast; ++lane) {
                add(valueOf(x + lane), low[lane], high[lane]);
            }
        }
        for (; x < count; ++x) {
            add(valueOf(x), low[0], high[0]);
        }
        for (int lane = 0; lane < kAbreast; ++lane) {
            min_ = low[lane] < min_ ? low[lane] : min_;
            max_ = high[lane] > max_ ? high[lane] : max_;
        }
    }

    /// Adds a row of samples, blanks passed over.
    void Add(const float* row, int count, const BlankTest& isBlank = {})
    {
        const auto sampleOf = [=](int x) { return row[x]; };
        if (isBlank.IsNever()) {
            Add(count, sampleOf, [](float) { return false; });
        } else {
            Add(count, sampleOf, isBlank);
        }
    }

    /// Adds values that come behind, as if one by one.
    void Add(const Extremes& others)
    {
        min_ = others.min_ < min_ ? others.min_ : min_;
        max_ = others.max_ > max_ ? others.max_ : max_;
    }

    bool Empty() const { return min_ > max_; }
    double Min() const { return min_; }
    double Max() const { return max_; }

private:
    double min_ = std::numeric_limits<double>::infinity();
    double max_ = -std::numeric_limits<double>::infinity();
};

/// Sums of so many terms of each sample.
template <int number = 1>
class Sums {
public:
    static constexpr int kLanes = 16;

    /// Adds the terms of the samples 0..count - 1 of a row; `terms(i, out)` tells those of one.
    template <class Terms>
    void Add(std::size_t count, Terms terms)
    {
        double lanes[number][kLanes]; // a copy that stays in registers
        std::memcpy(lanes, lanes_, sizeof lanes);
        const auto add = [&](std::size_t i, std::size_t lane) {
            double term[number];
            terms(i, term);
            for (int k = 0; k < number; ++k) {
                lanes[k][lane] += term[k];
            }
        };
        const std::size_t whole = count / kLanes * kLanes;
        for (std::size_t i = 0; i < whole; i += kLanes) {
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                add(i + lane, lane);
            }
        }
        for (std::size_t i = whole; i < count; ++i) {
            add(i, i - whole);
        }
        std::memcpy(lanes_, lanes, sizeof lanes);
    }

    double Lane(int term, int lane) const { return lanes_[term][lane]; }

    std::array<double, number> Totals() const
    {
        std::array<double, number> totals{};
        for (int k = 0; k < number; ++k) {
            for (const double lane : lanes_[k]) {
                totals[static_cast<std::size_t>(k)] += lane;
            }
        }
        return totals;
    }

private:
    double lanes_[number][kLanes] = {};
};

/// The sums over one row alone.
template <int number, class Terms>
std::array<double, number> SumOver(std::size_t count, Terms terms)
{
    Sums<number> sums;
    sums.Add(count, terms);
    return sums.Totals();
}

} // namespace corvane
