#pragma once

#include <string>

#include "corvane/platform/export.h"

namespace corvane::platform {

/// How many processors this process may keep busy at a time, 1 or more: those that it may run on, or fewer where it has
/// a quota.
CORVANE_VISIBLE int AvailableProcessors();

#ifndef _WIN32
/// The processors that the quota of this process's control group is worth, or that of a group about it, rounded up; 0
/// without a quota. `root` is where the system's files are looked for, "" for their own place. Both versions of control
/// groups are known, the first where it is mounted as usual.
CORVANE_VISIBLE int ProcessorQuota(const std::string& root);
#endif

} // namespace corvane::platform
