#include <cmath>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

std::vector<int> PlainHistogram(const Plain& image, int bins, double lo, double hi, int plane, const CRect& rect)
{
    std::vector<int> hist(static_cast<std::size_t>(bins), 0);
    const bool bright = plane == -1 && image.Colour();
    if (bright) {
        const double low = 0.587 * image.min[1] + 0.299 * image.min[0] + 0.114 * image.min[2];
        const double high = 0.299 * image.max[0] + 0.587 * image.max[1] + 0.114 * image.max[2];
        lo = (lo - low) * 255.0 / (high - low);
        hi = (hi - low) * 255.0 / (high - low);
    }
    for (int y = std::max<int>(rect.top, 0); y < std::min<int>(rect.bottom, image.height); ++y) {
        for (int x = std::max<int>(rect.left, 0); x < std::min<int>(rect.right, image.width); ++x) {
            double v = image.At(x, y, std::max(plane, 0));
            bool blank = image.IsBlank(v);
            if (bright) {
                const double r = image.At(x, y, 0);
                const double g = image.At(x, y, 1);
                const double b = image.At(x, y, 2);
                blank = image.IsBlank(r) && image.IsBlank(g) && image.IsBlank(b);
                v = 0.587 * (g - image.min[1]) * (255.0 / image.range[1]) +
                    0.114 * (b - image.min[2]) * (255.0 / image.range[2]) +
                    0.299 * (r - image.min[0]) * (255.0 / image.range[0]);
            }
            if (!blank && lo <= v && v <= hi) {
                const double place = (v - lo) / (hi - lo) * bins;
                const int bin = place > 0.0 ? static_cast<int>(std::min(place, bins - 1.0)) : 0;
                ++hist[static_cast<std::size_t>(bin)];
            }
        }
    }
    return hist;
}

} // namespace

TEST(Statistics, Histogram)
{
    long long counted = 0;
    ForEachImage([&](CStlImage& image) {
        const Plain plain(image);
        for (const int plane : {-1, 0, plain.planes - 1}) {
            for (const auto& [lo, hi] : {std::pair{-20.0, 300.0}, {50.0, 60.5}, {400.0, 500.0}, {80.0, 20.0}}) {
                for (const int bins : {1, 7, 5000}) {
                    ForEachRect(image, [&](CRect* rect) {
                        std::vector<int> hist(static_cast<std::size_t>(bins) + 1, -99);
                        ASSERT_EQ(image.GetHistGram(hist.data(), bins, lo, hi, plane, rect, 0, 0),
                                  static_cast<int>(2.0 * plain.height * plain.width / bins));
                        ASSERT_EQ(hist.back(), -99);
                        hist.pop_back();
                        const CRect area = rect ? *rect : CRect(0, 0, plain.width, plain.height);
                        ASSERT_EQ(hist, PlainHistogram(plain, bins, lo, hi, plane, area));
                        counted += hist[0];
                    });
                }
            }
        }
    });
    EXPECT_GT(counted, 0);
}

TEST(Statistics, HistogramBinsAndProgress)
{
    ProgressWindow window;
    CStlImage image(-32, 5, 1, 1, 1.0, 0.0, 1);
    image.SetProgressHandle(window.Handle());
    const float values[] = {0.0F, 255.0F, 256.0F, -0.001F, 127.5F};
    std::copy_n(values, 5, image.GetImageAdr(0, 0, 0));
    std::vector<int> hist(256);
    image.GetHistGram(hist.data(), 256, 0.0, 255.0, 0, nullptr, 1, 0);
    EXPECT_EQ((std::vector{hist[0], hist[127], hist[128], hist[255]}), (std::vector{1, 0, 1, 1}));
    EXPECT_EQ(window.Take(), Counted("Calculating histogram...", 1, {1}));
    image.GetHistGram(hist.data(), 2, 256.0, 256.0, 0, nullptr, 1, 3067); // an empty range counts into bin 0
    EXPECT_EQ((std::vector{hist[0], hist[1], hist[255]}), (std::vector{1, 0, 1}));
    EXPECT_EQ(window.Take(), Counted("Calculating auto level values...", 1, {1}));
}

TEST(Statistics, MeanLeavesOutTheRestOfARowBehindABlank)
{
    ForEachImage(
        [](CStlImage& image) {
            const Plain plain(image);
            for (int p = 0; p < plain.planes; ++p) {
                double sum = 0.0;
                int count = 0;
                for (int y = 0; y < plain.height; ++y) {
                    for (int x = 0; x < plain.width && !plain.IsBlank(plain.At(x, y, p)); ++x) {
                        sum += plain.At(x, y, p);
                        ++count;
                    }
                }
                const auto mean = static_cast<float>(sum / count);
                EXPECT_TRUE(Near(image.GetAvrGrayRaw(p), mean, 1));
            }
        },
        true);
    CStlImage nothing(-32, 2, 2, 1, 1.0, 0.0, 1);
    nothing.SetBlankUsed(1);
    EXPECT_TRUE(std::isnan(nothing.GetAvrGrayRaw(0)));
}
