#pragma once

#include <optional>
#include <span>
#include <vector>

namespace corvane::stars {

/// A linear system of more equations than unknowns, solved by least squares.
///
/// Every equation is turned into a triangle of as many rows as there are unknowns as it comes (W. Givens 1958, Journal
/// of the SIAM 6, 26): squares of small numbers are never differences of large ones, and nothing grows with the
/// equations.
class LeastSquares {
public:
    explicit LeastSquares(std::size_t unknowns);

    /// Adds the equation row . unknowns = right.
    void Add(std::span<const double> row, double right);
    /// The unknowns with the least sum of squared errors; nothing when the equations do not tell them all.
    std::optional<std::vector<double>> Solve() const;
    /// Variance of row . unknowns when every right side has the variance 1. The equations tell all unknowns.
    double Variance(std::span<const double> row) const;

private:
    double& At(std::size_t row, std::size_t column) { return triangle_[row * count_ + column]; }
    double At(std::size_t row, std::size_t column) const { return triangle_[row * count_ + column]; }

    std::size_t count_;
    std::vector<double> triangle_;
    std::vector<double> right_;
    std::vector<double> rest_; ///< of the equation that comes in
};

} // namespace corvane::stars
