#pragma once

#include "corvane/core/fold.h"

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
    return ThreadsFor(samples, ThreadsOn(image, {}, run.Threads()));
}

/// `ForRowBlocks` for the blocks of a plane, on the workers of the run.
template <class Body>
void ForFieldBlocks(const CStlImage& image, const Run& run, Body body)
{
    ForRowBlocks(FieldBlocks(image), ThreadsOn(image, {}, run.Threads()), body);
}

/// `FoldBlocks` of those.
template <class PartOf, class Fold>
void FoldFieldBlocks(const CStlImage& image, const Run& run, PartOf partOf, Fold fold)
{
    FoldBlocks(FieldBlocks(image), ThreadsOn(image, {}, run.Threads()), partOf, fold);
}

} // namespace corvane::stars
