#pragma once

namespace corvane::demosaic {

/// Columns that are worked on at a time: few enough for their sums to stay in the nearest cache.
inline constexpr int kBlock = 256;

/// Sums of a guide and a target over `kRows` rows of each column of a block, from which the slope of the target over
/// the guide in a window of a few columns is put together.
template <int kRows>
class SlopeSums {
public:
    static constexpr int kReach = 2; ///< columns beyond either end of the block

    /// Takes guide(row, i) and target(row, i) for the columns i of a block of `count`, and kReach beyond.
    template <class Guide, class Target>
    void Take(int count, Guide guide, Target target)
    {
        for (int i = -kReach; i < count + kReach; ++i) {
            double g = 0.0;
            double t = 0.0;
            double gg = 0.0;
            double gt = 0.0;
            for (int row = 0; row < kRows; ++row) {
                const double u = guide(row, i);
                const double v = target(row, i);
                g += u;
                t += v;
                gg += u * u;
                gt += u * v;
            }
            guide_[i + kReach] = g;
            target_[i + kReach] = t;
            squares_[i + kReach] = gg;
            products_[i + kReach] = gt;
        }
    }

    /// The slope of the line of least squares through the columns i + kFirst to i + kLast, at least 0; 0 where the
    /// guide is even, since what it then shows is the rounding of the sums.
    template <int kFirst, int kLast>
    double At(int i) const
    {
        constexpr double kEven = 1e-12;
        constexpr double kPerCount = 1.0 / (kRows * (kLast - kFirst + 1));
        const double g = Sum<kFirst, kLast>(guide_, i);
        const double squares = Sum<kFirst, kLast>(squares_, i);
        const double variance = squares - g * g * kPerCount;
        const double covariance = Sum<kFirst, kLast>(products_, i) - g * Sum<kFirst, kLast>(target_, i) * kPerCount;
        const double slope = covariance / variance;
        const bool rises = (variance > kEven * squares) & (covariance > 0.0);
        return rises ? slope : 0.0;
    }

private:
    static constexpr int kColumns = kBlock + 2 * kReach;

    template <int kFirst, int kLast>
    static double Sum(const double* columns, int i)
    {
        double sum = columns[i + kFirst + kReach];
        for (int k = kFirst + 1; k <= kLast; ++k) {
            sum += columns[i + k + kReach];
        }
        return sum;
    }

    double guide_[kColumns];
    double target_[kColumns];
    double squares_[kColumns];
    double products_[kColumns];
};

} // namespace corvane::demosaic
