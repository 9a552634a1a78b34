#pragma once

#include <array>
#include <optional>

#include "corvane/platform/cstring.h"
#include "corvane/platform/matrix.h"

namespace corvane {

/// What a 2 x 2 linear transform of the pixel grid stands for; the code that `CImage::GetLTMtx` returns.
enum LinearTransformKind : int {
    kNoTransform = 0, ///< the image has no matrix
    kCdMatrix = 1,    ///< CDi_j: the matrix already holds the increments
    kPcMatrix = 2,    ///< PCi_j: a turn and a stretch, to be multiplied by the increments (CDELT)
};

/// The FITS world-coordinate keywords of one axis; an empty member means that the keyword is absent.
struct AxisCoordinates {
    std::optional<double> referencePixel; ///< CRPIX, 1-based pixel coordinate
    std::optional<double> increment;      ///< CDELT, physical units per pixel
    std::optional<double> referenceValue; ///< CRVAL, physical units
    std::optional<CString> type;          ///< CTYPE
    std::optional<CString> unit;          ///< CUNIT
};

/// The world coordinates of an image: how its pixel grid maps to the sky.
struct WorldCoordinates {
    std::array<AxisCoordinates, 3> axes;     ///< x, y and plane axis
    tagMATRIX2_2 matrix{1.0, 0.0, 0.0, 1.0}; ///< meaningful when matrixKind is not kNoTransform
    int matrixKind = kNoTransform;           ///< one of LinearTransformKind
    std::optional<int> dispersionAxis;       ///< DISPAXIS: 1 along x, 2 along y
};

} // namespace corvane
