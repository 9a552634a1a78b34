#include "corvane/tone/auto_level.h"

#include <cmath>
#include <numeric>
#include <ranges>

#include "corvane/core/walk.h"
#include "corvane/platform/application.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

using Pair = std::pair<double, double>;

/// The sample of a plane, or with plane -1 the luminance.
double Value(const Plain& image, int x, int y, int plane)
{
    return plane >= 0 ? image.At(x, y, plane) : image.Bright([&](int p) { return image.At(x, y, p); });
}

/// The values that statistics are taken from.
std::vector<double> Sampled(const Plain& image, const CRect& area, int plane)
{
    std::vector<double> values;
    const int step = std::max(static_cast<int>(image.width * image.height * 1e-6), 1);
    for (int y = area.top; y < area.bottom; y += step) {
        for (int x = area.left; x < area.right; x += step) {
            const double v = Value(image, x, y, plane);
            const auto isBlank = [&](int p) { return image.IsBlank(image.At(x, y, p)); };
            if (std::isfinite(v) && !(plane < 0 ? isBlank(0) || isBlank(1) || isBlank(2) : isBlank(plane))) {
                values.push_back(v);
            }
        }
    }
    return values;
}

/// One pass over the values within 3 sigma.
void Pass(const std::vector<double>& values, double& mean, double& sigma)
{
    const auto sumNear = [&](auto term) {
        return std::accumulate(values.begin(), values.end(), 0.0, [&](double sum, double v) {
            return mean - 3.0 * sigma < v && v < mean + 3.0 * sigma ? sum + term(v) : sum;
        });
    };
    const double count = sumNear([](double) { return 1.0; });
    mean = sumNear([](double v) { return v; }) / count;
    const double squares = sumNear([&](double v) { return (v - mean) * (v - mean); });
    sigma = squares != 0.0 ? std::sqrt(squares / count) : sigma;
}

/// The extremes of value(x, y) over all pixels, NaN left out.
template <class ValueOf>
Pair Extremes(const Plain& image, ValueOf value)
{
    Pair found{1e300, -1e300};
    image.ForEach([&](int x, int y, int) {
        const double v = value(x, y);
        found = {v < found.first ? v : found.first, v > found.second ? v : found.second};
    });
    return found;
}

/// Automatic levels in their plain form.
CStlImage PlainDo(const CStlImage& source, double lowSigma, double highSigma, bool perPlane, const CRect* rect)
{
    CStlImage result(source);
    const Plain image(source);
    const bool colour = image.planes > 2;
    constexpr double kAll = 1.1342744887950962e38; // admits every value
    double sigma = kAll;
    for (const int plane : !colour ? std::vector{0} : perPlane ? std::vector{0, 1, 2} : std::vector{-1}) {
        const std::vector<double> values = Sampled(image, corvane::WorkingArea(source, rect), plane);
        const auto [min, max] = Extremes(image, [&](int x, int y) {
            const double v = Value(image, x, y, plane);
            return image.IsBlank(v) ? NAN : v;
        });
        if (values.empty() || min > max) {
            continue;
        }
        double mean = 0.0;
        double before = -3.4028234663852886e38;
        double spread = kAll;
        Pass(values, mean, spread);
        while (!colour && std::floor(mean) != std::floor(before)) {
            before = mean;
            Pass(values, mean, spread);
        }
        sigma = spread == kAll ? sigma : spread;
        result.SetLevel(colour && perPlane ? plane : -1, std::max(mean - lowSigma * sigma, min),
                        std::min(mean + highSigma * sigma, max));
    }
    return result;
}

/// Where the levels lie in the distribution of the data, in its plain form.
Pair PlainGet(const CStlImage& source, const CRect* rect)
{
    const Plain image(source);
    CRect area = corvane::WorkingArea(source, rect);
    const auto [least, most] = Extremes(image, [&](int x, int y) {
        const auto shown = [&](int p) {
            const double v = image.To256(image.At(x, y, p), p);
            return p == 2 ? static_cast<float>(v) : v;
        };
        return !area.PtInRect({x, y}) ? NAN : image.Colour() ? image.Bright(shown) : image.At(x, y, 0);
    });
    if (least > most) { // no pixel
        return {0.0, 1.0};
    }
    const double low = image.Colour() ? image.ToRaw(least, 0) : least;
    const double high = image.Colour() ? image.ToRaw(most, 0) : most;
    std::vector<int> hist(5000);
    CStlImage(source).GetHistGram(hist.data(), 5000, low, high, -1, &area, 0, 0);
    const auto counted = [&](auto first, auto end) { // every bin counts one more than it holds
        return std::accumulate(hist.data() + first, hist.data() + end, static_cast<double>(end - first));
    };
    const auto start = [=](int i) { return low + i * (high - low) * 0.0002; };
    // The first bin that begins above the lower level, and the last but bin 0 that begins below the upper one.
    const auto i = std::ranges::count_if(std::views::iota(0, 5000), [&](int n) { return start(n) <= image.min[0]; });
    const auto k = std::ranges::count_if(std::views::iota(1, 5000), [&](int n) { return start(n) < image.max[0]; });
    const double total = area.Width() * area.Height() + 5000.0;
    const double below = i == 5000 ? 0.0 : counted(0, i + 1) / total;
    const double above = k == 0 ? 1.0 : 1.0 - (counted(k, 5000) - counted(k - 1, k)) / total;
    const auto isOff = [&](double level) { return level <= low || level >= high; };
    return {isOff(image.min[0]) ? (image.min[0] - low) / (high - low) : below,
            isOff(image.max[0]) ? (image.max[0] - low) / (high - low) : above};
}

