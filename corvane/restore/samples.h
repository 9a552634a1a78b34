#pragma once

#include <cstddef>
#include <vector>

/// Stands before a loop whose rounds do not depend on each other, where the compiler cannot see that its rows of samples
/// lie apart.
#if defined(__clang__)
#define CORVANE_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define CORVANE_INDEPENDENT _Pragma("GCC ivdep")
#else
#define CORVANE_INDEPENDENT
#endif

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
