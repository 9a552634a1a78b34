
#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

constexpr double kOffset = 1100.0;
constexpr double kWeight = 0.8;

double PlainBlur(const CStlImage& frame, int x, int y, int plane)
{
    return frame.To256(static_cast<double>(static_cast<float>(PlainMean(Window(frame, x, y, plane, 1), kWeight))),
                       plane);
}

void TimeDevelopment(Run& run, CStlImage& frame, int selector)
{
    CImgFilter result(frame);
    const auto filter = [&] { result.DigitalDvlp(kOffset, kWeight, &frame, &selector, nullptr, 0); };
    filter();
    const double offset = frame.To256(kOffset, 0);
    const double gain = frame.To256(static_cast<double>(frame.GetAvrGrayRaw(0)), 0) + offset;
    CheckSamples(result, [&](int x, int y, int plane) {
        const double shown = frame.To256(static_cast<double>(frame.GetPixelGrayRaw(x, y, plane)), plane);
        const double blur = selector < 3
                                ? static_cast<float>(PlainBlur(frame, x, y, selector))
                                : (PlainBlur(frame, x, y, 0) + PlainBlur(frame, x, y, 1) + PlainBlur(frame, x, y, 2)) *
                                      0.3333333333333333;
        return frame.ToRaw(shown > 0.0 ? shown / (blur + offset) * gain : shown, plane);
    });
    run.Time(frame.GetImageSize(), filter);
}

const Line digitalDevelopmentMono("filter/DigitalDevelopment/mono", {},
                                  [](Run& run) { TimeDevelopment(run, LargeFrame(), 0); });

void TimeColour(Run& run, int selector)
{
    CStlImage& frame = ColourFrame();
    TimeDevelopment(run, frame, selector);
}

const Line green("filter/DigitalDevelopment/colour by green", {}, [](Run& run) { TimeColour(run, 1); });
const Line digitalDevelopmentAll("filter/DigitalDevelopment/colour by all", {}, [](Run& run) { TimeColour(run, 3); });

} // namespace
} // namespace corvane::bench
