#include "bench/support/check.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace corvane::bench {

void Require(bool holds, const std::string& what)
{
    if (!holds) {
        throw std::runtime_error("wrong result: " + what);
    }
}

bool IsClose(float a, float b)
{
    return a == b || std::nextafter(a, b) == b || (std::isnan(a) && std::isnan(b));
}

void RequireClose(float got, float expected, int x, int y, int plane)
{
    if (!IsClose(got, expected)) {
        char text[128];
        std::snprintf(text, sizeof text, "sample (%d, %d) of plane %d is %.9g, expected %.9g", x, y, plane,
                      static_cast<double>(got), static_cast<double>(expected));
        Require(false, text);
    }
}

} // namespace corvane::bench
