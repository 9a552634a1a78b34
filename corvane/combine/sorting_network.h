#pragma once

#include <vector>

namespace corvane {

/// Two places of a list of values, of which the smaller value goes to `low`.
struct Exchange {
    int low;
    int high;
};

/// The exchanges that sort n values, whatever they are.
/// K. E. Batcher, Sorting networks and their applications, AFIPS 1968; in the form of
/// D. E. Knuth, The Art of Computer Programming 3, 1973, section 5.2.2 algorithm M.
std::vector<Exchange> SortingNetwork(int n);

/// Leaves out the exchanges that have no part in the value at one place of n.
std::vector<Exchange> KeepWhatReaches(int place, int n, const std::vector<Exchange>& network);

} // namespace corvane
