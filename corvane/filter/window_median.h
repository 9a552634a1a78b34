#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

namespace corvane::filter {

/// A plane of samples in memory.
struct PlaneView {
    const float* samples;
    int width;
    int height;

    const float* Row(int y) const { return samples + static_cast<std::ptrdiff_t>(y) * width; }
    float operator()(int x, int y) const { return Row(y)[x]; }
    bool Has(int x, int y) const { return x >= 0 && x < width && y >= 0 && y < height; }
};

/// The median of values, which change their order; of an even number the mean of the middle two, of none NaN.
float MedianOf(float* values, int count);

/// The median of the square window about a place that reaches so far [0..3], of what value(x, y) says of the places in
/// it, as the plane itself does. What is NaN or off the plane does not count.
template <class Value>
float MedianAbout(const PlaneView& plane, int x, int y, int reach, Value value)
{
    float values[7 * 7];
    int count = 0;
    for (int ny = y - reach; ny <= y + reach; ++ny) {
        for (int nx = x - reach; nx <= x + reach; ++nx) {
            const float v = plane.Has(nx, ny) ? value(nx, ny) : std::numeric_limits<float>::quiet_NaN();
            if (v == v) { // NaN is not
                values[count++] = v;
            }
        }
    }
    return MedianOf(values, count);
}

/// What is finer than 7 x 7 or 5 x 5 samples but no single one: the median of 3 x 3 less the lower of the median of
/// these over 7 x 7 and of the median of 5 x 5.
template <class Value>
double FineStructure(const PlaneView& plane, int x, int y, Value value)
{
    const auto small = [&](int nx, int ny) { return MedianAbout(plane, nx, ny, 1, value); };
    const float beneath = std::min(MedianAbout(plane, x, y, 3, small), MedianAbout(plane, x, y, 2, value));
    return static_cast<double>(small(x, y)) - beneath;
}

/// The medians of the 5 x 5 samples about those of columns first to end - 1 of a row go to `medians`.
void MediansOf25(const PlaneView& plane, int y, int first, int end, float* medians);

} // namespace corvane::filter
