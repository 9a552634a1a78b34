#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <vector>

#include "corvane/core/independent.h"
#include "corvane/core/reductions.h"
#include "corvane/core/walk.h"
#include "corvane/core/work_array.h"
#include "corvane/platform/workers.h"

namespace corvane {

/// The samples of a grid.
using Samples = WorkArray;

/// Loops over all samples of a grid, whose blocks threads share.
class SampleLoops {
public:
    /// For grids of so many samples.
    SampleLoops(std::size_t count, int threads)
        : count_(count), threads_(ThreadsFor(static_cast<long long>(count), threads))
    {}

    /// Calls body(first, end) for each block of samples, from `first` to before `end`.
    template <class Body>
    void ForBlocks(Body body) const
    {
        platform::ForBlocks(
            Blocks(), threads_, [&](int block) { body(First(block), First(block + 1)); }, [](int) {});
    }

    /// Samples of one value.
    Samples Make(float value) const
    {
        Samples samples(count_);
        Fill(samples, [=](std::size_t) { return value; });
        return samples;
    }

    /// out[i] = map(i) for every sample. The map may read sample i of `out`, but no other one.
    template <class Map>
    void Fill(Samples& out, Map map) const
    {
        ForBlocks(Filler(out, map));
    }

    /// What does the same from one sample to before another.
    template <class Map>
    static auto Filler(Samples& out, Map map)
    {
        return [to = out.data(), map](std::size_t first, std::size_t end) {
            CORVANE_INDEPENDENT
            for (std::size_t i = first; i < end; ++i) {
                to[i] = static_cast<float>(map(i));
            }
        };
    }

    /// What ofBlock(first, end) returns of each block, in their order.
    template <class OfBlock>
    auto OfBlocks(OfBlock ofBlock) const
    {
        std::vector<decltype(ofBlock(std::size_t(), std::size_t()))> all(static_cast<std::size_t>(Blocks()));
        ForBlocks([&](std::size_t first, std::size_t end) { all[first / kBlock] = ofBlock(first, end); });
        return all;
    }

    /// Sums of so many terms of every sample, which `terms(i, out)` tells: block by block, and then of all blocks.
    /// Before the terms of a block it calls prepare(first, end), which may write what they need.
    template <int number, class Terms, class Prepare>
    std::array<double, number> Sum(Terms terms, Prepare prepare) const
    {
        const auto ofBlocks = OfBlocks([&](std::size_t first, std::size_t end) {
            prepare(first, end);
            return SumOver<number>(end - first, [=](std::size_t i, double* term) { terms(first + i, term); });
        });
        std::array<double, number> totals{};
        for (const auto& ofBlock : ofBlocks) {
            std::transform(totals.begin(), totals.end(), ofBlock.begin(), totals.begin(), std::plus<>());
        }
        return totals;
    }

    /// The same of terms that need nothing.
    template <int number, class Terms>
    std::array<double, number> Sum(Terms terms) const
    {
        return Sum<number>(terms, [](std::size_t, std::size_t) {});
    }

private:
    static constexpr std::size_t kBlock = 1 << 13; // what is prepared of one stays in a near cache

    std::size_t First(int block) const { return std::min(block * kBlock, count_); }
    int Blocks() const { return static_cast<int>((count_ + kBlock - 1) / kBlock); }

    std::size_t count_;
    int threads_;
};

} // namespace corvane
