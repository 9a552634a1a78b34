#pragma once

#include "corvane/core/walk.h"

namespace corvane::stars {

/// The rows of a plane in blocks so high that it costs little to begin one with rows from above it.
inline RowBlocks FieldBlocks(const CStlImage& image)
{
    constexpr int kRows = 128;
    return RowBlocks({0, 0, image.GetWidth(), image.GetHeight()}, 1, kRows);
}

/// How many threads may read so many samples of an image.
inline int ReadersOf(const CStlImage& image, long long samples, const Run& run)
{
    return samples < kFewSamples || !MayShareWork(image, {}) ? 1 : run.Threads();
}

/// Calls body(block) for the blocks of a plane, on the workers of the run where there is enough to do, and fold(i) for
/// one after the other, on the caller's thread.
template <class Body, class Fold>
void ForFieldBlocks(const CStlImage& image, const Run& run, Body body, Fold fold)
{
    const RowBlocks blocks = FieldBlocks(image);
    platform::ForBlocks(
        blocks.Count(), ReadersOf(image, blocks.Samples(), run), [&](int i) { body(blocks[i], i); }, fold);
}

} // namespace corvane::stars
