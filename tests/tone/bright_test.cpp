#include "corvane/tone/bright.h"

#include "tests/tone/mapped.h"

using namespace corvane::test;

TEST(Bright, EqualsThePlainForm)
{
    for (const auto& [brightness, contrast, centre] :
         {std::tuple{20.0, 64.0, 128.0}, {-3.5, -100.0, 30.0}, {0.0, 0.0, 128.0}, {7.0, -256.0, 90.0}}) {
        ExpectMapped<CImgBright>(
            "Processing brightness/contrast...",
            [&](CImgBright& operation, CStlImage* source, CRect* rect) {
                operation.Do(brightness, contrast, centre, source, rect, 1);
            },
            [&](double v, int, const Plain& image) {
                const double s = image.To256(v, 0);
                return image.ToRaw(s + (s - centre) * contrast * 0.00390625 + brightness, 0);
            });
    }
}
