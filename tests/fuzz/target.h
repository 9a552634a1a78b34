#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/// What a fuzz target does with an input. Errors that a user would be told are fine; crashes, hangs and findings of the
/// sanitizers are not. The name is the one that coverage-guided fuzzers call.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Good inputs to begin from.
std::vector<std::string> Seeds();
