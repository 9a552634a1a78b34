#include "corvane/measure/pixel_info.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

/// Maximum, minimum, mean and median of one plane, position by position.
std::vector<double> PlainCalc(const Plain& image, const CRect& rect, int p)
{
    const double corner = p < image.planes ? image.At(rect.left, rect.top, p) : 0.0;
    if (rect.Width() * rect.Height() == 1 || p >= image.planes) {
        return std::vector<double>(4, corner);
    }
    double sum = 0.0;
    std::vector<double> values;
    for (int n = 0; rect.Width() > 0 && n < rect.Width() * rect.Height(); ++n) {
        const double v = image.At(rect.left + n % rect.Width(), rect.top + n / rect.Width(), p);
        if (!image.IsBlank(v)) {
            values.push_back(v);
            sum += v;
        }
    }
    std::vector<double> out{corner, corner, sum / static_cast<double>(values.size()), NAN};
    std::sort(values.begin(), values.end(), [](double a, double b) { return a < b || (a == a && b != b); });
    for (const double v : values) {
        out = {v > out[0] ? v : out[0], v < out[1] ? v : out[1], out[2], values[values.size() / 2]};
    }
    return out;
}

} // namespace

TEST(PixelInfo, EqualsThePlainForm)
{
    ForEachImage([](CStlImage& source) {
        CImgPixelInfo image(source);
        Sprinkle(image, {source.IsBlankUsed() != 0 ? std::copysign(NAN, -1.0F) : 1.0F}, 3);
        double out[4][3] = {{9, 9, 9}, {9, 9, 9}, {9, 9, 9}, {9, 9, 9}};
        const auto expectPlain = [&](const CRect& rect) {
            for (int n = 0; n < 12; ++n) {
                const double expected = PlainCalc(Plain(image), rect, n / 4)[n % 4];
                EXPECT_TRUE(Same(out[n % 4][n / 4], expected, 1e-12))
                    << n << ": " << out[n % 4][n / 4] << ", " << expected;
            }
        };
        ForEachRect(source, [&](CRect* rect) {
            const CRect area = rect == nullptr ? CRect(2, 1, 3, 2) : *rect;
            image.Calc(area, out[0], out[1], out[2], out[3]);
            expectPlain(area);
        });
        for (const int size : {-9, -2, -1, 2, 31}) {
            image.Calc(CPoint(1, 2), size, out[0], out[1], out[2], out[3]);
            expectPlain(CRect(1 - size / 2, 2 - size / 2, 2 + size / 2, 3 + size / 2));
        }
    });
}

TEST(PixelInfo, CountsPositionsAsFarAsIntsReach)
{
    CImgPixelInfo image(RandomImage({2, 2}, 1, 5));
    const std::vector<float> samples = Samples(image);
    const auto [low, high] = std::pair{std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
    double out[3][3];
    image.Calc(CRect(low, low, high, high), out[0], out[1], out[2], nullptr);
    EXPECT_NEAR(out[2][0], (samples[0] + samples[1] + samples[2] + samples[3]) / 4.0, 1e-5);
    image.Calc(CPoint(high, low), high, out[0], out[1], out[2], nullptr);
    EXPECT_NEAR(out[2][0], samples[1], 1e-9);
}

TEST(PixelInfo, LeavesOutBlanksNextToTheMedian)
{
    CImgPixelInfo image(RandomImage({5, 1}, 1, 5));
    image.SetBlankUsed(1);
    image.SetBlank(1000);
    const float samples[] = {1000.0F, 1001.0F, 1003.0F, 1000.5F, 1002.0F};
    std::copy_n(samples, 5, image.GetImageAdr(0, 0, 0));
    double out[4][3];
    image.Calc(CRect(0, 0, 5, 1), out[0], out[1], out[2], out[3]);
    EXPECT_EQ(out[3][0], 1002.0);
}
