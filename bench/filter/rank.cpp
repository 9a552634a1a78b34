#include <algorithm>
#include <vector>

#include "bench/filter/window.h"
#include "bench/support/bench.h"
#include "corvane/filter/filter.h"

namespace corvane::bench {
namespace {

double PlainRank(std::vector<double> window, int rank)
{
    std::sort(window.begin(), window.end());
    return window[static_cast<std::size_t>(rank)];
}

void TimeRank(Run& run, CStlImage& frame, int type, int rank)
{
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.MinMaxFilter(type, rank, to...); },
        [&](int x, int y, int plane) { return PlainRank(Window(frame, x, y, plane, type), rank); });
}

void TimeMedian(Run& run, CStlImage& frame, int type)
{
    TimeOperation<CImgFilter>(
        run, frame, [&](auto& result, auto... to) { result.MedianFilter(type, to...); },
        [&](int x, int y, int plane) {
            const std::vector<double> window = Window(frame, x, y, plane, type);
            return PlainRank(window, static_cast<int>(window.size() / 2));
        });
}

const Line medianCross("filter/Median/cross", {}, [](Run& run) { TimeMedian(run, LargeFrame(), 0); });
const Line median3("filter/Median/3 x 3", TimesMemcpy(2.5), [](Run& run) { TimeMedian(run, LargeFrame(), 1); });
const Line median5("filter/Median/5 x 5", TimesMemcpy(12.0), [](Run& run) { TimeMedian(run, LargeFrame(), 2); });
const Line medianColour("filter/Median/3 x 3, colour", TimesMemcpy(2.5),
                        [](Run& run) { TimeMedian(run, ColourFrame(), 1); });

const Line minimum("filter/MinMax/3 x 3, minimum", TimesMemcpy(2.0),
                   [](Run& run) { TimeRank(run, LargeFrame(), 1, 0); });
const Line rank1("filter/MinMax/3 x 3, rank 1", TimesMemcpy(3.5), [](Run& run) { TimeRank(run, LargeFrame(), 1, 1); });
const Line rank3("filter/MinMax/3 x 3, rank 3", TimesMemcpy(3.5), [](Run& run) { TimeRank(run, LargeFrame(), 1, 3); });
const Line rank6("filter/MinMax/3 x 3, rank 6", TimesMemcpy(3.5), [](Run& run) { TimeRank(run, LargeFrame(), 1, 6); });
const Line maximum("filter/MinMax/3 x 3, maximum", TimesMemcpy(2.0),
                   [](Run& run) { TimeRank(run, LargeFrame(), 1, 8); });
const Line maximum5("filter/MinMax/5 x 5, maximum", {}, [](Run& run) { TimeRank(run, LargeFrame(), 2, 20); });
const Line rank5("filter/MinMax/5 x 5, rank 13", {}, [](Run& run) { TimeRank(run, LargeFrame(), 2, 13); });

} // namespace
} // namespace corvane::bench
