#include <algorithm>
#include <climits>

#include "corvane/core/stl_image.h"
#include "corvane/core/threads.h"
#include "corvane/measure/pixel_info.h"
#include "corvane/platform/global_memory.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

std::vector<int> PlainHistogram(const Plain& image, int bins, double lo, double hi, int plane, const CRect& rect)
{
    std::vector<int> hist(static_cast<std::size_t>(bins), 0);
    const bool bright = plane == -1 && image.Colour();
    if (bright) {
        const double low = image.Bright([&](int p) { return image.min[p]; });
        const double high = image.Bright([&](int p) { return image.max[p]; });
        lo = (lo - low) * 255.0 / (high - low);
        hi = (hi - low) * 255.0 / (high - low);
    }
    image.ForEach([&](int x, int y, int p) {
        const auto isBlank = [&](int q) { return image.IsBlank(image.At(x, y, q)); };
        const auto part = [&](double weight, int q) {
            return weight * (image.At(x, y, q) - image.min[q]) * (255.0 / image.range[q]);
        };
        const double v = bright ? part(0.587, 1) + part(0.114, 2) + part(0.299, 0) : image.At(x, y, p);
        const bool blank = bright ? isBlank(0) && isBlank(1) && isBlank(2) : isBlank(p);
        if (p == std::max(plane, 0) && rect.PtInRect({x, y}) && !blank && lo <= v && v <= hi) {
            const double place = (v - lo) / (hi - lo) * bins;
            const int bin = place > 0.0 ? static_cast<int>(std::min(place, bins - 1.0)) : 0;
            ++hist[static_cast<std::size_t>(bin)];
        }
    });
    return hist;
}

/// Everything that is found by looking at all samples, as numbers that show each bit.
std::vector<double> AllThatRowsComeTo(CStlImage& image, int threads)
{
    corvane::SetThreads(threads);
    std::vector<double> found(12);
    CImgPixelInfo(image).Calc(CRect(-3, 5, 500, 900), &found[0], &found[3], &found[6], &found[9]);
    image.CalcMinMax();
    std::vector<int> hist(300);
    image.GetHistGram(hist.data(), 300, -50.0, 90.0, -1, nullptr, 0, 0);
    found.insert(found.end(), hist.begin(), hist.end());
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        double min = 0.0;
        double max = 0.0;
        image.GetMinMax(plane, &min, &max);
        found.insert(found.end(), {min, max, image.GetMinPixel(plane), image.GetAvrGrayRaw(plane)});
    }
    const HDIB dib = image.GetDib(8);
    const auto* const bytes = static_cast<const unsigned char*>(GlobalLock(dib));
    found.insert(found.end(), bytes, bytes + GlobalSize(dib));
    GlobalFree(dib);
    CStlImage changed(image);
    changed.ChangeBits(16, 1, 1);
    found.push_back(changed.GetPixel(520, 700, 0));
    corvane::SetThreads(0);
    return found;
}

} // namespace

TEST(Statistics, Histogram)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        for (const int plane : {-1, 0, plain.planes - 1}) {
            for (const auto& [lo, hi] : {std::pair{-20.0, 300.0}, {50.0, 60.5}, {400.0, 500.0}, {80.0, 20.0}}) {
                for (const int bins : {1, 7, 5000}) {
                    ForEachRect(image, [&](CRect* rect) {
                        std::vector<int> hist(static_cast<std::size_t>(bins) + 1, -99);
                        ASSERT_EQ(image.GetHistGram(hist.data(), bins, lo, hi, plane, rect, 0, 0),
                                  static_cast<int>(2.0 * plain.height * plain.width / bins));
                        const CRect area = rect ? *rect : CRect(0, 0, plain.width, plain.height);
                        std::vector<int> expected = PlainHistogram(plain, bins, lo, hi, plane, area);
                        expected.push_back(-99);
                        ASSERT_EQ(hist, expected);
                    });
                }
            }
        }
    });
}

TEST(Statistics, HistogramBinsAndProgress)
{
    ProgressWindow window;
    CStlImage image(-32, 5, 1, 1, 1.0, 0.0, 1);
    image.SetProgressHandle(window.Handle());
    std::ranges::copy(std::vector{0.0F, 255.0F, 256.0F, -0.001F, 127.5F}, image.GetImageAdr(0, 0, 0));
    std::vector<int> hist(256);
    image.GetHistGram(hist.data(), 256, 0.0, 255.0, 0, nullptr, 1, 0);
    EXPECT_EQ((std::vector{hist[0], hist[127], hist[128], hist[255]}), (std::vector{1, 0, 1, 1}));
    EXPECT_EQ(window.Take(), Counted("Calculating histogram...", 1, {1}));
    image.GetHistGram(hist.data(), 2, 256.0, 256.0, 0, nullptr, 1, 3067); // an empty range counts into bin 0
    EXPECT_EQ((std::vector{hist[0], hist[1], hist[255]}), (std::vector{1, 0, 1}));
    EXPECT_EQ(window.Take(), Counted("Calculating auto level values...", 1, {1}));
    CRect inverted(INT_MAX, 0, INT_MIN, 1); // the difference of its edges fits no int
    image.GetHistGram(hist.data(), 2, 0.0, 999.0, 0, &inverted, 0, 0);
    EXPECT_EQ(std::pair(hist[0], hist[1]), std::pair(0, 0));
}

TEST(Statistics, MeanLeavesOutTheRestOfARowBehindABlank)
{
    const auto check = [](CStlImage& image) {
        const Plain plain(image);
        for (int p = 0; p < plain.planes; ++p) {
            EXPECT_TRUE(Near(image.GetAvrGrayRaw(p), static_cast<float>(plain.Average(p)), 1));
        }
    };
    ForEachImage(check, true);
    CStlImage nothing(-32, 2, 2, 1, 1.0, 0.0, 1);
    nothing.SetBlankUsed(1);
    check(nothing); // NaN
}

TEST(Statistics, AreTheSameForAnyNumberOfThreads)
{
    for (const double mean : {0.0, 140.0}) { // sums that cancel come to another float in another order
        for (const int planes : {1, 3}) {
            CStlImage image = Make(521, 701, planes, [&, random = Random(9)](int, int, int) mutable {
                return random.Between(mean - 150.0, mean + 150.0) / 3.0;
            });
            SprinkleOddities(image, 5, true);
            const std::vector<double> one = AllThatRowsComeTo(image, 1);
            for (const int threads : {2, 7}) {
                EXPECT_EQ(AllThatRowsComeTo(image, threads), one) << mean << ' ' << planes << ' ' << threads;
            }
        }
    }
}
