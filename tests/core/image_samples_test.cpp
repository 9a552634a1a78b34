#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "corvane/core/image.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Stores v in the image's own format.
void Store(CImage& image, int x, double v)
{
    const auto put = [&](auto stored) { std::memcpy(image.GetImageAdr(x, 0, 0), &stored, sizeof stored); };
    switch (image.GetBitsPixel() + (image.IsSigned() ? 1 : 0)) {
    case 8:
    case 9:
        return put(static_cast<std::uint8_t>(v));
    case 16:
        return put(static_cast<std::uint16_t>(v));
    case 17:
        return put(static_cast<std::int16_t>(v));
    case 32:
        return put(static_cast<std::uint32_t>(v));
    case 33:
        return put(static_cast<std::int32_t>(v));
    case -32:
    case -31:
        return put(static_cast<float>(v));
    default:
        return put(v);
    }
}

struct Case {
    int from;
    int isSigned;
    int to;
    int physical;
    int saturate;
    std::vector<double> stored;
    std::vector<double> converted; ///< as stored afterwards, with scale 2, zero 10 and blank 5
};

const Case kCases[] = {
    {16, 0, -32, 1, 1, {0, 65535}, {10, 131080}},
    {16, 1, -32, 1, 1, {-32768, 32767}, {-65526, 65544}},
    {8, 1, -64, 0, 0, {0, 255}, {0, 255}},
    {-32, 1, 8, 0, 1, {-1.6, 2.5, 3.5, 300, kNan, kInfinity}, {0, 2, 4, 255, 5, 255}},
    {-32, 1, 8, 0, 0, {-1.6, 2.5, 3.5, 300, kNan}, {255, 2, 3, 44, 5}},
    {-64, 1, 16, 1, 1, {-20000, 1.2, 1e300}, {-32768, 12, 32767}},
    {-64, 1, 32, 0, 0, {4294967297.0, -4294967295.9}, {1, 1}},
    {32, 0, -64, 0, 0, {4294967295.0}, {4294967295.0}},
    {32, 1, -64, 1, 0, {-2147483648.0}, {-4294967286.0}},
    {-32, 1, -32, 0, 1, {0.1F, kNan}, {0.1F, kNan}},
};

} // namespace

TEST(ImageSamples, PhysicalValuesAndConversions)
{
    for (const Case& c : kCases) {
        SCOPED_TRACE(testing::Message() << c.from << " to " << c.to);
        CImage image(c.from, static_cast<int>(c.stored.size()), 1, 1, 2.0, 10.0, 1);
        image.SetSigned(c.isSigned);
        image.SetBlankUsed(1);
        image.SetBlank(5);
        for (int x = 0; x < image.GetWidth(); ++x) {
            const double v = c.stored[static_cast<std::size_t>(x)];
            Store(image, x, v);
            EXPECT_TRUE(Same(image.GetPixel(x, 0, 0), (c.from == -32 ? static_cast<float>(v) : v) * 2.0 + 10.0));
        }
        ASSERT_EQ(image.ChangeBits(c.to, c.physical, c.saturate), 1);
        EXPECT_EQ(image.GetBscale(), c.physical ? 1.0 : 2.0);
        EXPECT_EQ(image.GetBzero(), c.physical ? 0.0 : 10.0);
        image.SetBscale(1.0);
        image.SetBzero(0.0);
        for (int x = 0; x < image.GetWidth(); ++x) {
            EXPECT_TRUE(Same(image.GetPixel(image.GetImageAdr(x, 0, 0)), c.converted[static_cast<std::size_t>(x)]))
                << x;
        }
        EXPECT_EQ(image.ChangeBits(24, 1, 1), 0);
        EXPECT_EQ(image.GetBitsPixel(), c.to);
    }
}
