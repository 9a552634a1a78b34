#include "corvane/core/aligned_row.h"

#include <cmath>

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

} // namespace

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

TEST(AlignedRow, RowsTouchedBoundWhatIsRead)
{
    Random random(6);
    for (int i = 0; i < 50000; ++i) {
        const double degrees = i % 3 * random.Between(-180, 180);
        const auto alignment =
            Alignment::Turned(random.Between(-20, 20), random.Between(-20, 20), degrees, {30.5, 20.5});
        const int y = random.Whole(-5, 65);
        const RowSpan rows = RowsTouched(alignment, y, 40, 50, 60);
        const Position at = alignment.Map(random.Whole(0, 39), y);
        if (at.x >= 0.0 && at.x < 50 && at.y >= 0.0 && at.y < 60) {
            ASSERT_LE(rows.first, static_cast<int>(at.y));
            ASSERT_GE(rows.end, std::min(static_cast<int>(at.y) + 3, 60)); // two rows, and what follows in storage
            ASSERT_LE(rows.end, 60);
        }
    }
}
