#include "corvane/core/image_transform.h"

#include <cmath>
#include <string>

#include "bench/support/bench.h"
#include "corvane/core/work_array.h"

namespace corvane::bench {
namespace {

/// One frequency by its sum.
struct Frequency {
    double re = 0.0;
    double im = 0.0;
};

Frequency PlainFrequency(const WorkArray& samples, int width, int height, int u, int v)
{
    constexpr double kTwoPi = 6.283185307179586;
    Frequency sum;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double turns = static_cast<double>(static_cast<long long>(u) * x % width) / width +
                                 static_cast<double>(static_cast<long long>(v) * y % height) / height;
            sum.re += samples[static_cast<std::size_t>(y) * width + x] * std::cos(kTwoPi * turns);
            sum.im -= samples[static_cast<std::size_t>(y) * width + x] * std::sin(kTwoPi * turns);
        }
    }
    return sum;
}

void TimeTransform(Run& run, int width, int height)
{
    const Sky sky(width, height, 1, 3);
    const std::size_t count = static_cast<std::size_t>(width) * height;
    const float* const first = sky.GetImageAdr(0, 0, 0, 1);
    const WorkArray samples(first, first + count);
    ImageTransform transform(width, height);
    ImageTransform shared(width, height, ComparedThreads()); // its threads are those that it was made with
    WorkArray spectrum(transform.SpectrumSize());
    const auto work = [&] { (Threads() == 1 ? transform : shared).Forward(samples.data(), spectrum.data()); };
    work();
    for (const auto& [u, v] : {std::pair{0, 0}, {width / 3, height / 5}, {width - 1, height / 2}}) {
        const Frequency expected = PlainFrequency(samples, width, height, u, v);
        const std::size_t at = transform.IndexOf(u, v);
        const double error =
            std::hypot(spectrum[at] - expected.re, spectrum[at + transform.ImaginaryOffset()] - expected.im);
        Require(error < 1e-6 * 1100.0 * static_cast<double>(count), "the transform is wrong");
    }
    run.Time(count * sizeof(float), work);
}

Line Of(int width, int height, double seconds)
{
    return {"core/transform/" + std::to_string(width) + " x " + std::to_string(height), Seconds(seconds),
            [=](Run& run) { TimeTransform(run, Size(width, width / 16), Size(height, height / 16)); }};
}

const Line lines[] = {Of(1024, 1024, 0.003), Of(2048, 2048, 0.018), Of(1200, 900, 0.0035), Of(1009, 1013, 0.02)};

} // namespace
} // namespace corvane::bench
