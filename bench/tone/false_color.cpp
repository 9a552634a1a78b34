#include "corvane/tone/false_color.h"

#include <algorithm>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

/// Map 0: green rises over the first quarter and falls over the last, red and blue cross over the second and third.
double Component(double value, int plane)
{
    const double quarters = value / 63.75;
    const double components[] = {quarters - 2.0, std::min(quarters, 4.0 - quarters), 2.0 - quarters};
    return 255.0 * std::clamp(components[plane], 0.0, 1.0);
}

const Line falseColor("tone/FalseColor", {}, [](Run& run) {
    CStlImage& frame = LargeFrame();
    CStlImage colour(frame);
    Require(colour.ToColor() != 0, "no colour image");
    CImgFalseColor result(colour);
    const auto paint = [&] { result.Do(950.0, 1100.0, 0, 1, &frame, nullptr, 0); };
    paint();
    for (int plane = 0; plane < 3; ++plane) {
        VisitSome(frame.GetWidth(), frame.GetHeight(), [&](int x, int y) {
            const double value = std::clamp((frame.GetPixelGrayRaw(x, y, 0) - 950.0) / 150.0 * 255.0, 0.0, 255.0);
            const double difference =
                result.To256(result.GetPixelGrayRaw(x, y, plane), plane) - Component(value, plane);
            Require(std::abs(difference) < 1e-3, "a colour");
        });
    }
    run.Time(result.GetImageSize(), paint);
});

} // namespace
} // namespace corvane::bench
