#include "corvane/combine/median_composit.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

constexpr double kDegree = 0.017453292522222223;

enum class Method { kMedian, kClippedMedian, kClippedMean };

/// The clipping in its plain form: sorts, and returns what lies strictly within 3 sigma of the median.
std::vector<double> PlainClipping(std::vector<double>& values)
{
    std::sort(values.begin(), values.end());
    const auto n = static_cast<double>(values.size());
    double sum = 0.0;
    double squares = 0.0;
    for (const double v : values) {
        sum += v;
    }
    for (const double v : values) {
        squares += (v - sum / n) * (v - sum / n);
    }
    const double reach = 3.0 * std::sqrt(squares / n);
    const double median = values[values.size() / 2];
    std::vector<double> kept;
    std::copy_if(values.begin(), values.end(), std::back_inserter(kept),
                 [&](double v) { return median - reach < v && v < median + reach; });
    return kept;
}

double PlainStatistic(Method method, std::vector<double> values)
{
    if (values.size() < 2) {
        return values.empty() ? 0.0 : values[0];
    }
    if (std::any_of(values.begin(), values.end(), [](double v) { return std::isnan(v); })) {
        return std::nan("");
    }
    const std::vector<double> kept = PlainClipping(values);
    if (method == Method::kMedian) {
        return values[values.size() / 2];
    }
    if (method == Method::kClippedMedian) {
        return kept.empty() ? values[0] : kept[kept.size() / 2];
    }
    const long double sum = std::accumulate(kept.begin(), kept.end(), 0.0L);
    return static_cast<double>(sum / static_cast<long double>(kept.size()));
}

/// A frame and how it is placed.
struct Frame {
    CStlImage image;
    double dx = 0.0;
    double dy = 0.0;
    double angle = 0.0;
};

/// One row of the composite in its plain form; frames change as Store changes them.
void PlainRow(Plain& target, int row, std::vector<Frame>& frames, Method method)
{
    struct Pixel {
        std::vector<double> values;
        double lastInvalid = 0.0;
        bool anyInvalid = false;
    };
    std::vector<Pixel> pixels(static_cast<std::size_t>(target.width * target.planes));
    for (Frame& frame : frames) {
        const int bits = frame.image.GetOrgBitsPixel();
        const double byBits = bits == -64 || bits == -32 || bits == 32 ? -2147483648.0 : bits == 16 ? -32768.0 : 0.0;
        const double outside = frame.image.IsBlankUsed() ? frame.image.GetBlank() : byBits;
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const int x = static_cast<int>(i) % target.width;
            const int p = static_cast<int>(i) / target.width;
            int isOutside = 0;
            const double v = frame.image.GetPixelGrayRaw(x, row, frame.dx, frame.dy, std::sin(frame.angle * kDegree),
                                                         std::cos(frame.angle * kDegree), 1.0, p, outside, 0,
                                                         &isOutside, nullptr, nullptr);
            frame.image.SetBlankUsed(frame.image.IsBlankUsed() || isOutside);
            pixels[i].values.push_back(v);
            if (isOutside || (frame.image.IsBlankUsed() && std::trunc(v) == frame.image.GetBlank())) {
                pixels[i].lastInvalid = v;
                pixels[i].anyInvalid = true;
            }
        }
    }
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        target.At(static_cast<int>(i) % target.width, row, static_cast<int>(i) / target.width) =
            static_cast<float>(pixels[i].anyInvalid ? pixels[i].lastInvalid : PlainStatistic(method, pixels[i].values));
    }
}

void CombineRow(CImgMedianComposit& composite, Method method)
{
    method == Method::kMedian          ? composite.Calc()
    : method == Method::kClippedMedian ? composite.CalcClipping()
                                       : composite.AddAvrCalcClipping();
}

