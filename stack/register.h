#pragma once

#include <string>
#include <vector>

#include "corvane/combine/matching.h"
#include "corvane/core/aligned_row.h"
#include "stack/options.h"
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
/// The search is that of `CImgMatching`, on windows from which hot pixels and the sky were taken, so that neither what
/// stays put on the sensor nor a change of the sky draws the match away. A match is believed only if it
/// - does not lie at the edge of the search range,
/// - correlates with the patch by 0.7 or more (Pearson's coefficient over all planes),
/// - is between a third of and three times as bright, and stands 5 sigma above the noise,
/// - and, where the rows at hand hold two or more other bright stars of the reference, has half of them in their
///   places; if not, another star was found, which is erased from the window for another attempt.
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
    };

    CStlImage Cut(const CStlImage& rows, int firstRow) const;
    /// Why a match is not to be believed, by itself; empty if it is.
    std::string Judge(const Match& match, double gain, const Sky& sky) const;
    Found Search(CImgMatching& window, const Sky& sky) const;
    /// Other bright stars of the reference that a frame should hold, and those that it does.
    struct Witnesses {
        int expected = 0;
        int present = 0;

        bool Disagree() const { return expected >= 2 && 2 * present < expected; }
        std::string Text() const;
    };
    Witnesses CountWitnesses(const CStlImage& rows, const Match& match, double gain, const Sky& sky) const;
    void Erase(CStlImage& window, double x, double y) const;
    void ChooseWitnesses(PixelPlace centre, const std::vector<Star>& stars);

    int size_;
    int search_;
    int left_; ///< of the patch in the reference frame
    int top_;
    RowSpan rows_;
    double offset_ = 0.0; ///< level of the sky in windows and patch, so high that their means hardly differ
    double peak_ = 0.0;   ///< of the patch above the sky, in the plane of the stars
    int peakX_ = 0;       ///< its place in the patch
    int peakY_ = 0;
    CStlImage patch_;
    std::vector<Star> witnesses_;
};

/// The plane in which stars are looked for: green of three.
inline int StarPlane(const CImage& image)
{
    return image.GetPlanes() > 1 ? 1 : 0;
}

} // namespace corvane::stack
