#pragma once

#include <optional>

namespace corvane {

/// A tone curve from display values to display values; see `CImgToneCurve`. It refers to the caller's table, which has
/// at least 2 entries.
class Curve {
public:
    /// Values are sent through a curve in blocks of at most so many.
    static constexpr int kBlock = 64;

    /// The line of the values beyond one end of the table.
    struct End {
        double slope;
        double start;
        double value; ///< the curve's at `start`
        double bound; ///< where the line of equal entries is read, so that an infinite value keeps theirs

        double operator()(double x) const { return slope * (x - start) + value; }
    };

    Curve(const float* table, int n);

    int Size() const { return size_; }
    const End& Below() const { return below_; }
    const End& Above() const { return above_; }
    /// The output of entry i.
    double Entry(int i) const { return table_[i] * 255.0; }
    /// Replaces each value by the curve's output; NaN stays NaN.
    void Apply(double* values, int count) const;
    /// The line that values which come from a line that begins at 0 or 255 end up on; nothing when it has a kink.
    std::optional<End> Then(const End& line) const;

private:
    const float* table_;
    int size_;
    End below_;
    End above_;
};

/// out[x] = table[index[x]]
inline void LookUp(const int* __restrict index, const float* __restrict table, float* __restrict out, int count)
{
    for (int x = 0; x < count; ++x) {
        out[x] = table[index[x]];
    }
}

} // namespace corvane
