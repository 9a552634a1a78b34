#include "corvane/tone/reduce_tone.h"

#include <cmath>

#include "tests/support/progress_window.h"
#include "tests/tone/mapped.h"

using namespace corvane::test;

namespace {

double Reduced(double v, int p, int levels, const Plain& image)
{
    const double n = levels < 2 ? 1 : levels >= 256 ? 256 : levels;
    double s = image.To256(v, p);
    s = !(s > 0.0) ? 0.0 : s >= 255.0 ? 255.0 : s;
    return image.ToRaw(std::floor(n * s * 0.00390625) / n * 255.0, p);
}

} // namespace

TEST(ReduceTone, EqualsThePlainForm)
{
    for (const int levels : {-5, 1, 2, 7, 255, 256, 9999}) {
        SCOPED_TRACE(levels);
        ExpectMapped<CImgReduceTone>(
            [&](CImgReduceTone& operation, CStlImage* source, CRect* rect) { operation.Do(levels, source, rect, 0); },
            [&](double v, int p, const Plain& image) { return Reduced(v, p, levels, image); });
    }
}

// The quick way to a step must not move samples that lie on one: rounding decides there, and does it in order.
TEST(ReduceTone, KeepsSamplesOnTheirSideOfAStep)
{
    for (const int levels : {2, 8, 51, 256}) {
        ForEachSteppedRow(levels * 255.0 / 256.0, [&](CStlImage row) {
            CImgReduceTone operation(row);
            operation.Do(levels, &row, nullptr, 0);
            const Plain plain(row);
            const auto reduced = [&](double v, int, int, int p) { return Reduced(v, p, levels, plain); };
            EXPECT_TRUE(Agree(operation, plain.Map(reduced), 1, 1e-13 * plain.range[0]));
        });
    }
}

TEST(ReduceTone, GivesTheSameStepsInWords)
{
    CStlImage source = Row({0.0F, 127.99F, 128.0F, 255.0F, 300.0F, NAN});
    CImgReduceTone operation(source);
    ProgressWindow window;
    operation.SetProgressHandle(window.Handle());
    operation.Do(2, &source, nullptr, 1);
    EXPECT_EQ(Samples(operation), (std::vector<float>{0.0F, 0.0F, 127.5F, 127.5F, 127.5F, 0.0F}));
    EXPECT_EQ(window.Take(), Counted("Compressing grayscale...", 1, {1}));
    operation.Do(256, &source, nullptr, 0);
    EXPECT_EQ(operation.GetPixelGrayRaw(3, 0, 0), 254.00390625F);
}
