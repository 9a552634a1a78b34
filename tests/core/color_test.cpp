#include "corvane/core/color.h"

#include <algorithm>
#include <cmath>

#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

double Gamma(const std::vector<double>& colour, double exponent)
{
    const double m = (colour[0] + colour[1] + colour[2]) * 0.3333333333333333;
    return m >= 1e-7 ? std::pow(m, exponent) : 1.0;
}

double F(double t)
{
    return t > 0.008856 ? std::pow(t, 1.0 / 3.0) : 7.78 * t + 0.13793103448275862;
}

/// R, G, B, X, Y, Z, L, a and b that a display colour has in plain form.
std::vector<double> PlainLab(double r, double g, double b)
{
    const double k = Gamma({r, g, b}, 1.2000000000000002);
    const double x = k * (2.7689 * r + 1.7517 * g + 1.1302 * b);
    const double y = k * (r + 4.5907 * g + 0.0601 * b);
    const double z = k * (0.0565 * g + 5.5943 * b);
    const double t = y / 5.6508;
    return {k * r,
            k * g,
            k * b,
            x,
            y,
            z,
            t > 0.008856 ? 116.0 * F(t) - 16.0 : 903.29 * t,
            (F(x / 5.6508) - F(t)) * 500.0,
            (F(t) - F(z / 5.6508)) * 200.0};
}

void ExpectValues(const CColor& c, const std::vector<double>& expected)
{
    const double values[] = {c.GetR(), c.GetG(), c.GetB(), c.GetX(), c.GetY(), c.GetZ(), c.GetL(), c.Geta(), c.Getb()};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_TRUE(Near(static_cast<float>(values[i]), static_cast<float>(expected[i]), 1, 1e-12))
            << i << ": " << values[i] << ' ' << expected[i];
    }
}

} // namespace

TEST(Color, EqualsThePlainFormAsFloatsAndComesBackIntoTheGamut)
{
    Random random(1);
    for (const double brightness : {0.0, 1e-8, 1e-3, 0.05, 1.0, 19.6}) {
        for (int i = 0; i < 2000; ++i) {
            const double r = random.Between(i % 9 == 0 ? -brightness : 0.0, brightness);
            const double g = i % 7 == 0 ? r : random.Between(0.0, brightness);
            const double b = i % 5 == 0 ? 0.0 : random.Between(0.0, brightness);
            std::vector<double> expected = PlainLab(r, g, b);
            CColor colour;
            colour.RgbToLab(r, g, b);
            ExpectValues(colour, expected);
            colour.LabToRgb(colour.GetL(), colour.Geta(), colour.Getb());
            std::replace_if(
                expected.begin(), expected.begin() + 3, [](double v) { return v < 0.0; }, 0.0);
            const double k = Gamma(expected, -0.5454545454545454);
            std::transform(expected.begin(), expected.begin() + 3, expected.begin(), [k](double v) { return v * k; });
            ExpectValues(colour, expected);
        }
    }
    CColor colour;
    colour.XyzToRgb(std::nan(""), 1.0, 1.0);
    EXPECT_EQ(colour.GetR() + colour.GetG() + colour.GetB(), 0.0);
}
