#pragma once

namespace corvane {

/// Brightness of a colour, added in the order red, green, blue. Some readers add it in another order of their own, which
/// their results depend on.
constexpr double BrightnessOf(double r, double g, double b)
{
    return 0.299 * r + 0.587 * g + 0.114 * b;
}

} // namespace corvane
