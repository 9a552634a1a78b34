#include "corvane/tone/auto_level.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

/// The values on the grid that levels are taken from.
template <class ValueOf>
std::vector<double> GridValues(const CStlImage& image, ValueOf valueOf)
{
    const int step = std::max(static_cast<int>(image.GetWidth() * 1e-6 * image.GetHeight()), 1);
    std::vector<double> values;
    for (int y = 0; y < image.GetHeight(); y += step) {
        for (int x = 0; x < image.GetWidth(); x += step) {
            values.push_back(valueOf(x, y));
        }
    }
    return values;
}

struct Spread {
    double mean = 0.0;
    double sigma = std::numeric_limits<float>::max() / 3.0;
};

/// Mean and deviation of what lies within 3 sigma.
Spread PlainSpread(const std::vector<double>& values, const Spread& before)
{
    const auto meanOf = [&](double centre, auto term) {
        double sum = 0.0;
        double count = 0.0;
        for (const double v : values) {
            const bool kept = std::fabs(v - centre) < 3.0 * before.sigma;
            sum += kept ? term(v) : 0.0;
            count += kept ? 1.0 : 0.0;
        }
        return sum / count;
    };
    Spread spread;
    spread.mean = meanOf(before.mean, [](double v) { return v; });
    spread.sigma = std::sqrt(meanOf(spread.mean, [&](double v) { return (v - spread.mean) * (v - spread.mean); }));
    return spread;
}

bool IsNear(double a, double b)
{
    return std::fabs(a - b) < 1e-6;
}

void TimeChoice(Run& run, CImgAutoLevel& image, const Spread& spread)
{
    const auto choose = [&] { image.Do(0.2, 1.0, 0, nullptr); };
    choose();
    Require(IsNear(image.GetLevelMin(0), spread.mean - 0.2 * spread.sigma), "level min");
    Require(IsNear(image.GetLevelMax(0), spread.mean + spread.sigma), "level max");
    run.Time(image.GetImageSize(), choose);
}

const Line autoLevelMono("tone/AutoLevel/mono", {}, [](Run& run) {
    CImgAutoLevel image(LargeFrame());
    const auto values = GridValues(image, [&](int x, int y) { return image.GetPixelGrayRaw(x, y, 0); });
    Spread spread = PlainSpread(values, Spread());
    for (double last = spread.mean + 2.0; std::floor(last) != std::floor(spread.mean);) {
        last = spread.mean;
        spread = PlainSpread(values, spread);
    }
    TimeChoice(run, image, spread);
});

const Line autoLevelColour("tone/AutoLevel/colour", {}, [](Run& run) {
    CImgAutoLevel image(ColourFrame());
    const auto sample = [&](int x, int y, int plane) {
        return static_cast<double>(image.GetPixelGrayRaw(x, y, plane));
    };
    const auto values = GridValues(image, [&](int x, int y) {
        return 0.299 * sample(x, y, 0) + 0.587 * sample(x, y, 1) + 0.114 * sample(x, y, 2);
    });
    TimeChoice(run, image, PlainSpread(values, Spread()));
});

} // namespace
} // namespace corvane::bench
