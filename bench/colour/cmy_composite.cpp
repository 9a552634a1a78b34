#include "corvane/colour/cmy_composite.h"

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

void TimeComposite(Run& run)
{
    const int size = Size(2048, 61);
    Sky c(size, size, 1, 1);
    Sky m(size, size, 1, 2);
    Sky y(size, size, 1, 3);
    CStlImage* const frames[] = {&c, &m, &y};
    CImgCmyComposit result(Sky(size, size, 3, 4));
    const auto combine = [&] { result.Do(&c, 0.0, 0.0, 0.0, &m, 0.0, 0.0, 0.0, &y, 0.0, 0.0, 0.0, nullptr, 0, 0); };
    combine();
    CheckSamples(result, [&](int x, int row, int plane) {
        double sum = 0.0;
        for (int i = 0; i < 3; ++i) {
            const double v = frames[i]->GetPixelGrayRaw(x, row, 0);
            sum += i == plane ? -v : v;
        }
        return sum;
    });
    run.Time(result.GetImageSize(), combine);
}

const Line line("colour/CmyComposite", {}, TimeComposite);

} // namespace
} // namespace corvane::bench
