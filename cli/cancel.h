#pragma once

namespace corvane::cli {

/// From now on the first Ctrl-C (or a request to end) is a wish that the work looks at, the second ends the process at
/// once. A write beyond the limit for the size of files fails instead of ending the process.
void WatchForCancel();

/// True since the first Ctrl-C.
bool CancelRequested();

/// Throws Cancelled since the first Ctrl-C.
void ThrowIfCancelled();

} // namespace corvane::cli
