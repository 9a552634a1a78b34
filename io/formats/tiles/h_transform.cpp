#include "io/formats/tiles/h_transform.h"

#include <algorithm>
#include <bit>

namespace corvane::io::tiles {
namespace {

using Whole = std::int64_t;

/// The four quarters at one level of a transform.
class Quarters {
public:
    /// `rows` and `columns` are those of the level: of two quarters together.
    Quarters(Whole* values, std::size_t stride, std::size_t rows, std::size_t columns)
        : values_(values), stride_(stride), rows_(rows), columns_(columns), down_((rows + 1) / 2 * stride),
          right_((columns + 1) / 2)
    {}

    std::size_t SumRows() const { return (rows_ + 1) / 2; }
    std::size_t SumColumns() const { return (columns_ + 1) / 2; }
    bool HasRowBelow(std::size_t row) const { return 2 * row + 1 < rows_; }
    bool HasColumnRight(std::size_t column) const { return 2 * column + 1 < columns_; }

    Whole& Sum(std::size_t row, std::size_t column) { return values_[row * stride_ + column]; }
    Whole& OfRows(std::size_t row, std::size_t column) { return (&Sum(row, column))[down_]; }
    Whole& OfColumns(std::size_t row, std::size_t column) { return (&Sum(row, column))[right_]; }
    Whole& OfBoth(std::size_t row, std::size_t column) { return (&Sum(row, column))[down_ + right_]; }

