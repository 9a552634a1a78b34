#pragma once

#include <string>
#include <vector>

#include "corvane/combine/matching.h"
#include "corvane/core/aligned_row.h"
#include "stack/calibrate/light_frames.h"
#include "stack/options.h"
#include "stack/patch.h"
#include "stack/stars.h"

namespace corvane::stack {

/// A frame's place against the reference, or why there is none.
struct Match {
    double dx = 0.0; ///< shift that places the frame onto the reference [pixels, tenths]
    double dy = 0.0;
    double correlation = 0.0;
    std::string reason; ///< empty for a match that is certain
};

/// Finds a patch of the reference frame in other frames, to a tenth of a pixel.
///
/// The search is that of `CImgMatching`, on windows from which hits and the sky were taken, so that neither what stays
/// put on the sensor nor a change of the sky draws the match away. A match is believed only if it
/// - does not lie at the edge of the search range,
/// - correlates with the patch by 0.7 or more (Pearson's coefficient over all planes, without the samples that differ
///   by more than 0.3 of the star's peak),
/// - is between a third of and three times as bright, and stands 8 sigma above the noise,
/// - is a whole star, of which the centroid agrees with the match to 0.25 pixels: nothing else lies on it,
/// - and is confirmed by other stars: of the brightest of the reference within 256 pixels, at least half of those that
///   the frame should show are in their places, and three of them or more (two where the reference has three or four).
///
/// If they do not confirm it, another star was found, which is erased from the window for another attempt. Where the
/// reference has no more than two such stars, a correlation of 0.9, nearly the same brightness and that there is no
/// other such match stand in for them.
class ShiftRegistration {
public:
    /// Takes the patch about `centre` from the calibrated reference frame. `stars` are those of the reference.
    ShiftRegistration(const CStlImage& reference, PixelPlace centre, const std::vector<Star>& stars,
                      const Options& options);

    /// The rows of a frame that `Find` needs.
    RowSpan Rows() const { return rows_; }
    /// Finds the patch in a frame of which those rows are given, calibrated.
    Match Find(const CStlImage& rows) const;

private:
    /// Where the patch was found in a window, with so many times the brightness.
    struct Found {
        Match match;
        double x;
        double y;
        double gain;
        double drift; ///< of the star's centroid from its place in the patch [pixels]
    };

    /// Other bright stars of the reference that a frame should hold, and those that it does.
    struct Witnesses {
        int expected = 0;
        int present = 0;
    };

    CStlImage Cut(const CStlImage& rows, int firstRow) const;
    Found Search(CImgMatching& window, const Sky& sky) const;
    /// Why a match is not to be believed, by itself; empty if it is.
    std::string Judge(const Found& found, const Sky& sky) const;
    bool IsWhole(const Match& match) const;
    std::string JudgeWitnesses(const Found& found, const Witnesses& witnesses) const;
    Witnesses CountWitnesses(const CStlImage& rows, const Found& found, const Sky& sky) const;
    bool IsLone() const;
    void Erase(CStlImage& window, double x, double y) const;
    void ChooseWitnesses(const std::vector<Star>& stars, const Sky& sky);
    int Distance(const Star& other) const;

    int width_; ///< of the frames
    int size_;
    int search_;
    int left_; ///< of the patch in the reference frame
    int top_;
    RowSpan rows_;
    Patch patch_;
    std::vector<Star> witnesses_;
};

} // namespace corvane::stack
