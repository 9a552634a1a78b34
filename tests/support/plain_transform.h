#pragma once

#include <complex>
#include <numbers>
#include <vector>

namespace corvane::test {

using Number = std::complex<double>;
using NumberRows = std::vector<std::vector<Number>>;

/// The Fourier sum in double precision, one axis after the other; sign -1 is forward, 1 back, neither scaled.
inline NumberRows PlainTransform(NumberRows rows, double sign)
{
    for (int axis = 0; axis < 2; ++axis) { // each time the result is turned over, rows to columns
        const std::size_t n = rows[0].size();
        NumberRows turned(n, std::vector<Number>(rows.size()));
        for (std::size_t y = 0; y < rows.size(); ++y) {
            for (std::size_t i = 0; i < n * n; ++i) {
                const double turns = static_cast<double>(i / n * (i % n) % n) / static_cast<double>(n);
                turned[i / n][y] += rows[y][i % n] * std::polar(1.0, sign * 2.0 * std::numbers::pi * turns);
            }
        }
        rows = turned;
    }
    return rows;
}

} // namespace corvane::test
