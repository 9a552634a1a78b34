#pragma once

#include <algorithm>
#include <cstddef>
#include <type_traits>

#include "corvane/filter/filter_rows.h"
#include "corvane/filter/laplacian.h"
#include "corvane/filter/neighbourhood.h"

namespace corvane::filter {

/// Sum of the points of a neighbourhood without its centre.
inline double SumOfOthers(const Neighbours& points)
{
    double sum = 0.0;
    for (int i = 0; i < points.count; ++i) {
        sum += i == points.count / 2 ? 0.0 : points.values[static_cast<std::size_t>(i)];
    }
    return sum;
}

/// The mean of a sample c of weight 1 and the others of a neighbourhood, of sum s, of weight `weight` each.
class WeightedMean {
public:
    explicit WeightedMean(int type) : others_(Points(type) - 1) {}

    double operator()(double c, double s, double weight) const { return (s * weight + c) / (others_ * weight + 1.0); }

private:
    double others_;
};

/// The mean without weights, with the factors 1/n as they are written: results depend on them.
inline double PlainMean(double c, double s, int type)
{
    return (s + c) * (type == kCross ? 0.2 : (type == kSquare3 ? 0.1111111111111111 : 0.047619047619047616));
}

/// Sums over the rows of a block of columns, from which the sum about each of them is put together. The centre is left
/// out, not taken off again: a difference would lose what is small beside it.
template <int kType>
class BlockSums {
public:
    BlockSums(const Band& band, int begin, int count)
    {
        const float* const up = band.Row(-1) + begin - kMargin;
        const float* const middle = band.Row(0) + begin - kMargin;
        const float* const down = band.Row(1) + begin - kMargin;
        for (int i = 0; i < count + 2 * kMargin; ++i) {
            around_[i] = static_cast<double>(up[i]) + down[i];
            column_[i] = kType == kCross ? middle[i] : around_[i] + middle[i];
        }
        if constexpr (kType == kSquare5) {
            const float* const above = band.Row(-2) + begin - kMargin;
            const float* const below = band.Row(2) + begin - kMargin;
            for (int i = 0; i < count + 2 * kMargin; ++i) {
                const double outer = static_cast<double>(above[i]) + below[i];
                around_[i] += outer;
                tall_[i] = column_[i] + outer;
            }
        }
    }

    /// The sum of the others about column i of the block.
    double Others(int i) const
    {
        const double* const column = column_ + i + kMargin;
        const double* const tall = (kType == kSquare5 ? tall_ : column_) + i + kMargin;
        const double sum = around_[i + kMargin] + (tall[-1] + tall[1]);
        return kType == kSquare5 ? sum + (column[-kMargin] + column[kMargin]) : sum;
    }

private:
    static constexpr int kMargin = filter::Radius(kType);
    static constexpr int kColumns = kBlockColumns + 2 * kMargin;

    double around_[kColumns]; ///< the rows without the middle one
    double column_[kColumns]; ///< three rows; of the cross the middle one alone
    double tall_[kColumns];   ///< five rows; of the larger square alone
};

/// Gives a function the sums at one sample, and when it takes three arguments the Laplacian there as well.
template <class Function, class LaplacianOf>
float ApplyToSums(Function function, double centre, double others, LaplacianOf laplacian)
{
    if constexpr (std::is_invocable_v<Function, double, double, double>) {
        return static_cast<float>(function(centre, others, laplacian()));
    } else {
        return static_cast<float>(function(centre, others));
    }
}

/// `MapSums` for columns that have all their neighbours within the row.
///
/// A function of the Laplacian has the band read while the target is written, so its results go by way of a block of
/// their own: rows of large images often lie a multiple of a page apart, and a sample is not read before the processor
/// knows that a store to the same place of another page is not one to it.
template <int kType, class Function>
void MapInnerSums(const Band& band, int begin, int end, float* out, Function function)
{
    const auto make = [&](int first, int count, float* __restrict target) {
        const BlockSums<kType> sums(band, first, count);
        const float* const up = band.Row(-1) + first;
        const float* const middle = band.Row(0) + first;
        const float* const down = band.Row(1) + first;
        for (int i = 0; i < count; ++i) {
            target[i] = ApplyToSums(function, middle[i], sums.Others(i), [=] {
                return CrossLaplacian(middle[i], middle[i - 1], middle[i + 1], up[i], down[i]);
            });
        }
    };
    ForEachBlock(band, begin, end, out, [&](int first, int count) {
        if constexpr (std::is_invocable_v<Function, double, double, double>) {
            float made[kBlockColumns];
            make(first, count, made);
            std::copy_n(made, count, out + first);
        } else {
            make(first, count, out + first);
        }
    });
}

/// Writes function(centre, sum of the others) to out[x] for the columns from `left` to before `right`; a function of
/// three arguments gets the signed Laplacian of the cross as well. All in double. Centres of no neighbourhood are
/// copied.
template <class Function>
void MapSums(const Band& band, int type, int left, int right, float* out, Function function)
{
    const auto inner = [&](int begin, int end) {
        switch (type) {
        case kCross:
            return MapInnerSums<kCross>(band, begin, end, out, function);
        case kSquare3:
            return MapInnerSums<kSquare3>(band, begin, end, out, function);
        case kSquare5:
            return MapInnerSums<kSquare5>(band, begin, end, out, function);
        default:
            std::copy(band.Row(0) + begin, band.Row(0) + end, out + begin);
        }
    };
    SplitColumns(left, right, band.Width(), Radius(type), inner, [&](int x) {
        const Neighbours points = band.At(x, type);
        const Neighbours cross = band.At(x, kCross);
        out[x] = ApplyToSums(function, points.Centre(), SumOfOthers(points), [&] { return CrossLaplacian(cross); });
    });
}

} // namespace corvane::filter
