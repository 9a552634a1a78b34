#pragma once

#include "catalogue/operation.h"

namespace corvane::catalogue {

/// @name Steps that make colours true: of the sky, of stars, and of green
/// @{
Operation NeutralSky();
Operation WhiteBalance();
Operation TakeOffGreen();
/// @}

} // namespace corvane::catalogue
