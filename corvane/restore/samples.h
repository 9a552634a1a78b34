#pragma once

#include <cstddef>
#include <vector>

#include "corvane/core/independent.h"

namespace corvane {

/// The samples of a grid.
using Samples = std::vector<float>;

/// out[i] = map(i) for every sample. The map may read sample i of `out`, but no other one.
template <class Map>
void Fill(Samples& out, Map map)
{
    float* to = out.data();
    const std::size_t count = out.size();
    CORVANE_INDEPENDENT
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(map(i));
    }
}

} // namespace corvane