    /// Sums that have a neighbour before them and a whole pair behind: the range of rows or columns to smooth over.
    std::size_t InnerRows() const { return (rows_ - 1) / 2; }
    std::size_t InnerColumns() const { return (columns_ - 1) / 2; }

private:
    Whole* values_;
    std::size_t stride_;
    std::size_t rows_;
    std::size_t columns_;
    std::size_t down_;
    std::size_t right_;
};

/// The nearest multiple of a power of two; halves go away from zero.
Whole RoundTo(Whole value, Whole unit)
{
    const Whole down = unit == 1 ? 0 : value >> 63; // -1 for negative ones
    return (value + (unit >> 1) + down) & -unit;
}

Whole TowardsZero(Whole value, Whole by)
{
    return value >= 0 ? value - by : value + by;
}

/// The samples of a square of two by two, row after row.
struct Square {
    Whole samples[4];
};

/// Low bits that the transform dropped from sums follow from the parity of the differences.
Square Unmix(Whole sum, Whole ofRows, Whole ofColumns, Whole ofBoth, Whole unit, int shift)
{
    ofRows = RoundTo(ofRows, 2 * unit);
    ofColumns = RoundTo(ofColumns, 2 * unit);
    ofBoth = RoundTo(ofBoth, unit);
    const Whole low = ofBoth & unit;
    ofRows = TowardsZero(ofRows, low);
    ofColumns = TowardsZero(ofColumns, low);
    const Whole next = (ofBoth ^ ofRows ^ ofColumns) & (2 * unit);
    sum += sum >= 0 || low != 0 ? low - next : next;
    return {{(sum - ofRows - ofColumns + ofBoth) >> shift, (sum - ofRows + ofColumns - ofBoth) >> shift,
             (sum + ofRows - ofColumns - ofBoth) >> shift, (sum + ofRows + ofColumns + ofBoth) >> shift}};
}

/// Moves `difference`, which stands for 1/2^bits of a slope, towards the slope within limits.
void MoveTowards(Whole& difference, Whole slope, Whole low, Whole high, int bits, Whole most)
{
    if (low < high) {
        const Whole step = std::clamp(slope, low, high) - (difference << bits);
        const Whole rounded = (step >= 0 ? step : step + (Whole{1} << bits) - 1) >> bits;
        difference += std::clamp(rounded, -most, most);
    }
}

/// The slope stays between the sums of the neighbours before and behind.
void SmoothAlong(Whole& difference, Whole before, Whole sum, Whole behind, Whole most)
{
    const Whole up = behind - sum;
    const Whole down = sum - before;
    MoveTowards(difference, behind - before, 4 * std::min(std::max(up, down), Whole{0}),
                4 * std::max(std::min(up, down), Whole{0}), 3, most);
}

void SmoothBoth(Quarters& level, std::size_t row, std::size_t column, Whole most)
{
    const Whole sum = level.Sum(row, column);
    const Whole ends[] = {level.Sum(row + 1, column + 1) - sum, sum - level.Sum(row + 1, column - 1),
                          sum - level.Sum(row - 1, column + 1), level.Sum(row - 1, column - 1) - sum};
    const Whole x = 2 * level.OfRows(row, column);
    const Whole y = 2 * level.OfColumns(row, column);
    const Whole slopes[] = {-x - y, x - y, y - x, x + y};
    Whole high = std::max(ends[0], Whole{0}) + slopes[0];
    Whole low = std::min(ends[0], Whole{0}) + slopes[0];
    for (int i = 1; i < 4; ++i) {
        high = std::min(high, std::max(ends[i], Whole{0}) + slopes[i]);
        low = std::max(low, std::min(ends[i], Whole{0}) + slopes[i]);
    }
    MoveTowards(level.OfBoth(row, column), ends[0] + ends[1] + ends[2] + ends[3], 16 * low, 16 * high, 6, most);
}

/// Differences of rows first, then of columns, then of both, which depend on the two.
void Smooth(Quarters& level, Whole most)
{
    for (std::size_t row = 1; row < level.InnerRows(); ++row) {
        for (std::size_t column = 0; column < level.SumColumns(); ++column) {
            SmoothAlong(level.OfRows(row, column), level.Sum(row - 1, column), level.Sum(row, column),
                        level.Sum(row + 1, column), most);
        }
    }
    for (std::size_t row = 0; row < level.SumRows(); ++row) {
        for (std::size_t column = 1; column < level.InnerColumns(); ++column) {
            SmoothAlong(level.OfColumns(row, column), level.Sum(row, column - 1), level.Sum(row, column),
                        level.Sum(row, column + 1), most);
        }
    }
    for (std::size_t row = 1; row < level.InnerRows(); ++row) {
        for (std::size_t column = 1; column < level.InnerColumns(); ++column) {
            SmoothBoth(level, row, column, most);
        }
    }
}

/// Writes the samples of a level, row after row without gaps. What lies beyond an odd edge counts as 0.
void InvertLevel(Quarters& level, Whole unit, int shift, std::size_t columns, Whole* samples)
{
    for (std::size_t row = 0; row < level.SumRows(); ++row) {
        const bool below = level.HasRowBelow(row);
        Whole* const first = samples + 2 * row * columns;
        for (std::size_t column = 0; column < level.SumColumns(); ++column) {
            const bool right = level.HasColumnRight(column);
            const Square square = Unmix(level.Sum(row, column), below ? level.OfRows(row, column) : 0,
                                        right ? level.OfColumns(row, column) : 0,
                                        below && right ? level.OfBoth(row, column) : 0, unit, shift);
            for (std::size_t i = 0; i < 4; ++i) {
                if ((i < 2 || below) && (i % 2 == 0 || right)) {
                    first[i / 2 * columns + 2 * column + i % 2] = square.samples[i];
                }
            }
        }
    }
}

} // namespace

void InvertHTransform(HTransform& transform, std::int64_t smoothingQuantum)
{
    const auto levels = static_cast<int>(std::bit_width(std::max(transform.rows, transform.columns) - 1));
    std::vector<Whole> samples(transform.values.size());
    if (levels > 0) {
        transform.values[0] = RoundTo(transform.values[0], Whole{2} << levels);
    }
    for (int k = levels - 1; k >= 0; --k) {
        const std::size_t round = (std::size_t{1} << k) - 1;
        const std::size_t rows = (transform.rows + round) >> k;
        const std::size_t columns = (transform.columns + round) >> k;
        Quarters level(transform.values.data(), transform.columns, rows, columns);
        if (smoothingQuantum > 1) {
            Smooth(level, smoothingQuantum / 2);
        }
        InvertLevel(level, Whole{1} << k, k == 0 ? 2 : 1, columns, samples.data());
        for (std::size_t row = 0; row < rows; ++row) {
            std::copy_n(samples.data() + row * columns, columns, transform.values.data() + row * transform.columns);
        }
    }
}

} // namespace corvane::io::tiles
