#include "stars/sky_polynomial.h"

#include <algorithm>
#include <optional>

#include "stars/normal_equations.h"

namespace corvane::stars {

namespace {

constexpr double kLeastOfSum = 1e-12; // of the sum of weights, below which a term is not told

} // namespace

SkyPolynomial::SkyPolynomial(int width, int height)
    : scaleX_(2.0 / std::max(width - 1, 1)), offsetX_(width > 1 ? 1.0 : 0.0), scaleY_(2.0 / std::max(height - 1, 1)),
      offsetY_(height > 1 ? 1.0 : 0.0)
{}

void SkyPolynomial::PowersAt(double u, double v, int degree, double* powers)
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

/// The factors of a degree; nothing when the values do not tell them as `Fit` demands. Squares of powers between -1 and
/// 1 lose no digits that count: where they would, the variance is beyond any that is asked for.
template <int kDegree>
std::optional<SkyPolynomial::Factors> SkyPolynomial::FactorsOf(const std::vector<Value>& values, double most) const
{
    constexpr std::size_t kTerms = (kDegree + 1) * (kDegree + 2) / 2;
    constexpr int kPlaces = 8; // along each side
    NormalEquations<kTerms> system;
    std::array<double, kTerms> powers{};
    for (const Value& value : values) {
        PowersAt(Across(value.x), Down(value.y), kDegree, powers.data());
        system.Add(powers, value.value, value.weight);
    }
    system.Eliminate();
    bool isTold = system.IsTold(kLeastOfSum);
    for (int i = 0; isTold && i < (kPlaces + 1) * (kPlaces + 1); ++i) {
        const int column = i % (kPlaces + 1);
        const int row = i / (kPlaces + 1);
        PowersAt(2.0 * column / kPlaces - 1.0, 2.0 * row / kPlaces - 1.0, kDegree, powers.data());
        isTold = system.Variance(powers) <= most;
    }
    if (!isTold) {
        return std::nullopt;
    }
    system.Substitute();
    Factors factors{};
    std::copy(system.right.begin(), system.right.end(), factors.begin());
    return factors;
}

bool SkyPolynomial::Fit(const std::vector<Value>& values, int degree, double most)
{
    std::optional<Factors> factors;
    switch (degree) {
    case 0:
        factors = FactorsOf<0>(values, most);
        break;
    case 1:
        factors = FactorsOf<1>(values, most);
        break;
    case 2:
        factors = FactorsOf<2>(values, most);
        break;
    case 3:
        factors = FactorsOf<3>(values, most);
        break;
    default:
        factors = FactorsOf<kMostDegree>(values, most);
        break;
    }
    factors_ = factors.value_or(factors_);
    return factors.has_value();
}

} // namespace corvane::stars
