#pragma once

#include <cstddef>

namespace corvane {

/// So many transforms are made side by side: one for each lane of a processor's widest registers.
inline constexpr int kLanes = 16;

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
