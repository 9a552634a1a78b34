#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "corvane/platform/export.h"
#include "stack/combine/combine.h"

namespace corvane::stack {

inline constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(); ///< what a frame does not have

/// How a frame that is placed on the reference lies on a grid.
CORVANE_VISIBLE Mapping OnGrid(const Mapping& mapping, const Grid& grid);

/// What the frames count for.
std::vector<double> WeightsOf(const std::vector<Placement>& frames);

/// Which frames have a part in the result: of a mean, those that count for something.
std::vector<char> TakingPart(const CombinePlan& plan);

/// What a plan may take of the memory that the budget leaves [bytes].
std::uint64_t MemoryFor(const CombinePlan& plan);

/// Turns the frame's own blanks in rows of all planes into another value.
void ReplaceBlanks(const FrameFacts& facts, float value, int rowCount, float* samples, std::ptrdiff_t planeStride);

/// Brings samples of a stretch that are valid to the level of the reference.
void Normalise(const Placement& placement, const Grid& grid, const Stretch& stretch, double* values, const int* valid);

} // namespace corvane::stack
