#include "corvane/colour/plane_mix.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line threePlanes("colour/PlaneMix/three frames", {}, [](Run& run) {
    const int size = Size(2048, 61);
    const Sky a(size, size, 1, 1);
    const Sky b(size, size, 1, 2);
    const Sky c(size, size, 1, 3);
    CStlImage result(-32, size, size, 1, 1.0, 0.0, 1);
    const corvane::Run silent;
    const auto mix = [&] {
        Stage stage(silent, "", size);
        MixPlanes({{&a, 0, 0.5}, {&b, 0, -0.25}, {&c, 0, 2.0}}, 7.0, result, 0, stage);
    };
    mix();
    CheckSamples(result, [&](int x, int y, int) {
        return ((7.0 + 0.5 * a.GetPixelGrayRaw(x, y, 0)) - 0.25 * b.GetPixelGrayRaw(x, y, 0)) +
               2.0 * c.GetPixelGrayRaw(x, y, 0);
    });
    run.Time(result.GetImageSize(), mix);
});

} // namespace
} // namespace corvane::bench
