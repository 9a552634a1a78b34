#include "corvane/core/aligned_row.h"

#include <cmath>
#include <numbers>
#include <tuple>

#include "corvane/core/kernel_sampler.h"
#include "tests/support/plain.h"

using namespace corvane;
using namespace corvane::test;

namespace {

/// Samples row y into a row of `count` and compares it, bit for bit, with the reader of single samples.
void Check(const CStlImage& image, const Alignment& a, int y, int count)
{
    SCOPED_TRACE(testing::Message() << a.dx << ' ' << a.dy << ' ' << a.sine << ' ' << y);
    for (int p = 0; p < image.GetPlanes(); ++p) {
        std::vector<double> values(static_cast<std::size_t>(count) + 1, 9e99);
        std::vector<int> inside(static_cast<std::size_t>(count) + 1, 77);
        SampleAlignedRow(image, p, a, y, count, -5.25, values.data(), inside.data());
        for (int x = 0; x < count; ++x) {
            int outOfImage = 0;
            const double expected = image.GetPixelGrayRaw(x, y, a.dx, a.dy, a.sine, a.cosine, a.scale, p, -5.25, 0,
                                                          &outOfImage, nullptr, nullptr);
            ASSERT_TRUE(Same(values[static_cast<std::size_t>(x)], expected)) << x << ' ' << p;
            ASSERT_EQ(inside[static_cast<std::size_t>(x)], 1 - outOfImage);
        }
        ASSERT_EQ(std::pair(values.back(), inside.back()), std::pair(9e99, 77));
    }
}

/// A map that bends by some pixels over twice such a size, or seen aslant.
Mapping BentMap(Random& random, double size, bool isTilted)
{
    FieldMap map;
    map.x0 = map.y0 = map.size = size;
    for (int i = 0; i < (isTilted ? FieldMap::kLinear : FieldMap::kTerms); ++i) {
        map.x[i] = (i == 0 || i == 1 ? size : 0.0) + random.Between(-2, 2) * size / 40.0;
        map.y[i] = (i == 0 || i == 2 ? size : 0.0) + random.Between(-2, 2) * size / 40.0;
    }
    map.tiltU = isTilted ? random.Between(-0.2, 0.2) : 0.0;
    map.tiltV = isTilted ? random.Between(-0.2, 0.2) : 0.0;
    return map;
}

double Sinc(double d)
{
    return d == 0.0 ? 1.0 : std::sin(std::numbers::pi * d) / (std::numbers::pi * d);
}

double Kernel(Interpolation interpolation, double d)
{
    const int reach = ReachOf(interpolation);
    if (interpolation == Interpolation::kBicubic) {
        d = std::fabs(d);
        return d < 1.0   ? 1.5 * d * d * d - 2.5 * d * d + 1.0
               : d < 2.0 ? -0.5 * d * d * d + 2.5 * d * d - 4.0 * d + 2.0
                         : 0.0;
    }
    return std::fabs(d) < reach ? Sinc(d) * Sinc(d / reach) : 0.0;
}

/// All samples in reach by weight, limited by the nearest 4 x 4; bilinear where one is missing.
double PlainKernel(const Plain& image, Interpolation interpolation, double x, double y, int p)
{
    const int reach = ReachOf(interpolation);
    const int left = static_cast<int>(x);
    const int top = static_cast<int>(y);
    double sum = 0.0;
    double weights = 0.0;
    double least = INFINITY;
    double greatest = -INFINITY;
    for (int j = top + 1 - reach; j <= top + reach; ++j) {
        for (int i = left + 1 - reach; i <= left + reach; ++i) {
            const bool isThere = i >= 0 && i < image.width && j >= 0 && j < image.height;
            if (!isThere || !std::isfinite(image.At(i, j, p))) {
                return image.Between(x, y, p);
            }
            const double sample = image.At(i, j, p);
            const double weight = Kernel(interpolation, i - x) * Kernel(interpolation, j - y);
            const bool isNear = std::max(std::abs(2 * (i - left) - 1), std::abs(2 * (j - top) - 1)) < 4;
            least = isNear ? std::min(least, sample) : least;
            greatest = isNear ? std::max(greatest, sample) : greatest;
            sum += weight * sample;
            weights += weight;
        }
    }
    const double range = greatest - least;
    return std::clamp(sum / weights, least - kUndershoot * range, greatest + kOvershoot * range);
}

} // namespace

