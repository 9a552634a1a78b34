#include "corvane/geometry/soft_binning.h"

#include <algorithm>

#include "tests/geometry/expected.h"

using namespace corvane::test;

namespace {

/// The sum of a block, rounded after every sample.
float Sum(const Plain& from, Size block, int x, int y, int p)
{
    float sum = 0.0F;
    for (int j = y * block.height; j < std::min((y + 1LL) * block.height, from.height + 0LL); ++j) {
        for (int i = x * block.width; i < std::min((x + 1LL) * block.width, from.width + 0LL); ++i) {
            sum = static_cast<float>(static_cast<double>(sum) + from.At(i, j, p));
        }
    }
    return sum;
}

} // namespace

TEST(SoftBinning, AddsBlocksInTheirOrderAndScalesLevelsWhenAsked)
{
    ForEachSource([](CStlImage& source, const CStlImage& canvas) {
        const Plain from(source);
        for (const Size block : {Size{1, 1}, {2, 2}, {3, 2}, {4, 1}, {2, 5}, {7, 3}, {1 << 30, 1 << 30}}) {
            for (const bool keepPartial : {false, true}) {
                SCOPED_TRACE(testing::Message() << block.width << " x " << block.height << ' ' << keepPartial);
                const long long width = (canvas.GetWidth() + (block.width - 1LL) * keepPartial) / block.width;
                const long long height = (canvas.GetHeight() + (block.height - 1LL) * keepPartial) / block.height;
                CImgSoftBinning binned(canvas);
                if (binned.Do(block.width, block.height, keepPartial, !keepPartial, &source, 0) == 0) {
                    EXPECT_EQ(width * height, 0);
                    continue;
                }
                EXPECT_TRUE(
                    Holds(binned, width, height, [&](int x, int y, int p) { return Sum(from, block, x, y, p); }));
                const int last = canvas.GetPlanes() - 1;
                const double factor = keepPartial ? 1.0 : block.width * block.height;
                EXPECT_DOUBLE_EQ(binned.GetLevelMin(last), canvas.GetLevelMin(last) * factor);
                EXPECT_DOUBLE_EQ(binned.GetLevelMax(last), canvas.GetLevelMax(last) * factor);
                ExpectCoordinates(binned, {10.0, 20.0, 1.0, 2.0, 3.0, 4.0});
            }
        }
    });
}