/// Stacks the frames both ways and compares target and frames.
void Check(const std::vector<Frame>& frames, Size size, int planes)
{
    for (const Method method : {Method::kMedian, Method::kClippedMedian, Method::kClippedMean}) {
        SCOPED_TRACE(testing::Message() << frames.size() << " frames, method " << static_cast<int>(method));
        CStlImage target = RandomImage(size, planes, 51);
        Plain expected(target);
        std::vector<Frame> own(frames);
        std::vector<Frame> other(frames);
        CImgMedianComposit composite(&target);
        for (int y = 0; y < size.height; ++y) {
            for (Frame& frame : own) {
                composite.Store(&frame.image, y, frame.dx, frame.dy, frame.angle);
            }
            CombineRow(composite, method);
            PlainRow(expected, y, other, method);
        }
        ASSERT_TRUE(Agree(target, expected, method == Method::kClippedMean ? 1 : 0));
        for (std::size_t i = 0; i < frames.size(); ++i) {
            ASSERT_EQ(own[i].image.IsBlankUsed(), other[i].image.IsBlankUsed());
        }
    }
}

} // namespace

TEST(MedianComposit, EveryNumberOfFrames)
{
    for (int n = 0; n <= 41; ++n) {
        Random random(static_cast<std::uint64_t>(n) + 60);
        std::vector<Frame> frames;
        for (int i = 0; i < (n == 41 ? 200 : n); ++i) {
            frames.push_back({RandomImage({37, 1}, 1, random.Next())});
            float* const row = frames.back().image.GetImageAdr(0, 0, 0);
            for (int x = 0; x < 37; x += 4) { // beside distinct values: few distinct, constant, one outlier
                row[x] = static_cast<float>(random.Whole(0, 3));
                row[(x + 1) % 37] = 5.5F;
                row[(x + 2) % 37] = i == n / 2 ? 10000.0F : 5.5F;
            }
            row[35] = i == n / 3 ? std::nanf("") : row[35];
            // Of 18 frames: a sigma of 1.5, so that -3.5 lies exactly on the lower bound, and is left out.
            row[36] = i == 0 ? -3.5F : i == 17 ? 3.5F : i % 2 == 0 ? -1.0F : 1.0F;
        }
        Check(frames, {37, 1}, 1);
    }
}

TEST(MedianComposit, PlacedFramesWithBlanksAndDifferentSizes)
{
    const double shifts[] = {0.0, 1.0, -2.0, 0.37, -0.5, 1e-17};
    const int bits[] = {16, 8, -32, -64, 32, 16};
    for (const int planes : {1, 3}) {
        std::vector<Frame> frames;
        for (int i = 0; i < 6; ++i) {
            const Size size{19 + i % 3, 14 - i % 2};
            CStlImage image = RandomImage(size, i == 4 ? 1 : planes, static_cast<std::uint64_t>(i) + 70);
            image.SetStdCtr(9.25 + i, 6.5);
            image.SetOrgBitsPixel(bits[i]);
            if (i == 1) {
                SprinkleOddities(image, 71);
            } else if (i == 2) {
                Sprinkle(image, {0.5F, -0.5F}, 72); // blank from the first pixel outside on: the unset value is 0
            }
            frames.push_back({image, shifts[i], shifts[5 - i], i % 2 == 0 ? 0.0 : 3.5 * i});
        }
        Check(frames, {19, 14}, planes);
        Sprinkle(frames[2].image, {0.5F}, 73);
        Sprinkle(frames[2].image, {0.5F}, 74);
        Check({{frames[2].image, -4.0}, {frames[0].image}}, {19, 2}, planes); // outside at the end of row 0
        Check({frames.begin() + 2, frames.begin() + 4}, {641, 3}, planes);
    }
}

TEST(MedianComposit, ReportsThroughTheTarget)
{
    ProgressWindow window;
    CStlImage target = RandomImage({3, 4}, 1, 1);
    target.SetProgressHandle(window.Handle());
    CStlImage frame = RandomImage({3, 4}, 1, 2);
    {
        CImgMedianComposit composite(&target);
        for (const int y : {3, 1, 0, 2}) {
            composite.Store(&frame, y, 0.0, 0.0, 0.0);
            composite.Calc();
        }
        composite.Store(&frame, 0, 0.0, 0.0, 0.0); // left over
    }
    EXPECT_EQ(window.Take(), Counted("Processing median composite...", 4, {1, 1, 1, 1}));
    EXPECT_EQ(Samples(target), Samples(frame));
}
