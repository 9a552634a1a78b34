#pragma once

#include <string>

#include "corvane/platform/export.h"

namespace corvane::io {

/// A profile by which programs show colours, or grey of one plane, as sRGB (IEC 61966-2-1): of the International Color
/// Consortium's form, version 2 (ICC.1:2001-04), with its curve in 1024 steps.
CORVANE_VISIBLE const std::string& SrgbProfile(int planes);

} // namespace corvane::io
