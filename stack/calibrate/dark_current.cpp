#include "stack/calibrate/dark_current.h"

#include <cmath>

#include "corvane/core/exponential.h"

namespace corvane::stack {

namespace {

constexpr double kColdest = -150.0; // [degrees Celsius]
constexpr double kHottest = 100.0;
constexpr double kBoltzmann = 8.617333e-5; // [eV / K]

bool IsOfSensor(double celsius)
{
    return celsius >= kColdest && celsius <= kHottest;
}

/// Half of the band gap over kT.
double Exponent(double kelvin)
{
    const double gap = 1.1557 - 7.021e-4 * kelvin * kelvin / (1108.0 + kelvin); // [eV]
    return gap / (2.0 * kBoltzmann * kelvin);
}

} // namespace

bool TemperaturesMatch(const std::optional<double>& light, const std::optional<double>& dark)
{
    return !light || !dark || std::fabs(*light - *dark) <= kTemperatureTolerance;
}

double DarkCurrentRatio(double light, double dark)
{
    constexpr double kFreezing = 273.15;
    if (!IsOfSensor(light) || !IsOfSensor(dark)) {
        return 1.0;
    }
    const double ratio = (light + kFreezing) / (dark + kFreezing);
    return ratio * std::sqrt(ratio) * Exp(Exponent(dark + kFreezing) - Exponent(light + kFreezing));
}

} // namespace corvane::stack
