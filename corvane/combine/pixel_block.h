#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "corvane/combine/sorting_network.h"

namespace corvane {

// Pixels that are sorted together: enough for a few vectors of any processor, few enough that 200 frames stay in the
// nearest cache.
inline constexpr int kColumns = 16;

/// The values of all frames at a block of pixels: frame after frame, `kColumns` each.
template <class T>
struct Block {
    T* values;
    int frames;

    T* Row(int i) const { return values + static_cast<std::ptrdiff_t>(i) * kColumns; }

    void Apply(const std::vector<Exchange>& network) const
    {
        for (const Exchange& exchange : network) {
            Order(Row(exchange.low), Row(exchange.high));
        }
    }

private:
    static void Order(T* __restrict low, T* __restrict high)
    {
        for (int k = 0; k < kColumns; ++k) {
            const T a = low[k];
            const T b = high[k];
            low[k] = std::min(a, b);
            high[k] = std::max(a, b);
        }
    }
};

/// Every pixel of a block has as many values as there are frames.
struct AllFrames {
    int frames;

    int Of(int) const { return frames; }
    static bool Has(int, int) { return true; }
};

/// Each pixel of a block has a number of values of its own, which come first once they are sorted.
struct SomeFrames {
    const int* count;

    int Of(int k) const { return count[k]; }
    bool Has(int i, int k) const { return i < count[k]; }
};

/// The values of a block of pixels in ascending order. Those that frames lack are infinite, behind the others.
struct SortedBlock {
    Block<double> values;
    const double* byFrame; ///< the same as the frames have them; for statistics that ask for it
    const int* count;      ///< how many values each pixel has
    bool isWhole;          ///< each has one of every frame

    /// Calls visit with the counts, as those of all frames where they are.
    template <class Visit>
    void WithCount(Visit visit) const
    {
        isWhole ? visit(AllFrames{values.frames}) : visit(SomeFrames{count});
    }
};

} // namespace corvane
