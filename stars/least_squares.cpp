#include "stars/least_squares.h"

#include <algorithm>
#include <cmath>

namespace corvane::stars {

namespace {

constexpr double kLeastPart = 1e-9; // of the largest diagonal element, below which an unknown is not told

} // namespace

LeastSquares::LeastSquares(std::size_t unknowns) : count_(unknowns), triangle_(unknowns * unknowns), right_(unknowns) {}

void LeastSquares::Add(std::span<const double> row, double right)
{
    rest_.assign(row.begin(), row.end());
    for (std::size_t i = 0; i < count_; ++i) {
        const double length = std::sqrt(At(i, i) * At(i, i) + rest_[i] * rest_[i]);
        if (rest_[i] == 0.0 || length == 0.0) {
            continue;
        }
        const double cosine = At(i, i) / length;
        const double sine = rest_[i] / length;
        const auto turn = [=](double& kept, double& other) {
            const double before = kept;
            kept = cosine * before + sine * other;
            other = cosine * other - sine * before;
        };
        for (std::size_t j = i; j < count_; ++j) {
            turn(At(i, j), rest_[j]);
        }
        turn(right_[i], right);
    }
}

std::optional<std::vector<double>> LeastSquares::Solve() const
{
    double largest = 0.0;
    for (std::size_t i = 0; i < count_; ++i) {
        largest = std::max(largest, std::fabs(At(i, i)));
    }
    std::vector<double> unknowns = right_;
    for (std::size_t i = count_; i-- > 0;) {
        const bool isTold = std::fabs(At(i, i)) > kLeastPart * largest; // NaN is not
        if (!isTold) {
            return std::nullopt;
        }
        for (std::size_t j = i + 1; j < count_; ++j) {
            unknowns[i] -= At(i, j) * unknowns[j];
        }
        unknowns[i] /= At(i, i);
    }
    return unknowns;
}

double LeastSquares::Variance(std::span<const double> row) const
{
    std::vector<double> parts(row.begin(), row.end()); // that of the triangle's rows in the given one
    double sum = 0.0;
    for (std::size_t i = 0; i < count_; ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            parts[i] -= At(j, i) * parts[j];
        }
        parts[i] /= At(i, i);
        sum += parts[i] * parts[i];
    }
    return sum;
}

} // namespace corvane::stars
