#pragma once

namespace corvane {

// Exact by the definition of the units since 2019: Bureau international des poids et mesures, The International System
// of Units, 9th edition, 2019, table 1.

inline constexpr double kSpeedOfLight = 299792458.0;         ///< in vacuum [m s-1]
inline constexpr double kPlanck = 6.62607015e-34;            ///< Planck constant [J s]
inline constexpr double kElementaryCharge = 1.602176634e-19; ///< [C], an electron volt in joule

} // namespace corvane
