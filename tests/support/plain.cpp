#include "tests/support/plain.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace corvane::test {
namespace {

/// Floats in their order as whole numbers.
std::int64_t Ordinal(float v)
{
    const auto bits = std::bit_cast<std::int32_t>(v);
    return bits < 0 ? -static_cast<std::int64_t>(bits & 0x7fffffff) : bits;
}

} // namespace

Plain::Plain(const CStlImage& image)
    : width(image.GetWidth()), height(image.GetHeight()), planes(image.GetPlanes()), min(), max(), range(),
      blankUsed(image.IsBlankUsed() != 0), blank(image.GetBlank()), samples(Samples(image))
{
    for (int p = 0; p < 3; ++p) {
        min[p] = image.GetLevelMin(p);
        max[p] = image.GetLevelMax(p);
        range[p] = max[p] - min[p];
    }
}

unsigned char Plain::Byte(int x, int y, int p) const
{
    const float v = At(x, y, p);
    return v <= min[p] ? 0 : v < max[p] ? static_cast<unsigned char>(To256(v, p)) : 255;
}

bool Plain::IsBlank(double v) const
{
    return blankUsed && std::trunc(v) == blank;
}

double Plain::Average(int p) const
{
    double sum = 0.0;
    int count = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width && !IsBlank(At(x, y, p)); ++x, ++count) {
            sum += At(x, y, p);
        }
    }
    return sum / count;
}

std::size_t Plain::Index(int x, int y, int p) const
{
    const int column = std::min(std::max(x, 0), width - 1);
    const int row = std::min(std::max(y, 0), height - 1);
    const int plane = std::min(p, planes - 1);
    return static_cast<std::size_t>((plane * height + row) * width + column);
}

double Plain::Next(int x, int y, int p) const
{
    return samples[std::min(Index(x, y, p) + 1, samples.size() - 1)];
}

double Plain::Between(double x, double y, int p) const
{
    x = std::trunc(x) > width - 1 ? width - 1 : (x >= 0.0 ? x : 0.0);
    y = std::trunc(y) > height - 1 ? height - 1 : (y >= 0.0 ? y : 0.0);
    const int ix = static_cast<int>(x);
    const int iy = static_cast<int>(y);
    if (x == ix && y == iy) {
        return At(ix, iy, p);
    }
    const double fx = x - ix;
    const double fy = y - iy;
    return (Next(ix, iy, p) * fx + At(ix, iy, p) * (1.0 - fx)) * (1.0 - fy) +
           (Next(ix, iy + 1, p) * fx + At(ix, iy + 1, p) * (1.0 - fx)) * fy;
}

bool Same(double a, double b, double part)
{
    return a == b || (std::isnan(a) && std::isnan(b)) || std::fabs(a - b) <= part * std::fabs(b);
}

bool Near(float a, float b, int ulps, double slack)
{
    if (std::isnan(a) || std::isnan(b)) {
        return std::isnan(a) && std::isnan(b);
    }
    return std::abs(Ordinal(a) - Ordinal(b)) <= ulps || std::fabs(static_cast<double>(a) - b) <= slack;
}

testing::AssertionResult Agree(const CStlImage& image, const Plain& expected, int ulps, double slack)
{
    const std::vector<float> samples = Samples(image);
    if (image.GetWidth() != expected.width || samples.size() != expected.samples.size()) {
        return testing::AssertionFailure() << "size differs";
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (!Near(samples[i], expected.samples[i], ulps, slack)) {
            return testing::AssertionFailure()
                   << "sample " << i << " is " << samples[i] << ", expected " << expected.samples[i];
        }
    }
    return testing::AssertionSuccess();
}

} // namespace corvane::test
