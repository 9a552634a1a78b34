#pragma once

#include <cstdint>
#include <string>

namespace corvane::cli {

/// An amount of memory in bytes; `name` tells where the text stands. Throws UsageError for less than 1M, and for what
/// is no amount.
std::uint64_t ReadMemorySize(const std::string& name, const std::string& text);

/// Throws UsageError when CORVANE_MEMORY is no amount of memory: the library would take its default without a word.
void CheckMemoryVariable();

} // namespace corvane::cli
