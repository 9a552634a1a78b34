#pragma once

#include <cstdint>
#include <vector>

namespace corvane::io::tiles {

/// The coefficients of an H-transform, a two-dimensional Haar transform of integers: sums in the top left quarter,
/// which are transformed again; differences of rows below, of columns to the right, of both in the last quarter.
/// Numbers within 2^54.
struct HTransform {
    std::size_t rows;
    std::size_t columns;
    std::vector<std::int64_t> values;
};

/// Turns coefficients back into samples, exactly if they were not quantised (Fritze, Lasker et al.; White 1992). With a
/// quantum above 1, smoothing moves differences by at most half of it towards what the neighbours' sums suggest, which
/// takes the blocks out of flat parts; 0 does not smooth.
void InvertHTransform(HTransform& transform, std::int64_t smoothingQuantum);

} // namespace corvane::io::tiles
