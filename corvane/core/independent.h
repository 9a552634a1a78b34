#pragma once

/// Stands before a loop whose rounds do not depend on each other, where the compiler cannot see that its rows of
/// samples lie apart.
#if defined(__clang__)
#define CORVANE_INDEPENDENT _Pragma("clang loop vectorize(assume_safety)")
#elif defined(__GNUC__)
#define CORVANE_INDEPENDENT _Pragma("GCC ivdep")
#else
#define CORVANE_INDEPENDENT
#endif
