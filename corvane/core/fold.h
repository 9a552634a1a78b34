#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include "corvane/core/reductions.h"
#include "corvane/core/walk.h"

// What all samples of an area come to, found on several threads: each block of rows comes to a part, and the parts are
// folded from the top down. So the bits are the same for any number of threads.
namespace corvane {

/// Makes partOf(block) for blocks of rows, on the workers where there is enough to do, and gives the parts to `fold` in
/// order, on the caller's thread, which may keep them.
template <class PartOf, class Fold>
void FoldBlocks(const RowBlocks& blocks, int threads, PartOf partOf, Fold fold)
{
    std::vector<decltype(partOf(blocks[0]))> parts(static_cast<std::size_t>(blocks.Count()));
    const auto partAt = [&](int i) -> auto& { return parts[static_cast<std::size_t>(i)]; };
    platform::ForBlocks(
        blocks.Count(), ThreadsFor(blocks.Samples(), threads), [&](int i) { partAt(i) = partOf(blocks[i]); },
        [&](int i) { fold(std::move(partAt(i))); });
}

/// `size` counts, to which count(counts, block) adds those of each block of rows, on several threads; tick(block) as
/// for `ForRowBlocks`. Each thread has counts of its own: there are no more threads than have samples enough for that,
/// or than memory feeds.
template <class Number, class Count, class Tick>
std::vector<Number> CountBlocks(const RowBlocks& blocks, int threads, std::size_t size, Count count, Tick tick)
{
    constexpr long long kMostThreads = 16;
    const long long most = std::clamp(blocks.Samples() / static_cast<long long>(size), 1LL, kMostThreads);
    threads = ThreadsFor(blocks.Samples(), static_cast<int>(std::min<long long>(threads, most)));
    std::vector<std::vector<Number>> counts(static_cast<std::size_t>(threads), std::vector<Number>(size));
    const auto countOn = [&](const RowBlock& block, int thread) {
        count(counts[static_cast<std::size_t>(thread)].data(), block);
    };
    ForRowBlocks(blocks, threads, countOn, tick);
    std::vector<Number>& sum = counts.front();
    std::for_each(counts.begin() + 1, counts.end(), [&](const std::vector<Number>& others) {
        std::transform(sum.begin(), sum.end(), others.begin(), sum.begin(), std::plus<>());
    });
    return std::move(sum);
}

/// The same where nobody waits for it, on as many threads as `Threads` says.
template <class Number, class Count>
std::vector<Number> CountBlocks(const RowBlocks& blocks, std::size_t size, Count count)
{
    return CountBlocks<Number>(blocks, Threads(), size, count, [](const RowBlock&) {});
}

/// The extremes of what add(extremes, y) adds for the rows of an area.
template <class AddRow>
Extremes ExtremesOf(const CRect& area, AddRow add)
{
    Extremes extremes;
    const auto partOf = [&](const RowBlock& block) {
        Extremes part;
        for (int y = block.first; y < block.end; ++y) {
            add(part, y);
        }
        return part;
    };
    FoldBlocks(RowBlocks(area), Threads(), partOf, [&](const Extremes& part) { extremes.Add(part); });
    return extremes;
}

} // namespace corvane
