#pragma once

#include <cstddef>

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
