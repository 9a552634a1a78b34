#include "corvane/tone/color_balance.h"

#include "tests/tone/mapped.h"

using namespace corvane::test;

TEST(ColorBalance, EqualsThePlainForm)
{
    const double offsets[] = {12.5, -300.0, 0.0};
    ExpectMapped<CImgColorBalance>(
        "Applying color balance...",
        [&](CImgColorBalance& operation, CStlImage* source, CRect* rect) {
            operation.Do(offsets[0], offsets[1], offsets[2], source, rect, 1);
        },
        [&](double v, int p, const Plain& image) { return image.ToRaw(image.To256(v, 0) + offsets[p], 0); });
}
