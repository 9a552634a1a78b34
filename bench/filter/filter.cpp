#include "corvane/filter/filter.h"

#include <memory>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

constexpr int kMargin = 10;

const Line workImage("filter/MakeFilterWork", {}, [](Run& run) {
    CImgFilter frame(LargeFrame());
    const auto make = [&] { return std::unique_ptr<CStlImage>(frame.MakeFilterWork(kMargin, 0)); };
    const auto outside = [](int at, int size) { return at < 0 ? -at : (at < size ? at : 2 * size - 1 - at); };
    CheckSamples(*make(), [&](int x, int y, int plane) {
        return frame.GetPixelGrayRaw(outside(x - kMargin, frame.GetWidth()), outside(y - kMargin, frame.GetHeight()),
                                     plane);
    });
    run.Time(frame.GetImageSize(), [&] { make(); });
});

} // namespace
} // namespace corvane::bench
