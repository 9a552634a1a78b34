#include "corvane/core/turn.h"

#include <cmath>

#include "tests/support/images.h"

using namespace corvane;

/// sin(x + quarters * pi / 2). Whole multiples of these pieces of pi / 2, of 32 binary digits each, are exact.
static long double SineOf(double x, int quarters)
{
    long double rest = std::fabs(x) > 0x1p30 ? std::fmod(x, 0x1.921fb54442d18p+2) : x;
    const int n = static_cast<int>(std::nearbyint(rest * 0x1.45f306dc9c883p-1L));
    for (const auto p : {0xc90fdaa2p-31L, 0x2168c234p-63L, 0xc4c6628bp-95L, 0x80dc1cd1p-127L, 0x29024e08p-159L}) {
        rest -= n * p;
    }
    const long double v = (n + quarters) % 2 == 0 ? std::sin(rest) : std::cos(rest);
    return ((n + quarters) & 2) == 0 ? v : -v;
}

/// Whether v is the double next to the expected number; within the error of that, there may be two. Zeros have a sign.
static bool IsNext(double v, long double expected)
{
    const long double error = std::fabs(expected) * 0x1p-62L;
    return (v == static_cast<double>(expected - error) || v == static_cast<double>(expected + error)) &&
           std::signbit(v) == std::signbit(expected);
}

TEST(Turn, GivesTheNextDouble)
{
    test::Random random(1);
    const auto sized = [&](int from, int to) { return std::ldexp(random.Between(-1.0, 1.0), random.Whole(from, to)); };
    for (int i = 0; i < 20000; ++i) {
        for (const double x :
             {sized(-1074, 1023), sized(-9, 4), std::floor(sized(0, 29)) * std::acos(0.0), 0.0, -0.0}) {
            ASSERT_TRUE(IsNext(Sine(x), SineOf(x, 0)) && IsNext(Cosine(x), SineOf(x, 1))) << x;
            for (const double y : {sized(-1074, 1023), x * sized(-9, 9), -0.0, HUGE_VAL, -HUGE_VAL}) {
                ASSERT_TRUE(IsNext(Direction(y, x), std::atan2(static_cast<long double>(y), x))) << y << ' ' << x;
                ASSERT_TRUE(IsNext(Direction(x, y), std::atan2(static_cast<long double>(x), y))) << x << ' ' << y;
            }
        }
    }
    EXPECT_EQ(Direction(HUGE_VAL, -HUGE_VAL), 3.0 * std::atan(1.0));
    EXPECT_TRUE(std::isnan(Sine(HUGE_VAL)) && std::isnan(Cosine(-HUGE_VAL)) && std::isnan(Direction(0.0, NAN)));
}
