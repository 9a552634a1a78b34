#pragma once

#include <string>
#include <vector>

#include "catalogue/operation.h"
#include "catalogue/placement.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// @name Ranges and defaults of the search for a star by `shift`
/// @{
inline constexpr int kMinPatch = 9;       ///< smallest patch [pixels]
inline constexpr int kMaxPatch = 255;     ///< largest patch [pixels]
inline constexpr int kDefaultPatch = 33;  ///< [pixels]
inline constexpr int kMinSearch = 4;      ///< smallest range [pixels]
inline constexpr int kDefaultSearch = 64; ///< [pixels]
/// @}

/// What is said of the place of one frame.
struct FramePlace {
    std::vector<double> shift{};  ///< to the right and down [pixels], on top of what stars say; none for no shift
    double angle = 0.0;           ///< turn [degrees, clockwise where the first row is the top], also on top
    std::vector<double> points{}; ///< where one star or two are, to within half a box: X,Y or X1,Y1,X2,Y2
};

/// How several frames are brought onto the grid of the first: by their stars, by numbers alone, by a star that is
/// looked for, or by stars that are pointed at in each.
///
/// `stars` matches the stars of each frame with those of the first, in one plane of each: frames may be shifted, turned
/// and of another scale. The star of `shift` is found to a tenth of a pixel by what lies about it (`stars::Patch`). Sky
/// and brightness may differ; it should be the brightest within patch and range, and wider than two pixels.
///
/// Rows count in the file's order, columns and rows from 0 in the middle of the first sample.
struct Registration {
    std::string align = "none";       ///< stars, none, shift or points
    std::vector<FramePlace> frames{}; ///< one for each frame; the first one's stars are those of the others
    std::vector<double> at{};         ///< shift: X,Y, about where the star is in the first frame
    int size = kDefaultPatch;         ///< shift: side of the square about it that is looked for [pixels, 9..255]
    int range = kDefaultSearch;       ///< shift: how far, half of it either way [pixels, 4..1024]
    int box = kDefaultBox;            ///< points: side of the square in which a centroid is taken [pixels, 5..255]
};

/// The parameters of a registration of frames that are called so, and the operation's own after them.
std::vector<Parameter> RegistrationParameters(const std::vector<Parameter>& own, const std::vector<std::string>& names);

/// The parameter `align` alone, for operations whose frames are matched by their stars or lie as they are to lie.
Parameter StarsOrNone(const std::string& first);

/// How frames are to be aligned: as was said, or else by their stars, unless a place of one is given by hand.
std::string AlignmentOf(const Arguments& arguments, std::size_t frames);

/// Throws Error for values that do not go together.
void CheckRegistration(const Arguments& arguments, std::size_t frames);

Registration RegistrationOf(const Arguments& arguments, std::size_t frames);

/// What is only aligned as `StarsOrNone` says.
Registration RegistrationBy(const std::string& align, std::size_t frames);

/// Finds where each frame comes to lie on the first one's grid, which the first itself may be moved against by hand.
/// Frames of the other order of rows are turned upside down first; their points are those of their files.
/// Stars are looked for in the planes given, one for each frame. Every frame's standard centre is set: its star, or
/// without one its middle. Throws Error where a star is not to be found: it lies outside of the first frame, a frame
/// shows none there, or the match lies at the edge of the range; and where stars do not match.
std::vector<Fit> FitFrames(std::vector<io::Frame>& frames, const std::vector<int>& planes,
                           const Registration& registration, const Run& run);

/// Where places of the first frame lie in another one that has such a fit.
Mapping MappingOf(const Fit& fit, const io::Frame& frame);

/// Brings a frame whose stars were matched onto the grid of the first; its planes have these values where it is not.
/// Returns the shift and the turn that it is still to be placed with: those by hand, or all of another frame.
Fit BringOnto(const io::Frame& first, io::Frame& frame, const Fit& fit, const FramePlace& byHand,
              const std::vector<double>& outside, const Run& run);

} // namespace corvane::catalogue
