#pragma once

#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane {

/// The colours of a mosaic's samples (0, 0), (1, 0), (0, 1), (1, 1), rows in the order of storage.
enum class BayerPattern { kRggb, kGrbg, kGbrg, kBggr };

/// "RGGB", "GRBG", "GBRG" or "BGGR".
CORVANE_API const char* NameOf(BayerPattern pattern);
/// The pattern of a name; nothing for other names.
CORVANE_API std::optional<BayerPattern> NamedBayerPattern(std::string_view name);

/// How the missing colours are made.
enum class DemosaicMethod {
    kBilinear,  ///< means of the nearest samples of a colour
    kLinear,    ///< these, with a fixed part of the detail that the pixel's own colour shows
    kEdgeAware, ///< along edges, not across them, with the detail that the other colours show
};

/// What the methods are called.
inline constexpr std::array<std::pair<const char*, DemosaicMethod>, 3> kDemosaicNames{
    {{"edge-aware", DemosaicMethod::kEdgeAware},
     {"linear", DemosaicMethod::kLinear},
     {"bilinear", DemosaicMethod::kBilinear}}};

/// So many rows above and below a row decide its colours.
constexpr int DemosaicMargin(DemosaicMethod method)
{
    return method == DemosaicMethod::kBilinear ? 1 : (method == DemosaicMethod::kLinear ? 2 : 6);
}

/// As many as any method needs.
inline constexpr int kDemosaicMargin = DemosaicMargin(DemosaicMethod::kEdgeAware);

/// Rows of a mosaic that are in memory.
struct MosaicRows {
    const float* rows; ///< sample (0, firstRow)
    int width;
    int height; ///< of the whole mosaic
    int firstRow;
    int rowCount; ///< in memory
};

/// Makes colours of the rows firstRow to before firstRow + rowCount of a mosaic; `r`, `g` and `b` take width x rowCount
/// samples. The rows and kDemosaicMargin rows on either side, as far as the mosaic has them, must be in memory; rows
/// that are not in the mosaic are left out. The result does not depend on how a mosaic is cut into calls.
///
/// - A sample of a pixel's own colour stays as it is. `kBilinear` makes the others means of the two or four nearest
///   samples of the colour.
/// - `kLinear` adds to these means what the pixel's own colour shows of detail: fixed parts of what it stands out from
///   its colour in 5 x 5 pixels (H. S. Malvar, L. He and R. Cutler, 2004, IEEE International Conference on Acoustics,
///   Speech and Signal Processing). The result is a linear function of the mosaic, so noise does not bias it.
/// - `kEdgeAware` makes green at red and blue pixels first: from the two neighbours in the row and from the two in the
///   column, each mean sharpened by half of what the pixel stands out from its own colour at a distance of two, times
///   the slope of that mean over that colour in a window of 3 x 3 pixels of the colour. The estimate in the row counts
///   by what changes along the column, and the other way round (after J. F. Hamilton and J. E. Adams, 1997, US patent
///   5,629,734). Then red is the mean of the nearest, plus what green stands out from its own mean over the same
///   pixels, times the slope of red over green in the surrounding 3 x 4, 4 x 3 or 4 x 4 pixels of red; blue likewise
///   (after D. Kiku, Y. Monno, M. Tanaka and M. Okutomi, 2013, IEEE International Conference on Image Processing). It
///   goes beyond these samples only as far as green there goes beyond its own, which bounds the dark places about hot
///   pixels and particle hits. Slopes are never negative; over a guide that is even, to a millionth of its size, they
///   are 0. So a red star gets nearly the same profile as a white one.
/// - A star as wide as three pixels or more keeps its flux in each colour to about 3 %, its centre to 0.02 pixels. Of
///   narrower ones too few red and blue pixels are lit to say: the flux errs to either side by where the centre lies,
///   of stars two pixels wide by up to a fifth.
/// - Edges mirror the mosaic about their pixels, which are not repeated, so that colours stay in step. Of one row or
///   column, where that cannot be, colours are made of what there is.
/// - NaN and infinities stay, in all three colours of their pixel alone: for others the nearest finite samples of
///   their colour in the row stand in. Where a row has none of a colour, pixels up to three rows away become NaN.
CORVANE_API void DemosaicRows(const MosaicRows& mosaic, BayerPattern pattern, DemosaicMethod method, int firstRow,
                              int rowCount, float* r, float* g, float* b);

/// Makes a colour image of plane 0 of a mosaic, as `DemosaicRows` does.
///
/// `colour` takes over the mosaic's record, reference points and progress window, with the levels of plane 0 in each of
/// its three planes. Blanks stay blank in the same way as NaN. The two may be one image. Reports "Making colours of the
/// mosaic...". Raises CMemoryException when there is no room; then nothing has changed.
CORVANE_API void Demosaic(const CStlImage& mosaic, BayerPattern pattern, DemosaicMethod method, CStlImage& colour,
                          const Run& run);

} // namespace corvane
