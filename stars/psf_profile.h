#pragma once

#include <array>
#include <vector>

namespace corvane::stars {

/// A number that was measured, and the standard deviation of its error.
struct Measured {
    double value = 0.0;
    double error = 0.0;
};

/// What a star of one height looks like: an elliptical Gaussian, or the profile (1 + r^2)^-beta of A. F. J. Moffat,
/// Astronomy and Astrophysics 3, 455 (1969). Both are written by the ellipse at half of the height, so that the one is
/// the limit of the other for 1 / beta = 0. Values are those of samples at their middles: the pixel's own width is part
/// of them.
struct PsfProfile {
    /// @name The half: xx dx^2 + 2 xy dx dy + yy dy^2 = 1 [1 / pixels^2]
    /// @{
    double xx = 1.0;
    double xy = 0.0;
    double yy = 1.0;
    /// @}
    double perBeta = 0.0; ///< 1 / beta; 0 for a Gaussian

    /// The value at a distance from the middle, where it is 1.
    double At(double dx, double dy) const;
};

/// A value of a profile, and how it changes: with the left side of the half's equation, and with 1 / beta.
struct PsfSlopes {
    double value;
    double byHalf;
    double byPerBeta;
};

/// What profiles of one beta are by the left side of the half's equation.
class PsfCurve {
public:
    /// Of 1 / beta; 0 for a Gaussian.
    explicit PsfCurve(double perBeta);

    PsfSlopes At(double half) const;

private:
    double perBeta_;
    double atHalf_; ///< 2^(1 / beta) - 1
};

/// The widths of a profile.
struct PsfWidths {
    Measured major; ///< full width at half maximum along the longest axis [pixels]
    Measured minor; ///< the same across [pixels]
    Measured angle; ///< of the longest axis, from the direction of columns towards that of rows [degrees, -90..90]
    Measured beta;  ///< 0 for a Gaussian
};

/// How the errors of xx, xy, yy and 1 / beta go together.
using PsfCovariance = std::array<std::array<double, 4>, 4>;

/// The samples of a point-spread function, row by row: size x size about (size / 2, size / 2), their sum 1.
using PsfSamples = std::vector<float>;

PsfWidths WidthsOf(const PsfProfile& profile, const PsfCovariance& covariance);

} // namespace corvane::stars
