#include <algorithm>
#include <cmath>
#include <vector>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

constexpr double kRank = 2.25;
constexpr double kStarThreshold = 0.05;

double PlainStar(std::vector<double> window)
{
    const double centre = window[window.size() / 2];
    std::sort(window.begin(), window.end());
    const double value = window[2] + (window[3] - window[2]) * (kRank - 2.0);
    const bool isKept = window.back() == centre || std::fabs(value / window.back() - 1.0) < kStarThreshold;
    return isKept ? centre : value;
}

void TimeStarSharpen(Run& run, int type)
{
    CStlImage& frame = LargeFrame();
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.StarSharpFilter(type, kRank, kStarThreshold, 1, to...); },
        [&](int x, int y, int plane) { return PlainStar(Window(frame, x, y, plane, type)); });
}

const Line starSharpenSquare3("filter/StarSharpen/3 x 3", {}, [](Run& run) { TimeStarSharpen(run, 1); });
const Line starSharpenSquare5("filter/StarSharpen/5 x 5", {}, [](Run& run) { TimeStarSharpen(run, 2); });

} // namespace
} // namespace corvane::bench
