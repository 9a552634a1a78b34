#include "stack/calibrate/cosmetic.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "corvane/core/text.h"
#include "stack/combine/normalise.h"

namespace corvane::stack {

namespace {

constexpr double kMostHot = 0.01; // of a plane
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// The median of the eight neighbours of a pixel that are `step` away; at(x, y) is NaN for those that do not count. NaN
/// when none does.
template <class At>
double MedianAround(int x, int y, int step, At at)
{
    double sorted[8];
    int n = 0;
    for (int i = 0; i < 9; ++i) {
        const double v = i == 4 ? kNone : at(x + (i % 3 - 1) * step, y + (i / 3 - 1) * step);
        if (!std::isnan(v)) {
            int place = n++;
            for (; place > 0 && sorted[place - 1] > v; --place) {
                sorted[place] = sorted[place - 1];
            }
            sorted[place] = v;
        }
    }
    return n == 0 ? kNone : 0.5 * (sorted[(n - 1) / 2] + sorted[n / 2]);
}

} // namespace

HotPixels::HotPixels(const CStlImage& dark, int step, double sigmas) : step_(step)
{
    const double pixels = static_cast<double>(dark.GetWidth()) * dark.GetHeight();
    for (int plane = 0; plane < dark.GetPlanes() && fault_.empty(); ++plane) {
        planes_.push_back(Find(dark, plane, sigmas, static_cast<std::size_t>(kMostHot * pixels)));
    }
}

/// The hot pixels of a plane; a fault when they are more than `most`.
HotPixels::Places HotPixels::Find(const CStlImage& dark, int plane, double sigmas, std::size_t most)
{
    const int width = dark.GetWidth();
    const BlankTest isBlank(dark);
    const auto at = [&](int x, int y) {
        const bool isInside = x >= 0 && x < width && y >= 0 && y < dark.GetHeight();
        const double v = isInside ? dark.GetPixelGrayRaw(x, y, plane) : kNone;
        return isBlank(v) ? kNone : v;
    };
    const FrameLevel level = MeasureFrame(dark, plane);
    const double above = sigmas * level.spread;
    Places places;
    for (int y = 0; y < dark.GetHeight(); ++y) {
        for (int x = 0; x < width; ++x) {
            const double v = dark.GetPixelGrayRaw(x, y, plane);
            if (v > level.background + above && !isBlank(v) && !(v - MedianAround(x, y, step_, at) <= above)) {
                places.push_back(static_cast<std::ptrdiff_t>(y) * width + x);
            }
        }
        if (places.size() > most) {
            fault_ = "more than 1 % of the dark's pixels stand " + NumberText(sigmas) +
                     " sigma above the others: that is no map of hot pixels";
            return {};
        }
    }
    return places;
}

std::size_t HotPixels::Count() const
{
    return std::accumulate(planes_.begin(), planes_.end(), std::size_t{0},
                           [](std::size_t sum, const Places& places) { return sum + places.size(); });
}

void HotPixels::Clean(const RowBand& band, int first, int end, int plane, const BlankTest& isBlank) const
{
    if (planes_.empty()) {
        return;
    }
    const Places& places = planes_[std::min(static_cast<std::size_t>(plane), planes_.size() - 1)];
    const std::ptrdiff_t width = band.width;
    const auto sample = [&](int x, int y) -> float& { return band.samples[(y - band.firstRow) * width + x]; };
    const auto at = [&](int x, int y) {
        const bool isInside = x >= 0 && x < width && y >= band.firstRow && y < band.firstRow + band.rowCount;
        const bool isGood = isInside && !std::binary_search(places.begin(), places.end(), y * width + x);
        return isGood && !isBlank(sample(x, y)) ? sample(x, y) : kNone;
    };
    const auto begin = std::lower_bound(places.begin(), places.end(), first * width);
    for (auto place = begin; place != places.end() && *place < end * width; ++place) {
        const int x = static_cast<int>(*place % width);
        const int y = static_cast<int>(*place / width);
        const double median = MedianAround(x, y, step_, at);
        float& hot = sample(x, y);
        hot = std::isnan(median) || std::isnan(hot) || isBlank(hot) ? hot : static_cast<float>(median);
    }
}

} // namespace corvane::stack
