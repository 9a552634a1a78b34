#include "corvane/tone/invert.h"

#include "tests/support/images.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

TEST(Invert, EqualsThePlainForm)
{
    ForEachImage([](CStlImage& source) {
        ForEachRect(source, [&](CRect* rect) {
            CImgInvert operation(source);
            operation.CImage::SetLevel(0, -4.0, 77.0); // target levels of its own
            const Plain from(source);
            const Plain to(operation);
            const Plain expected = to.Map([&](double v, int x, int y, int p) {
                const bool inside = rect == nullptr || rect->PtInRect({x, y});
                return inside ? to.ToRaw(255.0 - from.To256(from.At(x, y, p), p), p) : v;
            });
            operation.Do(&source, rect, 0);
            EXPECT_TRUE(Agree(operation, expected, 1, 1e-13 * 210.0));
        });
    });
}

TEST(Invert, ReportsTheRowsOfTheClippedRectangle)
{
    ProgressWindow window;
    CStlImage source = RandomImage({20, 70}, 3, 1);
    source.SetProgressHandle(window.Handle());
    CImgInvert operation(source);
    for (const auto& [rect, rows] :
         {std::pair{CRect(-10, -10, 5, 5), 5}, {CRect(0, 10, 20, 99), 60}, {CRect(9, 0, 3, 70), 70}}) {
        CRect area = rect;
        operation.Do(&source, &area, 1);
        EXPECT_EQ(window.Take(),
                  Counted("Inverting...", rows * 3, std::vector<int>(static_cast<std::size_t>(rows) * 3, 1)));
    }
    // ESC is ignored: the last row is inverted too.
    PostMessageA(window.Handle(), WM_KEYDOWN, VK_ESCAPE, 0);
    CImgInvert whole(source);
    whole.Do(&source, nullptr, 1);
    EXPECT_NE(*whole.GetImageAdr(0, 69, 2), *source.GetImageAdr(0, 69, 2));
}
