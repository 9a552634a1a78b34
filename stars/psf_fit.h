#pragma once

#include <cstddef>
#include <limits>
#include <optional>
#include <vector>

#include "stars/psf_profile.h"

namespace corvane::stars {

/// A star whose samples are fitted.
struct PsfStar {
    int reach = 0; ///< of the square about its middle: -reach..reach [pixels]
    std::vector<double>
        values{};       ///< of the square, row by row, above the sky [raw units]; NaN where it is not the star's
    double noise = 0.0; ///< standard deviation of the sky [raw units]
    double peak = 0.0;  ///< height of its profile above its sky [raw units]
    double x = 0.0;     ///< its middle in the square [pixels]
    double y = 0.0;
    double sky = 0.0;      ///< what is left of the sky [raw units]
    double variance = 1.0; ///< by which it counts: the sky's, and a hundredth of the peak by which stars differ

    int Side() const { return 2 * reach + 1; }
    std::size_t Index(int dx, int dy) const
    {
        return static_cast<std::size_t>(dy + reach) * static_cast<std::size_t>(Side()) +
               static_cast<std::size_t>(dx + reach);
    }
    double At(int dx, int dy) const { return values[Index(dx, dy)]; }
    void LeaveOut(int dx, int dy) { values[Index(dx, dy)] = std::numeric_limits<double>::quiet_NaN(); }
    /// What a profile leaves of a sample.
    double RestAt(int dx, int dy, const PsfProfile& profile) const
    {
        return At(dx, dy) - sky - peak * profile.At(dx - x, dy - y);
    }
};

/// The profile that stars have in common.
struct PsfFit {
    PsfProfile profile;
    PsfCovariance covariance{};
    double residual = 0.0; ///< median over the stars of the root mean square of what is left, over the peak
};

/// How a profile is fitted.
struct PsfFitting {
    bool isMoffat = false; ///< beta, too
    double radius = 0.0;   ///< about the middles of stars, within which samples count [pixels]
    int threads = 1;
};

/// Fits one profile to all stars at once by least squares, each with a height, a place and a sky of its own, from a
/// guess on. Stars and samples that the profile leaves too much of are left out; the stars become what was found.
/// Nothing where it does not settle or no star is left.
///
/// K. Levenberg, A method for the solution of certain non-linear problems in least squares, Quarterly of Applied
/// Mathematics 2, 164, 1944. The unknowns of each star are taken out of its equations before those are added up.
std::optional<PsfFit> FitPsf(std::vector<PsfStar>& stars, const PsfProfile& guess, const PsfFitting& fitting);

} // namespace corvane::stars
