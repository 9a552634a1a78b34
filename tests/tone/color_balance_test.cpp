#include "corvane/tone/color_balance.h"

#include "tests/support/progress_window.h"
#include "tests/tone/mapped.h"

using namespace corvane::test;

TEST(ColorBalance, EqualsThePlainForm)
{
    const double offsets[] = {12.5, -300.0, 0.0};
    ExpectMapped<CImgColorBalance>(
        [&](CImgColorBalance& operation, CStlImage* source, CRect* rect) {
            operation.Do(offsets[0], offsets[1], offsets[2], source, rect, 0);
        },
        [&](double v, int p, const Plain& image) { return image.ToRaw(image.To256(v, 0) + offsets[p], 0); });
}

TEST(ColorBalance, ReportsItsTextAndKeepsNoNumbersWithEqualLevels)
{
    ProgressWindow window;
    CStlImage source = Row({10.0F}, 3);
    source.SetLevel(0, 10.0, 10.0);
    source.SetProgressHandle(window.Handle());
    CImgColorBalance operation(source);
    operation.Do(1.0, 2.0, 3.0, &source, nullptr, 1);
    EXPECT_EQ(window.Take(), Counted("Applying color balance...", 3, {1, 1, 1}));
    EXPECT_TRUE(std::isnan(operation.GetPixelGrayRaw(0, 0, 2)));
}
