#include "corvane/geometry/expansion.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line expansion("geometry/Expansion/2 x 2", {}, [](Run& run) {
    Sky source(Size(2048, 60), Size(2048, 50), 1, 3);
    TimeChange<CImgExpansion>(
        run, source, [&](CImgExpansion& result) { result.Do(2, 2, &source, 0); },
        [&](int x, int y, int plane) { return source.GetPixelGrayRaw(x / 2, y / 2, plane); });
});

} // namespace
} // namespace corvane::bench
