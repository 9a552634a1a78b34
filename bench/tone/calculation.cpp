#include "corvane/tone/calculation.h"

#include <algorithm>
#include <string>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

/// Times one mode, with a clip at 0 and with blanks in use.
template <class Expected>
Line Mode(const std::string& name, int mode, double value, Expected expected)
{
    return {"tone/Calculation/" + name, TimesMemcpy(1.5), [=](Run& run) {
                CStlImage frame(LargeFrame());
                frame.SetBlankUsed(1);
                frame.SetBlank(1000);
                TimeOperation<CImgCalculation>(
                    run, frame, [&](auto& result, auto... to) { result.Do(value, mode, 1, to...); },
                    [&](int x, int y, int) {
                        const double v = frame.GetPixelGrayRaw(x, y, 0);
                        return static_cast<int>(v) == 1000 ? v : expected(v);
                    });
            }};
}

const Line add = Mode("add", 0, 12.25, [](double v) { return v + 12.25; });
const Line subtract = Mode("subtract", 1, 1003.7, [](double v) { return std::max(v - 1003.7, 0.0); });
const Line multiply = Mode("multiply", 2, 1.37, [](double v) { return v * 1.37; });
const Line divide = Mode("divide", 3, 1.37, [](double v) { return v / 1.37; });

} // namespace
} // namespace corvane::bench
