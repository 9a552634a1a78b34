#include "corvane/tone/auto_level.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "corvane/platform/application.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

constexpr double kHuge = 1.1342744887950962e38;

/// The rectangle that an operation works on.
CRect Clip(const Plain& image, const CRect* rect)
{
    const auto clamp = [](int v, int most) { return std::min(std::max(v, 0), most); };
    const CRect area = rect == nullptr ? CRect(0, 0, image.width, image.height) : *rect;
    return {clamp(area.left, image.width), clamp(area.top, image.height), clamp(area.right, image.width),
            clamp(area.bottom, image.height)};
}

/// The sample of a plane, or with plane -1 the luminance.
double Value(const Plain& image, int x, int y, int plane)
{
    return plane >= 0 ? image.At(x, y, plane)
                      : 0.299 * image.At(x, y, 0) + 0.587 * image.At(x, y, 1) + 0.114 * image.At(x, y, 2);
}

/// The values that statistics are taken from.
std::vector<double> Sampled(const Plain& image, const CRect& area, int plane)
{
    std::vector<double> values;
    const int step = std::max(static_cast<int>(image.width * image.height * 1e-6), 1);
    for (int y = area.top; y < area.bottom; y += step) {
        for (int x = area.left; x < area.right; x += step) {
            bool blank = false;
            for (int p = std::max(plane, 0); p <= (plane < 0 ? 2 : plane); ++p) {
                blank = blank || image.IsBlank(image.At(x, y, p));
            }
            if (!blank) {
                values.push_back(Value(image, x, y, plane));
            }
        }
    }
    return values;
}

/// One pass over the values within 3 sigma; false when there are none.
bool Pass(const std::vector<double>& values, double& mean, double& sigma)
{
    double sum = 0.0;
    int count = 0;
    for (const double v : values) {
        if (mean - 3.0 * sigma < v && v < mean + 3.0 * sigma) {
            sum += v;
            ++count;
        }
    }
    mean = sum / count;
    double squares = 0.0;
    for (const double v : values) {
        if (mean - 3.0 * sigma < v && v < mean + 3.0 * sigma) {
            squares += (v - mean) * (v - mean);
        }
    }
    const double now = std::sqrt(squares / count);
    sigma = now != 0.0 ? now : sigma;
    return count > 0;
}

/// The extremes that levels are cut to, of all samples or the luminance of all pixels.
std::pair<double, double> Extremes(const Plain& image, int plane)
{
    std::pair<double, double> found{1e300, -1e300};
    for (int i = 0; i < image.width * image.height; ++i) {
        const double v = Value(image, i % image.width, i / image.width, plane);
        if (!image.IsBlank(v)) {
            found = {std::min(found.first, v), std::max(found.second, v)};
        }
    }
    return found;
}

/// Automatic levels in their plain form.
CStlImage PlainDo(const CStlImage& source, double lowSigma, double highSigma, bool perPlane, const CRect* rect)
{
    CStlImage result(source);
    const Plain image(source);
    double sigma = kHuge;
    const int first = image.Colour() && !perPlane ? -1 : 0;
    const int last = perPlane ? image.planes - 1 : first;
    for (int plane = first; plane <= last; ++plane) {
        const std::vector<double> values = Sampled(image, Clip(image, rect), plane);
        if (values.empty()) {
            continue;
        }
        double mean = 0.0;
        double before = -3.4028234663852886e38;
        double spread = kHuge;
        while (Pass(values, mean, spread) && !image.Colour() && std::floor(mean) != std::floor(before)) {
            before = mean;
        }
        sigma = spread == kHuge ? sigma : spread;
        const auto [min, max] = Extremes(image, plane);
        const double low = mean - lowSigma * sigma < min ? min : mean - lowSigma * sigma;
        const double high = mean + highSigma * sigma > max ? max : mean + highSigma * sigma;
        result.SetLevel(perPlane && image.Colour() ? plane : -1, low, high);
    }
    return result;
}

/// Where the levels lie in the distribution of the data, in its plain form.
std::pair<double, double> PlainGet(const CStlImage& source, const CRect* rect)
{
    const Plain image(source);
    CRect area = Clip(image, rect);
    double low = 1e300;
    double high = -1e300;
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            const auto shown = [&](int p) { return image.To256(image.At(x, y, p), p); };
            const double luminance =
                image.Colour() ? 0.299 * shown(0) + 0.587 * shown(1) + 0.114 * static_cast<float>(shown(2)) : 0.0;
            low = std::min(low, image.Colour() ? luminance : image.At(x, y, 0));
            high = std::max(high, image.Colour() ? luminance : image.At(x, y, 0));
        }
    }
    low = image.Colour() ? image.ToRaw(low, 0) : low;
    high = image.Colour() ? image.ToRaw(high, 0) : high;
    std::vector<int> hist(5000);
    CStlImage(source).GetHistGram(hist.data(), 5000, low, high, -1, &area, 0, 0);
    const double range = high - low;
    const double total = area.Width() * area.Height() + 5000.0;
    const auto start = [&](int i) { return low + i * range * 0.0002; };
    const auto isOff = [&](double level) { return level <= low || level >= high; };
    std::pair<double, double> found{0.0, 1.0};
    double sum = 0.0;
    for (int i = 0; i < 5000 && found.first == 0.0; ++i) {
        sum += hist[static_cast<std::size_t>(i)] + 1.0;
        found.first = start(i) > image.min[0] ? sum / total : 0.0;
    }
    sum = 0.0;
    for (int i = 4999; i > 0 && found.second == 1.0; --i) {
        sum += hist[static_cast<std::size_t>(i)] + 1.0;
        found.second =
            start(i) < image.max[0] ? 1.0 - (sum - hist[static_cast<std::size_t>(i - 1)] - 1.0) / total : 1.0;
    }
    return {isOff(image.min[0]) ? (image.min[0] - low) / range : found.first,
            isOff(image.max[0]) ? (image.max[0] - low) / range : found.second};
}

