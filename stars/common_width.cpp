#include "stars/common_width.h"

#include <algorithm>
#include <cstddef>

namespace corvane::stars {

namespace {

constexpr double kGroup = 1.1;    // the widest over the narrowest of a group
constexpr std::size_t kShare = 2; // half of the largest group's members
constexpr double kRange = 1.25;   // times the median, and as far below
constexpr int kRounds = 20;

using Iterator = std::vector<double>::const_iterator;

std::size_t GroupSize(const std::vector<double>& sorted, Iterator narrowest)
{
    return static_cast<std::size_t>(std::upper_bound(narrowest, sorted.end(), kGroup * *narrowest) - narrowest);
}

/// The narrowest member of the group to begin with: of the groups that overlap the first that is large enough, the
/// largest.
Iterator FirstGroup(const std::vector<double>& sorted)
{
    std::size_t largest = 0;
    for (auto w = sorted.begin(); w != sorted.end(); ++w) {
        largest = std::max(largest, GroupSize(sorted, w));
    }
    auto best = sorted.begin();
    while (kShare * GroupSize(sorted, best) < largest) {
        ++best;
    }
    const double reach = kGroup * *best;
    for (auto w = best; w != sorted.end() && *w <= reach; ++w) {
        best = GroupSize(sorted, w) > GroupSize(sorted, best) ? w : best;
    }
    return best;
}

} // namespace

double CommonWidth(std::vector<double> widths)
{
    std::sort(widths.begin(), widths.end());
    if (widths.empty()) {
        return 0.0;
    }
    const Iterator first = FirstGroup(widths);
    double median = first[static_cast<std::ptrdiff_t>(GroupSize(widths, first) / 2)];
    for (int round = 0; round < kRounds; ++round) {
        const auto low = std::lower_bound(widths.cbegin(), widths.cend(), median / kRange);
        const auto high = std::upper_bound(low, widths.cend(), median * kRange);
        const double next = low[(high - low) / 2];
        if (next == median) {
            break;
        }
        median = next;
    }
    return median;
}

bool IsCommon(double width, double common)
{
    return width >= common / kRange && width <= common * kRange;
}

} // namespace corvane::stars
