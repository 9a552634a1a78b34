#pragma once

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <utility>
#include <vector>

#include "corvane/filter/filter.h"
#include "tests/support/plain.h"

namespace corvane::test {

inline int Mirrored(int i, int size)
{
    return i < 0 ? -i : (i >= size ? 2 * size - i - 1 : i);
}

/// A sample to be filtered, and the image that the result is written to.
struct Spot {
    const Plain& image;
    const Plain& target;
    int x;
    int y;
    int p;

    Spot InPlane(int plane) const { return {image, target, x, y, plane}; }
    /// A neighbour, mirrored at the edges.
    Spot At(int dx, int dy) const
    {
        const bool inside = x + dx >= 0 && x + dx < image.width;
        return {image, target, inside ? x + dx : x - dx, Mirrored(y + dy, image.height), p};
    }
    double Value() const { return image.At(x, y, p); }
    /// In display units, of all planes.
    double Brightness() const
    {
        const auto shown = [this](int plane) { return static_cast<float>(image.To256(InPlane(plane).Value(), plane)); };
        return image.Colour() ? 0.299 * shown(0) + 0.587 * shown(1) + 0.114 * shown(2) : shown(0);
    }
    /// The samples of a neighbourhood, row by row.
    std::vector<double> Around(int type) const
    {
        const int r = type == 2 ? 2 : (type == 0 || type == 1 ? 1 : 0);
        std::vector<double> values;
        for (int dy = -r; dy <= r; ++dy) {
            for (int dx = -r; dx <= r; ++dx) {
                if (std::abs(dx * dy) < (type == 0 ? 1 : 4)) {
                    values.push_back(At(dx, dy).Value());
                }
            }
        }
        return values;
    }
    /// The Laplacian of the cross in units of a plane's levels, 0..1, through the two floats of its kernels.
    double Edge(int levels) const
    {
        const std::vector<double> v = Around(0);
        const auto raw = static_cast<float>(std::fabs(4.0 * v[2] - (v[1] + v[3] + v[0] + v[4])) + image.min[levels]);
        const double edge = static_cast<float>(image.To256(raw, levels)) / 255.0;
        return edge > 0.0 ? std::min(edge, 1.0) : 0.0;
    }
};

/// The mean with a weight for each neighbour. The centre is left out of the sum, for infinite samples too.
inline double PlainMean(std::vector<double> values, double weight)
{
    const double centre = std::exchange(values[values.size() / 2], 0.0);
    const double others = std::accumulate(values.begin(), values.end(), 0.0);
    const double count = static_cast<double>(values.size() - 1);
    return count == 0.0 ? centre : (others * weight + centre) / (count * weight + 1.0);
}

/// Compares what run(result, source, rect, showProgress) makes with value(spot) of every sample of the rectangle, for
/// all images and rectangles. The levels of the result differ from those of the source.
template <class Run, class Value>
void ExpectFilter(Run run, Value value, int ulps = 1, double slack = 1e-11, bool finite = false)
{
    const auto check = [&](CStlImage& image) {
        CImgFilter target(image);
        for (int p = 0; p < image.GetPlanes(); ++p) {
            target.SetLevel(p, 3.5 + p, 251.0 - 20.0 * p);
        }
        const Plain before(image);
        const Plain levels(target);
        const Plain filtered = before.Map([&](double, int x, int y, int p) {
            return value(Spot{before, levels, x, y, p});
        });
        ForEachRect(image, [&](CRect* rect) {
            const CRect area = rect != nullptr ? *rect : CRect(0, 0, before.width, before.height);
            const Plain expected = before.Map([&](double v, int x, int y, int p) {
                return area.PtInRect({x, y}) ? static_cast<double>(filtered.At(x, y, p)) : v;
            });
            CImgFilter result(target);
            run(result, &image, rect, 0);
            EXPECT_TRUE(Agree(result, expected, ulps, slack));
        });
    };
    ForEachImage(check, finite);
}

/// A filter with what it keeps for its own.
struct OpenFilter : CImgFilter {
    using CImgFilter::CalcRect;
    using CImgFilter::CalcShift;
    using CImgFilter::CImgFilter;
    using CImgFilter::SetFilterAdr;
};

/// Compares kernel(image, rows, spot) with value(spot) of every sample.
template <class Value, class Kernel>
void ExpectKernel(int radius, Value value, Kernel kernel)
{
    const OpenFilter image(RandomImage({9, 7}, 3, 4));
    const Plain plain(image);
    plain.ForEach([&](int x, int y, int p) {
        const float* rows[21];
        image.SetFilterAdr(x, y, p, radius, rows, 0);
        const Spot at{plain, plain, x, y, p};
        EXPECT_TRUE(Near(kernel(image, rows, at), static_cast<float>(value(at)), 1, 1e-11))
            << x << ' ' << y << ' ' << p;
    });
}

/// What a filter makes of an image.
template <class Run>
std::vector<float> Filtered(CStlImage& image, Run run)
{
    CImgFilter result(image);
    run(result, &image, nullptr, 0);
    return Samples(result);
}

/// What a filter makes of a row of samples.
template <class Run>
std::vector<float> FilteredRow(const std::vector<float>& samples, Run run)
{
    CStlImage image(-32, static_cast<int>(samples.size()), 1, 1, 1.0, 0.0, 1);
    std::copy(samples.begin(), samples.end(), image.GetImageAdr(0, 0, 0));
    return Filtered(image, run);
}

} // namespace corvane::test
