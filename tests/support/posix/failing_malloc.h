#pragma once

namespace corvane::test {

/// Lets one request of this thread for memory fail, of C or C++: the one that `allowed` others go before. Under a
/// sanitizer, which has these functions for itself, none does.
void FailMalloc(long long allowed);
/// Ends that; tells whether one has failed.
bool EndFailing();

} // namespace corvane::test
