#include "stars/sky_polynomial.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "stars/least_squares.h"

namespace corvane::stars {

SkyPolynomial::SkyPolynomial(int width, int height)
    : scaleX_(2.0 / std::max(width - 1, 1)), offsetX_(width > 1 ? 1.0 : 0.0), scaleY_(2.0 / std::max(height - 1, 1)),
      offsetY_(height > 1 ? 1.0 : 0.0)
{}

void SkyPolynomial::PowersAt(double u, double v, int degree, double* powers) const
{
    *powers = 1.0;
    for (int d = 1; d <= degree; ++d) { // each degree from the one before: all of it times u, and its last one times v
        const double* const before = powers;
        powers += d;
        for (int i = 0; i < d; ++i) {
            powers[i] = before[i] * u;
        }
        powers[d] = before[d - 1] * v;
    }
}

SkyPolynomial::Row SkyPolynomial::RowAt(double y) const
{
    Row row;
    row.scale_ = scaleX_;
    row.offset_ = -offsetX_;
    const double v = Down(y);
    std::size_t i = 0;
    for (int d = 0; d <= kMostDegree; ++d) {
        double power = 1.0;
        for (int rows = 0; rows <= d; ++rows) { // the powers of a degree begin with that of the column alone
            row.terms_[static_cast<std::size_t>(d - rows)] += factors_[i++] * power;
            power *= v;
        }
    }
    return row;
}

bool SkyPolynomial::Fit(const std::vector<Value>& values, int degree, double most)
{
    const std::size_t terms = static_cast<std::size_t>((degree + 1) * (degree + 2) / 2);
    LeastSquares system(terms);
    std::array<double, kMostTerms> powers{};
    const std::span<const double> row(powers.data(), terms);
    for (const Value& value : values) {
        const double root = std::sqrt(value.weight);
        PowersAt(Across(value.x), Down(value.y), degree, powers.data());
        std::transform(powers.begin(), powers.end(), powers.begin(), [=](double p) { return p * root; });
        system.Add(row, value.value * root);
    }
    const std::optional<std::vector<double>> factors = system.Solve();
    if (!factors) {
        return false;
    }
    constexpr int kPlaces = 8; // along each side
    for (int i = 0; i <= kPlaces; ++i) {
        for (int j = 0; j <= kPlaces; ++j) {
            PowersAt(2.0 * j / kPlaces - 1.0, 2.0 * i / kPlaces - 1.0, degree, powers.data());
            if (system.Variance(row) > most) {
                return false;
            }
        }
    }
    factors_ = {};
    std::copy(factors->begin(), factors->end(), factors_.begin());
    return true;
}

} // namespace corvane::stars
