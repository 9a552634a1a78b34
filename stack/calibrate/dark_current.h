#pragma once

#include <optional>

namespace corvane::stack {

inline constexpr double kTemperatureTolerance = 2.0; ///< within which darks serve as they are [K]

/// True for temperatures within 2 K of each other, or of which one is not known.
bool TemperaturesMatch(const std::optional<double>& light, const std::optional<double>& dark);

/// Dark current of a silicon sensor at one temperature, over that at another [degrees Celsius]: it goes by
/// T^1.5 exp(-E / 2kT), with the band gap E (J. R. Janesick, Scientific Charge-Coupled Devices, 2001), and doubles with
/// 6.6 K about -10 degrees. 1 for temperatures that no sensor has.
double DarkCurrentRatio(double light, double dark);

} // namespace corvane::stack
