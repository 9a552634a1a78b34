#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
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
    /// For grids of so many samples. Throws std::bad_alloc.
    SampleLoops(std::size_t count, int threads)
        : count_(count),
          threads_(ThreadsFor(static_cast<long long>(count), std::min(threads, static_cast<int>(count / kPerThread)))),
          terms_(threads_ > 1 ? kBlock * kMostTerms * threads_ : 0)
    {}

    /// Calls body(first, end, block) for all samples from `first` to before `end`.
    template <class Body>
    void ForBlocks(Body body) const
    {
        platform::ForBlocks(
            Blocks(), threads_, [&](int block) { body(First(block), First(block + 1), block); }, [](int) {});
    }

    /// Blocks of `ForBlocks`.
    int Blocks() const { return static_cast<int>((count_ + kBlock - 1) / kBlock); }

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
        ForBlocks([filler = Filler(out, map)](std::size_t first, std::size_t end, int) { filler(first, end); });
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

    /// `SumOver` all samples, to the bit: threads work terms out block by block, and each adds its own when those of
    /// all blocks before are added. Before the terms of a block it calls prepare(first, end), which may write what they
    /// need.
    template <int number, class Terms, class Prepare>
    std::array<double, number> Sum(Terms terms, Prepare prepare)
    {
        static_assert(number <= kMostTerms);
        Sums<number> sums;
        std::atomic<int> turn = 0;
        const auto body = [&](int block, int thread) {
            const std::size_t first = First(block);
            const std::size_t count = First(block + 1) - first;
            const auto ofBlock = [=](std::size_t i, double* term) { terms(first + i, term); };
            prepare(first, first + count);
            if (threads_ == 1) {
                sums.Add(count, ofBlock);
                return;
            }
            double* const own = terms_.data() + thread * kBlock * kMostTerms;
            WorkOut<number>(count, ofBlock, own);
            WaitUntil(turn, block);
            sums.Add(count, [=](std::size_t i, double* term) {
                for (int k = 0; k < number; ++k) {
                    term[k] = own[k * kBlock + i];
                }
            });
            turn = block + 1;
            turn.notify_all();
        };
        platform::ForBlocks(Blocks(), threads_, body, [](int) {});
        return sums.Totals();
    }

    /// The same of terms that need nothing.
    template <int number, class Terms>
    std::array<double, number> Sum(Terms terms)
    {
        return Sum<number>(terms, [](std::size_t, std::size_t) {});
    }

private:
    static constexpr std::size_t kBlock = 1 << 13; // the terms of one stay in a near cache
    static constexpr std::size_t kMostTerms = 3;
    static constexpr int kSpins = 4000;
    static constexpr std::size_t kPerThread = 1 << 16; // at least, so that terms take little beside samples

    std::size_t First(int block) const { return std::min(block * kBlock, count_); }

    template <int number, class Terms>
    static void WorkOut(std::size_t count, Terms terms, double* out)
    {
        CORVANE_INDEPENDENT
        for (std::size_t i = 0; i < count; ++i) {
            double term[number];
            terms(i, term);
            for (int k = 0; k < number; ++k) {
                out[k * kBlock + i] = term[k];
            }
        }
    }

    /// The turn comes soon, unless the thread before has to wait for a processor.
    static void WaitUntil(const std::atomic<int>& turn, int block)
    {
        int spins = 0;
        for (int now = turn; now != block; now = turn) {
            if (++spins > kSpins) {
                turn.wait(now);
            }
        }
    }

    std::size_t count_;
    int threads_;
    std::vector<double> terms_; ///< for each thread
};

} // namespace corvane
