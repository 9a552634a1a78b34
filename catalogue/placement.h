#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/operation.h"
#include "corvane/core/mapping.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// @name Ranges and defaults of a placement
/// @{
inline constexpr double kMaxShift = 1e6;  ///< [pixels]
inline constexpr double kMaxTurn = 360.0; ///< [degrees]
inline constexpr int kMinBox = 5;         ///< smallest box [pixels]
inline constexpr int kMaxBox = 255;       ///< largest box [pixels]
inline constexpr int kDefaultBox = 21;    ///< [pixels]
/// @}

/// How a second image is brought onto a first one: by numbers, by stars that both have, or both.
///
/// Rows count in the file's order, columns and rows from 0 in the middle of the first sample.
struct Placement {
    double dx = 0.0;    ///< shift to the right [pixels], on top of what the stars say
    double dy = 0.0;    ///< shift downwards [pixels], on top of what the stars say
    double angle = 0.0; ///< turn [degrees, clockwise where the first row is the top], on top of what the stars say
    /// @name Where one or two stars are, to within half a box: X,Y or X1,Y1,X2,Y2; none for no alignment
    /// @{
    std::vector<double> points{};       ///< in the first image
    std::vector<double> secondPoints{}; ///< the same stars in the second image
    /// @}
    int box = kDefaultBox; ///< side of the square in which a star's centroid is taken [pixels, 5..255]

    bool IsByStars() const { return !points.empty(); }
};

/// Where the second image comes to lie on the first one, turned about its standard centre.
struct Fit {
    double dx;
    double dy;
    double angle;
    int stars; ///< that it was found by: 0, 1 for a shift, 2 for a shift and a turn, more where they were matched
    double scale = 1.0;           ///< its pixels to one of the first image
    bool isBent = false;          ///< the map is more than that
    std::optional<Mapping> map{}; ///< from places in the first image to those in the second, of matched stars
};

/// @name Parameters of placements
/// @{
Parameter PointsParameter(const std::string& name, const std::string& summary);
Parameter AngleParameter(const std::string& name, const std::string& summary);
Parameter BoxParameter();
/// @}

/// The operation's own parameters and those of a placement; `secondPoints` is the one for stars in the second image,
/// which is called `second`.
std::vector<Parameter> PlacementParameters(std::vector<Parameter> own, const char* secondPoints,
                                           const std::string& first, const std::string& second);

/// Throws Error for points that do not belong together.
void CheckPlacement(const Arguments& arguments, const char* secondPoints);

Placement PlacementOf(const Arguments& arguments, const char* secondPoints);

/// Finds the fit and sets the standard centre of the second image, about which it is to be turned: its first star, or
/// without stars its middle.
///
/// Stars are refined to their centroids and become the reference points of their images. The first star of both comes
/// to lie in one place; the turn is that of the line to the second, from the centroids as they are. Throws Error when a
/// point lies outside of its image, when two stars are closer than a box or not equally far apart in both images.
Fit FitOnto(io::Frame& first, io::Frame& second, const Placement& placement);

/// The fit in words for a person and for HISTORY.
CORVANE_VISIBLE std::string ToText(const Fit& fit);

/// Fits as numbers: dx, dy, angle, stars, scale.
Table TableOf(const std::vector<Fit>& fits);
/// Fits of such a table.
CORVANE_VISIBLE std::vector<Fit> FitsOf(const Table& table);

/// @name What an operation on two images makes: an image, and where the second lies on the first
/// HISTORY tells what stars said.
/// @{
std::vector<Output> PairOutputs();
Outputs PairOutputs(io::Frame& image, const Fit& fit);
/// @}

} // namespace corvane::catalogue