void CheckDo(const CStlImage& source, CRect* rect)
{
    for (const auto& [low, high, perPlane] : {std::tuple{0.2, 1.0, 0}, {0.2, 1.0, 1}, {0.0, 0.0, 0}, {9.0, 9.0, 1}}) {
        CImgAutoLevel image(source);
        image.Do(low, high, perPlane, rect);
        const Plain found(image);
        const Plain expected(PlainDo(source, low, high, perPlane != 0, rect));
        for (int p = 0; p < 3; ++p) {
            const double slack = 1e-11 * (std::fabs(expected.min[p]) + std::fabs(expected.max[p]) + 1.0);
            EXPECT_NEAR(found.min[p], expected.min[p], slack);
            EXPECT_NEAR(found.max[p], expected.max[p], slack);
        }
    }
}

void CheckGet(const CStlImage& source, CRect* rect)
{
    for (const auto& [min, max] : {Pair{10.25, 211.5}, {-50.0, 900.0}, {100.0, 101.0}, {310.0, -30.0}}) {
        CImgAutoLevel image(source);
        image.CImage::SetLevel(0, min, max);
        const Pair expected = PlainGet(image, rect);
        Pair found{7.0, 7.0};
        image.Get(found.first, found.second, rect);
        EXPECT_TRUE(Same(found.first, expected.first) && Same(found.second, expected.second));
    }
}

} // namespace

TEST(AutoLevel, DoEqualsThePlainForm)
{
    ForEachImage([](CStlImage& source) { ForEachRect(source, [&](CRect* rect) { CheckDo(source, rect); }); });
    CheckDo(RandomImage({5, 5}, 2, 16), nullptr);
    for (int seed = 0; seed < 50; ++seed) { // far outliers, so that what is clipped changes the result
        CStlImage skewed = RandomImage({40, 1}, 1, static_cast<std::uint64_t>(seed));
        float* const row = skewed.GetImageAdr(0, 0, 0);
        std::transform(row, row + 40, row, [](float v) { return std::pow(v / 300.0F, 15.0F) * 1000.0F; });
        CheckDo(skewed, nullptr);
    }
    CRect rect(3, 5, 1990, 999);
    CheckDo(RandomImage({2000, 1000}, 1, 14), &rect); // every second column and row
}

TEST(AutoLevel, CutsTheLevelsOfAConstantImageUnderTheWaitCursor)
{
    CImgAutoLevel image(Make(3, 1, 1, [](int x, int, int) { return x == 2 ? NAN : 100.0F; }));
    int shown = 0;
    corvane::platform::SetWaitCursorHandler([&](bool on) { shown = shown * 10 + (on ? 1 : 2); });
    image.Do(0.2, 1.0, 0, nullptr);
    corvane::platform::SetWaitCursorHandler({});
    EXPECT_EQ(shown, 12);
    EXPECT_EQ(Pair(image.GetLevelMin(0), image.GetLevelMax(0)), Pair(100.0, 100.0));
}

TEST(AutoLevel, PlanesWithoutSpreadOrSamples)
{
    CStlImage image = RandomImage({6, 5}, 3, 15);
    CRect area(0, 0, 6, 3);
    std::fill_n(image.GetImageAdr(0, 0, 1), 18, -500.0F); // nothing but blanks: its levels stay
    std::fill_n(image.GetImageAdr(0, 0, 2), 18, 40.0F);   // its sigma of 0 keeps that of the first plane
    image.SetBlankUsed(1);
    image.SetBlank(-500);
    CheckDo(image, &area);
    for (int p = 0; p < 3; ++p) {
        std::fill_n(image.GetImageAdr(0, 0, p), 30, 150.0F - 50.0F * static_cast<float>(p));
    }
    for (const int blank : {100, 109}) { // of every pixel's green, or of its luminance
        image.SetBlank(blank);
        CheckDo(image, nullptr);
    }
}

TEST(AutoLevel, GetEqualsThePlainForm)
{
    ForEachImage([](CStlImage& source) { ForEachRect(source, [&](CRect* rect) { CheckGet(source, rect); }); }, true);
    double low = 9.0;
    double high = 9.0;
    CImgAutoLevel(RandomImage({5, 5}, 2, 16)).Get(low, high, nullptr); // a plane too few for its brightness
    EXPECT_TRUE(low < high && high < 9.0);
}
