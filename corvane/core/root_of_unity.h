#pragma once

#include <cstdint>

namespace corvane {

/// A complex number in double precision.
struct Root {
    double re;
    double im;
};

/// e to the power -2 pi i k / n, within 2 units in the last place, in plain arithmetic: the system's sine and cosine
/// differ from one machine to the next. k in 0..n - 1, n in 1..2^59.
constexpr Root RootOfUnity(std::int64_t k, std::int64_t n)
{
    constexpr double kQuarterPi = 0x1.921fb54442d18p-1;
    constexpr int kTerms = 10; // of angles up to pi / 4 the next one is below 1e-20

    const std::int64_t octant = 8 * k / n;
    const std::int64_t rest = 8 * k % n;
    const bool isOdd = octant % 2 != 0; // counted back from the next axis or diagonal
    const double angle = static_cast<double>(isOdd ? n - rest : rest) / static_cast<double>(n) * kQuarterPi;
    const double square = angle * angle;
    double cosine = 1.0;
    double sine = 1.0;
    for (int i = kTerms; i > 0; --i) {
        cosine = 1.0 - square * cosine / ((2 * i - 1) * (2 * i));
        sine = 1.0 - square * sine / ((2 * i) * (2 * i + 1));
    }
    sine *= angle;
    const bool isSwapped = (octant + 1) / 2 % 2 != 0; // nearer to the imaginary axis
    const double x = isSwapped ? sine : cosine;
    const double y = isSwapped ? cosine : sine;
    const bool isLeft = octant >= 2 && octant < 6;
    const bool isUpper = octant < 4;
    return {isLeft ? -x : x, isUpper ? -y : y};
}

} // namespace corvane
