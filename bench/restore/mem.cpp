#include "corvane/restore/mem.h"

#include "bench/restore/stars.h"
#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

/// One iteration, and the transforms before it.
void TimeIteration(Run& run)
{
    const int size = Size(2048, 96);
    const Stars stars(size);
    const auto restore = [](CImgMem& image) { return image.Do(kStarSigma, 30.0, 1, nullptr, 0); };
    CImgMem once(stars);
    Require(restore(once) == 1, "the restoration did not finish");
    once.CalcMinMax();
    Require(once.GetMinPixel(0) > 0.0, "samples are not above 0");
    Require(once.GetMaxPixel(0) > once.GetAvrGrayRaw(0) * 1.01, "no star rises");
    run.Time(
        stars.GetImageSize(), [&] { return CImgMem(stars); }, restore);
}

const Line line("restore/maximum entropy/1 iteration, 2048 x 2048", {}, TimeIteration);

} // namespace
} // namespace corvane::bench
