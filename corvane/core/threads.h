#pragma once

#include "corvane/platform/export.h"

namespace corvane {

/// How many threads a call works with where its run does not say: as many as `SetThreads` or else the environment
/// variable CORVANE_THREADS [1..1024] says, or else as many as the process may keep processors busy, by its affinity
/// and the quota of its control group. What a call makes does not depend on it.
CORVANE_API int Threads();

/// Sets the number for calls from now on [1..1024]; 0 or less goes back to the default.
CORVANE_API void SetThreads(int threads);

} // namespace corvane
