#pragma once

#include <string>

namespace corvane {

/// What a CTYPE means.
struct AxisType {
    std::string name; ///< in words, or the CTYPE itself when it is not known
    int kind;         ///< one of AxisKind
    const char* unit; ///< what the FITS standard assumes without CUNIT; empty for none
    bool isLinear;    ///< no algorithm code says otherwise
};

/// Takes a CTYPE apart, in capitals or not: `RA---TAN`, `WAVE`, `FREQ-LSR`, `LAMBDA`.
///
/// Names of spectral axes are those of E. W. Greisen et al., Representations of spectral coordinates in FITS, A&A 446,
/// 2006; of celestial axes those of M. R. Calabretta, E. W. Greisen, Representations of celestial coordinates in FITS,
/// A&A 395, 2002. Some older ones are known too.
AxisType ParseAxisType(const char* text);

/// The kind of a spectral axis whose type does not tell, by its unit without prefix, as `SplitUnit` gives it.
int SpectralKindOfUnit(const std::string& base);

} // namespace corvane
