#pragma once

#include <cstddef>

namespace corvane::io {

/// @name Sizes of a FITS file
/// @{
inline constexpr std::size_t kBlockBytes = 2880;
inline constexpr std::size_t kCardLength = 80;
inline constexpr std::size_t kKeywordLength = 8;
/// @}

} // namespace corvane::io
