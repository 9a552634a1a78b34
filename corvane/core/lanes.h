#pragma once

#include <cstddef>

namespace corvane {

/// So many transforms are made side by side: one for each lane of a processor's widest registers.
inline constexpr int kLanes = 16;

/// Whether a register holds all lanes, so that a pass comes by each line of the cache once: with many lines at a time,
/// a power of two apart, a second visit would find them gone.
#if defined(__AVX512F__)
inline constexpr bool kAreLanesARegister = true;
#else
inline constexpr bool kAreLanesARegister = false;
#endif

/// Complex numbers of many transforms: element k of lane l is (re, im)[k * kLanes + l].
struct Lanes {
    float* re;
    float* im;
};

inline Lanes operator+(Lanes lanes, std::ptrdiff_t floats)
{
    return {lanes.re + floats, lanes.im + floats};
}

} // namespace corvane
