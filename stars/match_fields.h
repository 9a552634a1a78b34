#pragma once

#include <string>
#include <vector>

#include "corvane/core/alignment.h"
#include "corvane/core/point.h"
#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "stars/find_stars.h"

namespace corvane::stars {

/// How a frame lies on a reference: an `Alignment` of this shift, turn and scale about the frame's standard centre maps
/// positions in the reference to where the frame has them. All are 0, and 1 for the scale, without a match.
struct FieldMatch {
    double dx = 0.0;         ///< shift to the right [pixels]
    double dy = 0.0;         ///< shift downwards [pixels]
    double angle = 0.0;      ///< turn, clockwise where the first row is the top [degrees, -180..180]
    double scale = 1.0;      ///< distances in the frame over those in the reference; 1 unless it was asked for
    bool isMirrored = false; ///< the rest holds for the frame flipped left to right about its centre's column
    double residual = 0.0;   ///< root mean square distance of the matched stars [pixels of the frame]
    int stars = 0;           ///< matched
    std::string reason{};    ///< why there is no match; empty for a match that is certain
};

/// Where the stars are that fields are matched by.
std::vector<Position> Positions(const std::vector<FieldStar>& stars, bool withSaturated);

/// What a match may contain besides a shift and a turn.
struct MatchOptions {
    bool scale = false;  ///< look for another scale, too, from a tenth to ten times
    bool mirror = false; ///< look for a mirrored field, too; otherwise it is no match
};

/// Finds the shift, turn and scale that place a frame onto a reference from the stars of both, the brightest first.
/// `centre` is the standard centre of the frame.
///
/// Any shift and any angle is found as long as enough stars are common; errors of their positions may be some tenths of
/// a pixel, and a distortion may grow to 3 pixels at the borders. Triangles of neighbouring stars (`MakePatterns`)
/// among the brightest 240 give guesses, guesses are judged by all of these stars (`FieldConsensus`), and the best is
/// fitted by least squares to all stars, leaving out what lies farther off than 2.5 times their residual (`FitStars`).
/// Stars that are not usable are left out, but where 12 or fewer are left saturated ones may help.
///
/// Methods: triangles of E. J. Groth 1986, Astronomical Journal 91, 1244; consensus of M. A. Fischler and R. C. Bolles
/// 1981, Communications of the ACM 24, 381; judgement of L. Moisan and B. Stival 2004, International Journal of
/// Computer Vision 57, 201; least squares of S. Umeyama 1991, IEEE Transactions on Pattern Analysis and Machine
/// Intelligence 13, 376.
///
/// A match is certain when fields that have nothing in common agree as well in fewer than one of a million pairs
/// (`MatchChance`). For that, three stars suffice when they lie in frames of thousands of pixels and agree within a
/// quarter of a pixel, four as a rule, six with another scale, and about a tenth of two fields of 200. Stars on one
/// line count as two of them. A pattern that fits in several places, as a lattice does, is no match. The same lists
/// give the same result on every machine, but for the last bits of the angle.
CORVANE_VISIBLE FieldMatch MatchFields(const std::vector<FieldStar>& reference, const std::vector<FieldStar>& frame,
                                       const CfPoint& centre, const MatchOptions& options = {}, const Run& run = {});

} // namespace corvane::stars
