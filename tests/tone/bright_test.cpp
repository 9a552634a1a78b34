#include "corvane/tone/bright.h"

#include "tests/support/progress_window.h"
#include "tests/tone/mapped.h"

using namespace corvane::test;

TEST(Bright, EqualsThePlainForm)
{
    const struct {
        double brightness;
        double contrast;
        double centre;
    } cases[] = {{20.0, 64.0, 128.0}, {-3.5, -100.0, 30.0}, {0.0, 0.0, 128.0}, {7.0, -256.0, 90.0}};
    for (const auto& c : cases) {
        ExpectMapped<CImgBright>(
            [&](CImgBright& operation, CStlImage* source, CRect* rect) {
                operation.Do(c.brightness, c.contrast, c.centre, source, rect, 0);
            },
            [&](double v, int, const Plain& image) {
                const double s = image.To256(v, 0);
                return image.ToRaw(s + (s - c.centre) * c.contrast * 0.00390625 + c.brightness, 0);
            });
    }
}

TEST(Bright, ReportsTheRowsOfTheClippedRectangleAndKeepsNoNumbersWithEqualLevels)
{
    ProgressWindow window;
    CStlImage source = RandomImage({20, 70}, 3, 1);
    source.SetLevel(0, 10.0, 10.0);
    source.SetProgressHandle(window.Handle());
    CImgBright operation(source);
    CRect rect(-10, -10, 5, 40);
    operation.Do(1.0, 1.0, 1.0, &source, &rect, 1);
    EXPECT_EQ(window.Take(), Counted("Processing brightness/contrast...", 120, std::vector<int>(120, 1)));
    EXPECT_TRUE(std::isnan(operation.GetPixelGrayRaw(4, 39, 2)));
}
