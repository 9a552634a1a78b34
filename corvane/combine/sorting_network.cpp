#include "corvane/combine/sorting_network.h"

#include <algorithm>
#include <cstddef>
#include <ranges>

namespace corvane {

std::vector<Exchange> SortingNetwork(int n)
{
    std::vector<Exchange> network;
    int top = 1;
    while (top * 2 < n) {
        top *= 2;
    }
    for (int p = top; p > 0 && n > 1; p /= 2) {
        int q = top;
        int r = 0;
        int d = p;
        for (;;) {
            for (int i = 0; i + d < n; ++i) {
                if ((i & p) == r) {
                    network.push_back({i, i + d});
                }
            }
            if (q == p) {
                break;
            }
            d = q - p;
            q /= 2;
            r = p;
        }
    }
    return network;
}

std::vector<Exchange> KeepWhatReaches(int place, int n, const std::vector<Exchange>& network)
{
    std::vector<bool> needed(static_cast<std::size_t>(n), false);
    needed[static_cast<std::size_t>(place)] = true;
    std::vector<Exchange> kept;
    for (const Exchange& exchange : std::views::reverse(network)) {
        const auto low = static_cast<std::size_t>(exchange.low);
        const auto high = static_cast<std::size_t>(exchange.high);
        if (needed[low] || needed[high]) {
            needed[low] = needed[high] = true;
            kept.push_back(exchange);
        }
    }
    std::reverse(kept.begin(), kept.end());
    return kept;
}

} // namespace corvane
