#pragma once

#include <vector>

#include "corvane/platform/export.h"

namespace corvane::stars {

/// Sorts samples, none of which is NaN, in ascending order; a zero loses its sign. Bytes are sorted one after the
/// other, the lowest first: no step depends on a comparison, so that a few hundred samples take a quarter of the usual
/// time.
CORVANE_VISIBLE void SortSamples(std::vector<float>& samples);

} // namespace corvane::stars
