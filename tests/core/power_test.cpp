#include "corvane/core/power.h"

#include <algorithm>
#include <cmath>

#include "tests/support/plain.h"

using namespace corvane;

TEST(Power, AgreesWithTheLibrarysOwnOverTheWholeRange)
{
    test::Random random(3);
    std::vector<double> numbers; // all over the range, subnormal ones included, and close to 1
    for (int i = 0; i < 200000; ++i) {
        numbers.push_back(std::ldexp(random.Between(1.0, 2.0), random.Whole(-1074, 1023)));
        numbers.push_back(1.0 + std::ldexp(random.Between(-1.0, 1.0), -random.Whole(1, 53)));
    }
    for (const double y : {1.2000000000000002, -0.5454545454545454, 0.3, -2.5, 17.0}) {
        for (const double x : numbers) {
            const auto within = [](double v) { return std::clamp(v, 0x1p-1021, 0x1p1022); };
            ASSERT_NEAR(within(Pow(x, y)) / within(std::pow(x, y)), 1.0, (1.0 + std::fabs(y)) * 5e-16) << x << ' ' << y;
        }
        for (const double x : {0.0, 1.0, HUGE_VAL, -1.0, -HUGE_VAL, std::nan("")}) {
            EXPECT_TRUE(test::Same(Pow(x, y), x < 0.0 ? std::nan("") : std::pow(x, y))) << x << ' ' << y;
        }
    }
    for (const double x : numbers) {
        const long double expected = std::cbrt(static_cast<long double>(-x));
        ASSERT_NEAR(static_cast<double>(Cbrt(-x) / expected - 1.0L), 0.0, 3e-16) << x;
        if (std::isnormal(x)) {
            const auto isRoot = [x](double root, int n) {
                return std::fabs(static_cast<double>(root / std::pow(static_cast<long double>(x), -1.0L / n) - 1.0L)) <
                       4e-16;
            };
            ASSERT_TRUE(isRoot(InverseFifthRootOfNormal(x), 5)) << x;
            ASSERT_TRUE(isRoot(InverseEleventhRootOfNormal(x), 11)) << x;
        }
    }
    for (const double x : {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
        EXPECT_TRUE(test::Same(1.0 / Cbrt(x), 1.0 / x)) << x; // so that zeros show their sign
    }
}

TEST(Power, LogarithmsAndPowersCloseToOneKeepTheirDigits)
{
    test::Random random(5);
    for (int i = 0; i < 200000; ++i) {
        const double x = std::ldexp(random.Between(-1.0, 1.0), random.Whole(-300, 40));
        if (x > -1.0) {
            ASSERT_NEAR(Log1p(x) / std::log1p(x), 1.0, 9e-16) << x;
        }
        if (std::fabs(x) < 700.0) {
            ASSERT_NEAR(Expm1(x) / std::expm1(x), 1.0, 9e-16) << x;
        }
    }
    EXPECT_EQ(Expm1(-1e9), -1.0);
    EXPECT_EQ(Expm1(1e9), HUGE_VAL);
}