TEST(AlignedRow, KernelsEqualTheirDefinition)
{
    using enum Interpolation;
    for (const auto interpolation : {kBicubic, kLanczos3, kLanczos4}) {
        CStlImage image(RandomImage({290, 23}, 1, 3)); // more columns than are sampled at a time
        image.SetPixelGrayRaw(20, 11, 3e4F, 0);
        image.SetPixelGrayRaw(60, 11, NAN, 0);
        image.SetPixelGrayRaw(90, 11, INFINITY, 0);
        const Plain plain(image);
        for (const auto& [dx, dy, degrees] : {std::tuple{3.0, -2.0, 0.0},
                                              {-4.3, 2.5, 0.0},
                                              {0.0, 0.25, 0.0},
                                              {0.4, 0.0, 0.0},
                                              {0.3, 0.7, 2.0},
                                              {1.0, 1.0, 90.0}}) {
            const auto alignment = Alignment::Turned(dx, dy, degrees, {145.0, 11.0});
            for (int y = -2; y < 30; ++y) {
                const RowSpan rows = RowsTouched(alignment, 0, y, 300, 290, 23, interpolation);
                std::vector<float> held(plain.samples.begin() + 290 * rows.first,
                                        plain.samples.begin() + 290 * rows.end);
                const PlaneRows plane{held.data(), 290, 23, rows.first, plain.samples.back()};
                std::vector<double> values(300);
                std::vector<int> inside(300);
                SampleAlignedStretch(plane, alignment, 0, y, 300, -7.0, values.data(), inside.data(), interpolation);
                for (int x = 0; x < 300; ++x) {
                    const Position at = alignment.Map(x, y);
                    const bool isInside = at.x >= 0.0 && at.x < 290 && at.y >= 0.0 && at.y < 23;
                    ASSERT_EQ(inside[x], isInside) << x << ' ' << y;
                    const bool isWhole = at.x == std::floor(at.x) && at.y == std::floor(at.y);
                    const double expected = !isInside ? -7.0
                                            : isWhole ? plain.At(static_cast<int>(at.x), static_cast<int>(at.y), 0)
                                                      : PlainKernel(plain, interpolation, at.x, at.y, 0);
                    ASSERT_TRUE(
                        Near(static_cast<float>(values[x]), static_cast<float>(expected), 0, isWhole ? 0.0 : 0.2))
                        << x << ' ' << y << ' ' << expected;
                }
            }
        }
    }
}

TEST(AlignedRow, KernelsKeepAConstant)
{
    const std::vector<float> samples(40 * 30, 1234.567F);
    const PlaneRows plane{samples.data(), 40, 30, 0, samples.back()};
    for (const double degrees : {0.0, 3.0}) {
        double values[20];
        int inside[20];
        SampleAlignedStretch(plane, Alignment::Turned(0.3, 0.4, degrees, {20.0, 15.0}), 10, 15, 20, 0.0, values, inside,
                             Interpolation::kLanczos3);
        for (const double value : values) {
            EXPECT_EQ(static_cast<float>(value), samples[0]);
        }
    }
}

