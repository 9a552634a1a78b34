#include "io/formats/sip.h"

#include <algorithm>
#include <string>
#include <vector>

namespace corvane::io {
namespace {

constexpr int kHighestOrder = 9; // what a keyword of one digit can say

/// The terms of one degree n of a polynomial: the factors of v^n, u v^(n-1), .. u^n.
using Terms = std::vector<double>;

std::string Keyword(const std::string& name, int i, int j)
{
    return name + "_" + std::to_string(i) + "_" + std::to_string(j);
}

int Order(const Header& header, const std::string& name)
{
    return static_cast<int>(std::clamp(header.Number(name + "_ORDER").value_or(0.0), 0.0, kHighestOrder + 0.0));
}

Terms ReadTerms(const Header& header, const std::string& name, int degree)
{
    Terms terms;
    for (int i = 0; i <= degree; ++i) {
        terms.push_back(header.Number(Keyword(name, i, degree - i)).value_or(0.0));
    }
    return terms;
}

void WriteTerms(const Terms& terms, const std::string& name, Header& header)
{
    const int degree = static_cast<int>(terms.size()) - 1;
    for (int i = 0; i <= degree; ++i) {
        const std::string keyword = Keyword(name, i, degree - i);
        const double value = terms[static_cast<std::size_t>(i)];
        if (value != 0.0 || header.Has(keyword)) {
            header.Set(keyword, value);
        }
    }
}

/// The product with (u * u' + v * v'), where u' and v' are the new variables.
Terms Times(const Terms& terms, double u, double v)
{
    Terms product(terms.size() + 1);
    for (std::size_t i = 0; i < terms.size(); ++i) {
        product[i] += terms[i] * v;
        product[i + 1] += terms[i] * u;
    }
    return product;
}

/// The terms in the distances of the new pixels.
Terms Substitute(const Terms& terms, const tagMATRIX2_2& back)
{
    Terms sum(terms.size());
    for (std::size_t i = 0; i < terms.size(); ++i) {
        Terms power{terms[i]};
        for (std::size_t k = 0; k + 1 < terms.size(); ++k) {
            power = k < i ? Times(power, back.m11, back.m12) : Times(power, back.m21, back.m22);
        }
        std::transform(sum.begin(), sum.end(), power.begin(), sum.begin(), std::plus<>());
    }
    return sum;
}

Terms Combine(double a, const Terms& x, double b, const Terms& y)
{
    Terms sum(x.size());
    std::transform(x.begin(), x.end(), y.begin(), sum.begin(), [=](double p, double q) { return a * p + b * q; });
    return sum;
}

/// The two polynomials are the components of one displacement, which turns with the pixels.
void CarryPair(const std::string& alongX, const std::string& alongY, const tagMATRIX2_2& linear,
               const tagMATRIX2_2& back, Header& header)
{
    if (!header.Has(alongX + "_ORDER") && !header.Has(alongY + "_ORDER")) {
        return;
    }
    const int order = std::max(Order(header, alongX), Order(header, alongY));
    for (int degree = 0; degree <= order; ++degree) {
        const Terms x = Substitute(ReadTerms(header, alongX, degree), back);
        const Terms y = Substitute(ReadTerms(header, alongY, degree), back);
        WriteTerms(Combine(linear.m11, x, linear.m12, y), alongX, header);
        WriteTerms(Combine(linear.m21, x, linear.m22, y), alongY, header);
    }
    header.Set(alongX + "_ORDER", order);
    header.Set(alongY + "_ORDER", order);
}

} // namespace

void CarryDistortion(const tagMATRIX2_2& linear, const tagMATRIX2_2& back, Header& header)
{
    CarryPair("A", "B", linear, back, header);
    CarryPair("AP", "BP", linear, back, header);
}

} // namespace corvane::io
