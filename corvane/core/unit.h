#pragma once

#include <string>
#include <string_view>

namespace corvane {

/// A unit without its prefix.
struct SplitUnit {
    double factor = 0.0; ///< what a value is to be multiplied by to be in `base`; 0 for a unit that is not known
    std::string base;
};

/// Takes the SI prefix off a unit as the FITS standard 4.0 writes it (tables 3 to 5): "nm" is 1e-9 "m".
///
/// One unit, with a whole power of -9 to 9 in any of the standard's forms, of which the base has the shortest: "cm-1",
/// "cm**-1", "cm^(-1)", "1/cm" and "/cm" are 100 "m-1". Prefixes go from y (1e-24) to Y (1e24) and only before units
/// that take one: "Pa", "cd", "min" and "h" have none. Common names outside of the standard are known: "angstroms",
/// "micron", "HZ". Units made of several ("km/s") are not known.
SplitUnit SplitPrefix(std::string_view text);

} // namespace corvane