TEST(AlignedRow, EqualsTheReaderOfSingleSamples)
{
    constexpr double kShifts[] = {0.0,   1.0,  -3.0,  0.5, -0.37, 2.999, 1e-17,        -1e-17,        1e-9,
                                  -1e-9, 3e-6, -1e-5, 1e6, -4e9,  NAN,   0.9999999999, -2.0000000001, INFINITY};
    ForEachImage([&](CStlImage& image) {
        const CfPoint centre(image.GetWidth() * 0.4, image.GetHeight() * 0.6);
        image.SetStdCtr(centre);
        Random random(5);
        for (const double degrees : {0.0, 1e-9, 7.3, 90.0, 180.0, -33.3}) {
            for (const double dx : kShifts) {
                const Alignment alignment = Alignment::Turned(dx, kShifts[random.Whole(0, 17)], degrees, centre);
                for (int y = -1; y <= image.GetHeight(); ++y) {
                    Check(image, alignment, y, image.GetWidth() + 3);
                }
                Check(image, alignment, 0, 1);
            }
        }
        Check(image, {0.4, -0.3, 0.6, 0.8, 1.7, centre}, 0, image.GetWidth() + 3);
    });
}

TEST(AlignedRow, SamplesAtThePositionsOfBentMaps)
{
    ForEachImage([&](CStlImage& image) {
        Random random(8);
        for (int i = 0; i < 6; ++i) {
            const Mapping mapping = BentMap(random, image.GetWidth(), i % 2 == 0);
            const int width = image.GetWidth();
            const int height = image.GetHeight();
            const PlaneRows rows{image.GetImageAdr(0, 0, 0), width, height, 0,
                                 image.GetPixelGrayRaw(width - 1, height - 1, 0)};
            for (int y = -1; y <= height && image.GetPlanes() == 1; ++y) {
                std::vector<double> values(static_cast<std::size_t>(width));
                std::vector<int> inside(values.size());
                SampleAlignedStretch(rows, mapping, 1, y, width, -5.25, values.data(), inside.data());
                for (int x = 0; x < width; ++x) {
                    const Position at = mapping.Map(x + 1, y);
                    const bool isInside = at.x >= 0.0 && at.x < width && at.y >= 0.0 && at.y < height;
                    ASSERT_EQ(inside[x], isInside ? 1 : 0);
                    ASSERT_TRUE(Same(values[x], isInside ? image.GetPixelGrayRaw(at.x, at.y, 0) : -5.25));
                }
            }
        }
    });
}

TEST(AlignedRow, MappingsOfOtherFramesAreThoseOfTheirPositions)
{
    Random random(9);
    for (int i = 0; i < 300; ++i) {
        const Mapping mapping =
            i % 3 < 2 ? BentMap(random, 40, i % 3 == 0) : Mapping({2.5, -3.0, 0.6, 0.8, 1.7, CfPoint(30.5, 20.5)});
        const Position at{random.Between(0, 40), random.Between(0, 40)};
        const Position there = mapping.Map(at.x, at.y);
        const Position back = mapping.Inverse(there);
        EXPECT_NEAR(std::hypot(back.x - at.x, back.y - at.y), 0.0, 1e-6);
        const Position same = mapping.From(7, -3.5).Scaled(2.0).Map(2.0 * (at.x - 7) + 0.5, 2.0 * (at.y + 3.5) + 0.5);
        EXPECT_NEAR(std::hypot(same.x - there.x, same.y - there.y), 0.0, 1e-9);
    }
}

TEST(AlignedRow, RowsTouchedBoundWhatIsRead)
{
    Random random(6);
    for (int i = 0; i < 100000; ++i) {
        const double degrees = i % 3 * random.Between(-180, 180);
        const Mapping mapping =
            i % 2 == 0
                ? Mapping(Alignment::Turned(random.Between(-20, 20), random.Between(-20, 20), degrees, {30.5, 20.5}))
                : BentMap(random, 8, i % 4 == 1);
        const int y = random.Whole(-5, 65);
        const RowSpan rows = RowsTouched(mapping, 3, y, 40, 50, 60);
        const Position at = mapping.Map(random.Whole(3, 42), y);
        if (at.x >= 0.0 && at.x < 50 && at.y >= 0.0 && at.y < 60) {
            ASSERT_LE(rows.first, static_cast<int>(at.y));
            ASSERT_GE(rows.end, std::min(static_cast<int>(at.y) + 3, 60)); // two rows, and what follows in storage
            ASSERT_LE(rows.end, 60);
        }
    }
}
