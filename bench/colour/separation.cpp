#include "corvane/colour/separation.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void TimeYellow(Run& run)
{
    const int size = Size(2048, 61);
    Sky source(size, size, 3, 1);
    CImgSeparation result(Sky(size, size, 1, 2));
    const auto separate = [&] { result.Do(&source, kComponentYellow, 0); };
    separate();
    CheckSamples(result, [&](int x, int y, int) {
        return (source.GetPixelGrayRaw(x, y, 0) + source.GetPixelGrayRaw(x, y, 1)) * 0.5;
    });
    run.Time(result.GetImageSize(), separate);
}

const Line yellow("colour/Separation/yellow", TimesMemcpy(2.0), TimeYellow);

} // namespace
} // namespace corvane::bench