void ExpectLevels(const CStlImage& image, const CStlImage& expected)
{
    for (int p = 0; p < 3; ++p) {
        const double slack = 1e-11 * (std::fabs(expected.GetLevelMin(p)) + std::fabs(expected.GetLevelMax(p)) + 1.0);
        EXPECT_NEAR(image.GetLevelMin(p), expected.GetLevelMin(p), slack);
        EXPECT_NEAR(image.GetLevelMax(p), expected.GetLevelMax(p), slack);
    }
}

} // namespace

TEST(AutoLevel, DoEqualsThePlainForm)
{
    const auto check = [](const CStlImage& source, CRect* rect) {
        for (const auto& [low, high, perPlane] :
             {std::tuple{0.2, 1.0, 0}, {0.2, 1.0, 1}, {0.0, 0.0, 0}, {9.0, 9.0, 1}}) {
            CImgAutoLevel image(source);
            image.Do(low, high, perPlane, rect);
            ExpectLevels(image, PlainDo(source, low, high, perPlane != 0, rect));
        }
    };
    ForEachImage([&](CStlImage& source) { ForEachRect(source, [&](CRect* rect) { check(source, rect); }); }, true);
    for (int seed = 0; seed < 50; ++seed) { // far outliers, so that what is clipped changes the result
        CStlImage skewed = RandomImage({40, 1}, 1, static_cast<std::uint64_t>(seed));
        float* const row = skewed.GetImageAdr(0, 0, 0);
        std::transform(row, row + 40, row, [](float v) { return std::pow(v / 300.0F, 15.0F) * 1000.0F; });
        check(skewed, nullptr);
    }
    CRect rect(3, 5, 1990, 999);
    check(RandomImage({2000, 1000}, 1, 14), &rect); // every second column and row
}

TEST(AutoLevel, ConstantBlankAndEmptyImages)
{
    CImgAutoLevel image(CStlImage(-32, 4, 4, 1, 1.0, 0.0, 1));
    std::fill_n(image.GetImageAdr(0, 0, 0), 16, 100.0F);
    *image.GetImageAdr(1, 1, 0) = std::numeric_limits<float>::quiet_NaN();
    int shown = 0;
    corvane::platform::SetWaitCursorHandler([&](bool on) { shown = shown * 10 + (on ? 1 : 2); });
    image.Do(0.2, 1.0, 0, nullptr);
    corvane::platform::SetWaitCursorHandler({});
    EXPECT_EQ(shown, 12);
    EXPECT_EQ(std::pair(image.GetLevelMin(0), image.GetLevelMax(0)), std::pair(100.0, 100.0));
    image.SetBlankUsed(1);
    image.SetBlank(100);
    image.SetLevel(0, 1.0, 2.0);
    image.Do(0.2, 1.0, 0, nullptr); // nothing but blanks: levels stay
    EXPECT_EQ(std::pair(image.GetLevelMin(0), image.GetLevelMax(0)), std::pair(1.0, 2.0));
    CImgAutoLevel flatGreen(RandomImage({5, 5}, 3, 15));
    std::fill_n(flatGreen.GetImageAdr(0, 0, 1), 25, 40.0F); // its sigma of 0 keeps that of the plane before
    const CStlImage expected = PlainDo(flatGreen, 0.2, 1.0, true, nullptr);
    flatGreen.Do(0.2, 1.0, 1, nullptr);
    ExpectLevels(flatGreen, expected);
}

TEST(AutoLevel, GetEqualsThePlainForm)
{
    ForEachImage(
        [](CStlImage& source) {
            ForEachRect(source, [&](CRect* rect) {
                for (const auto& [min, max] :
                     {std::pair{10.25, 211.5}, {-50.0, 900.0}, {100.0, 101.0}, {310.0, -30.0}}) {
                    CImgAutoLevel image(source);
                    image.CImage::SetLevel(0, min, max);
                    const auto [low, high] = PlainGet(image, rect);
                    double lowFraction = 7.0;
                    double highFraction = 7.0;
                    image.Get(lowFraction, highFraction, rect);
                    const CRect area = Clip(Plain(image), rect);
                    const bool empty = area.Width() <= 0 || area.Height() <= 0; // it ends, and no more is promised
                    EXPECT_TRUE(empty || Same(lowFraction, low)) << lowFraction << ' ' << low;
                    EXPECT_TRUE(empty || Same(highFraction, high)) << highFraction << ' ' << high;
                }
            });
        },
        true);
}
