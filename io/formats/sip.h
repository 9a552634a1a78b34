#pragma once

#include "corvane/platform/matrix.h"
#include "io/header.h"

namespace corvane::io {

/// Takes the SIP distortion of a header (A_i_j and B_i_j; AP_i_j and BP_i_j; D. L. Shupe et al., ADASS XIV, 2005) along
/// with pixels whose distances from the reference pixel are multiplied by `linear`, the inverse of `back`. The
/// coefficients are polynomials in these distances; their order [0..9] stays. Without them nothing happens.
void CarryDistortion(const tagMATRIX2_2& linear, const tagMATRIX2_2& back, Header& header);

} // namespace corvane::io
