#include <cmath>
#include <cstring>

#include "corvane/core/image.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

/// Stores v in the image's own format; the integer formats are the low bytes of a larger integer.
void Store(CImage& image, int x, double v)
{
    const auto single = static_cast<float>(v);
    const auto whole = image.GetBitsPixel() > 0 ? static_cast<std::int64_t>(v) : 0;
    const void* const stored[] = {&whole, &single, &v};
    const int kind = image.GetBitsPixel() > 0 ? 0 : image.GetBitsPixel() / -32;
    std::memcpy(image.GetImageAdr(x, 0, 0), stored[kind], static_cast<std::size_t>(image.GetBytesPixel()));
}

/// Bits and sign, the new bits, physical, saturate, and the stored values before and after, with scale 2, zero 10 and
/// blank 5.
const std::tuple<int, int, int, int, int, std::vector<double>, std::vector<double>> kCases[] = {
    {16, 0, -32, 1, 1, {0, 65535}, {10, 131080}},
    {16, 1, -32, 1, 1, {-32768, 32767}, {-65526, 65544}},
    {8, 1, -64, 0, 0, {0, 255}, {0, 255}},
    {-32, 1, 8, 0, 1, {-1.6, 2.5, 3.5, 300, NAN, INFINITY}, {0, 2, 4, 255, 5, 255}},
    {-32, 1, 8, 0, 0, {-1.6, 2.5, 3.5, 300, NAN}, {255, 2, 3, 44, 5}},
    {-64, 1, 16, 1, 1, {-20000, 1.2, 1e300}, {-32768, 12, 32767}},
    {-64, 1, 32, 0, 0, {4294967297.0, -4294967295.9}, {1, 1}},
    {32, 0, -64, 0, 0, {4294967295.0}, {4294967295.0}},
    {32, 1, -64, 1, 0, {-2147483648.0}, {-4294967286.0}},
    {-32, 1, -32, 0, 1, {0.1F, NAN}, {0.1F, NAN}},
};

} // namespace

TEST(ImageSamples, PhysicalValuesAndConversions)
{
    for (const auto& [from, isSigned, to, physical, saturate, stored, converted] : kCases) {
        SCOPED_TRACE(testing::Message() << from << " to " << to);
        CImage image(from, static_cast<int>(stored.size()), 1, 1, 2.0, 10.0, 1);
        image.SetSigned(isSigned);
        image.SetBlankUsed(1);
        image.SetBlank(5);
        for (int x = 0; x < image.GetWidth(); ++x) {
            const double v = stored[static_cast<std::size_t>(x)];
            Store(image, x, v);
            EXPECT_TRUE(Same(image.GetPixel(x, 0, 0), (from == -32 ? static_cast<float>(v) : v) * 2.0 + 10.0));
        }
        ASSERT_EQ(image.ChangeBits(to, physical, saturate), 1);
        EXPECT_EQ(image.GetBscale(), physical ? 1.0 : 2.0);
        EXPECT_EQ(image.GetBzero(), physical ? 0.0 : 10.0);
        image.SetBscale(1.0);
        image.SetBzero(0.0);
        for (int x = 0; x < image.GetWidth(); ++x) {
            EXPECT_TRUE(Same(image.GetPixel(image.GetImageAdr(x, 0, 0)), converted[static_cast<std::size_t>(x)])) << x;
        }
        EXPECT_EQ(image.ChangeBits(24, 1, 1), 0);
        EXPECT_EQ(image.GetBitsPixel(), to);
    }
}
