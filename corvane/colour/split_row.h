#pragma once

#include <vector>

namespace corvane::demosaic {

/// The index that stands for i among n: mirrors about the first and the last one, which are not repeated. Even stays
/// even, unless there is only one.
constexpr int Mirrored(long long i, int n)
{
    if (n < 2) {
        return 0;
    }
    const long long period = 2LL * (n - 1);
    const long long folded = (i % period + period) % period;
    return static_cast<int>(folded < n ? folded : period - folded);
}

/// A row of a mosaic with the even columns apart from the odd ones, so that samples of a colour lie side by side.
///
/// Both halves go on beyond the ends, mirrored. Samples that are not finite are replaced by the mean of the nearest
/// ones of their half that are, on the left and on the right, or the one there is; without any they are NaN.
class SplitRow {
public:
    static constexpr int kPad = 8; ///< samples beyond either end of a half

    explicit SplitRow(int width);

    void Take(const float* row);
    /// Sample k is column 2 k + parity; k from -kPad to before (width + 1) / 2 + kPad.
    const float* Half(int parity) const { return halves_[parity].data() + kPad; }
    /// Samples of the row that were not finite were replaced.
    bool HasGaps() const { return hasGaps_; }

private:
    int width_;
    bool hasGaps_ = false;
    std::vector<float> padded_;
    std::vector<float> halves_[2];
};

} // namespace corvane::demosaic
