#pragma once

#include <array>
#include <cstddef>

namespace corvane::stars {

/// What the samples about a star say of a step of a model's unknowns towards less squares: matrix * step = right.
template <std::size_t N>
struct NormalEquations {
    using Row = std::array<double, N>;

    std::array<Row, N> matrix{};
    Row right{};
    double squares = 0.0; ///< of what the model leaves, by weight

    /// Adds a sample: how the model there changes with each unknown, and what it leaves of the sample.
    void Add(const Row& slopes, double rest, double weight = 1.0)
    {
        squares += weight * rest * rest;
        for (std::size_t i = 0; i < N; ++i) {
            const double slope = weight * slopes[i];
            right[i] += slope * rest;
            for (std::size_t j = 0; j < N; ++j) {
                matrix[i][j] += slope * slopes[j];
            }
        }
    }

    /// Raises the diagonal by a share of itself, which shortens the step.
    void Damp(double share)
    {
        for (std::size_t i = 0; i < N; ++i) {
            matrix[i][i] *= 1.0 + share;
        }
    }

    /// Takes the first `count` unknowns out of the equations below theirs.
    void Eliminate(std::size_t count = N)
    {
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t row = i + 1; row < N; ++row) {
                const double factor = matrix[row][i] / matrix[i][i];
                for (std::size_t j = i; j < N; ++j) {
                    matrix[row][j] -= factor * matrix[i][j];
                }
                right[row] -= factor * right[i];
            }
        }
    }

    /// @name After `Eliminate`, of equations that no unknown was left out of
    /// @{

    /// Whether they tell every unknown: none of the diagonal is less than a part of its first element.
    bool IsTold(double leastPart) const
    {
        bool isTold = true;
        for (std::size_t i = 0; i < N; ++i) {
            isTold = isTold && matrix[i][i] > leastPart * matrix[0][0]; // NaN is not
        }
        return isTold;
    }

    /// Variance of row . step when every sample of weight 1 has the variance 1.
    double Variance(Row row) const
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < N; ++i) {
            const double part = row[i] / matrix[i][i];
            sum += part * row[i];
            for (std::size_t j = i + 1; j < N; ++j) {
                row[j] -= part * matrix[i][j];
            }
        }
        return sum;
    }
    /// @}

    /// After `Eliminate`: turns the first `count` right sides into the step; the others are known to be so already. Not
    /// finite where there is none.
    void Substitute(std::size_t count = N)
    {
        for (std::size_t i = count; i-- > 0;) {
            for (std::size_t j = i + 1; j < N; ++j) {
                right[i] -= matrix[i][j] * right[j];
            }
            right[i] /= matrix[i][i];
        }
    }
};

} // namespace corvane::stars
