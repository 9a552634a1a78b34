#pragma once

#include "corvane/platform/export.h"
#include "corvane/platform/matrix.h"
#include "io/frame.h"

namespace corvane::io {

/// Where a step takes the pixels: the centre of pixel (x, y), counted from 0, comes to lie at
/// (linear.m11 * x + linear.m12 * y + x0, linear.m21 * x + linear.m22 * y + y0).
struct PixelMap {
    tagMATRIX2_2 linear{1.0, 0.0, 0.0, 1.0};
    double x0 = 0.0;
    double y0 = 0.0;
};

/// Gives `result` the world coordinates of the frame's image, taken along with the pixels: reference pixel, and matrix
/// or increments. An image without coordinates gets none. In the frame's header, which is to describe the result, the
/// coefficients of a SIP distortion (D. L. Shupe et al., ADASS XIV, 2005) follow, and the turn that older headers state
/// as CROTA becomes part of the matrix.
CORVANE_VISIBLE void CarryCoordinates(const PixelMap& map, Frame& frame, CImage& result);

/// Puts the cards that tell where pixels lie on the sky in a header in place of those that another one has: axes, their
/// matrix, equinox and frame, and what bends them. None when there are none.
CORVANE_VISIBLE void TakeCoordinates(const Header& from, Header& to);

} // namespace corvane::io
