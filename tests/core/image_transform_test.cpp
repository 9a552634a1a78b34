#include "corvane/core/image_transform.h"

#include <cmath>
#include <utility>

#include "corvane/core/lane_transform.h"
#include "tests/support/images.h"
#include "tests/support/plain_transform.h"

using namespace corvane;
using namespace corvane::test;

namespace {

/// The transform there and back.
void ExpectAgrees(int width, int height)
{
    SCOPED_TRACE(testing::Message() << width << " x " << height);
    Random random(static_cast<std::uint64_t>(width * 1000 + height));
    std::vector<float> image;
    NumberRows rows(height, std::vector<Number>(width));
    for (int i = 0; i < width * height; ++i) {
        image.push_back(static_cast<float>(random.Between(-1.0, 1.0)));
        rows[i / width][i % width] = image.back();
    }
    const NumberRows expected = PlainTransform(rows, -1.0);
    ImageTransform transform(width, height);
    std::vector<float> spectrum(transform.SpectrumSize(), 1e9F);
    transform.Forward(image.data(), spectrum.data());
    for (int i = 0; i < width * transform.Frequencies(); ++i) {
        const std::size_t at = transform.IndexOf(i % width, i / width);
        const Number got(spectrum[at], spectrum[at + transform.ImaginaryOffset()]);
        ASSERT_LT(std::abs(got - expected[i / width][i % width]), 1e-6 * std::sqrt(image.size()) + 1e-6) << i;
    }
    std::vector<float> back(image.size() + 1, 7.0F);
    transform.Inverse(spectrum.data(), back.data());
    for (std::size_t i = 0; i < image.size(); ++i) {
        ASSERT_NEAR(back[i], image[i], 1e-6) << i;
    }
    EXPECT_EQ(back.back(), 7.0F);
}

} // namespace

TEST(ImageTransform, AgreesWithThePlainSumForEveryLength)
{
    for (int n = 1; n <= 70; ++n) {
        ExpectAgrees(n, 3);
        ExpectAgrees(2, n);
    }
    for (const auto& [width, height] : {std::pair{101, 37}, {128, 96}, {211, 6}, {5, 509}, {1009, 2}, {33, 31 * 29}}) {
        ExpectAgrees(width, height);
    }
}

TEST(ImageTransform, FindsTheNextQuickLength)
{
    for (const auto& [least, quick] : {std::pair{1, 1}, {7, 8}, {11, 12}, {61, 64}, {1081, 1125}, {1055, 1080}}) {
        EXPECT_EQ(QuickLength(least), quick);
    }
}
