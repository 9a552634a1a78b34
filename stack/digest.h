#pragma once

#include <string>

namespace corvane::stack {

/// A number of 64 bits for a text (FNV-1a: G. Fowler, L. C. Noll and K.-P. Vo, 1991), as 16 hexadecimal digits.
std::string DigestOf(const std::string& text);

} // namespace corvane::stack
