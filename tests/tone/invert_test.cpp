#include "corvane/tone/invert.h"

#include "tests/tone/mapped.h"

using namespace corvane::test;

TEST(Invert, EqualsThePlainForm)
{
    ExpectArea<CImgInvert>(
        "Inverting...", [](CImgInvert& operation, CStlImage* source, CRect* rect) { operation.Do(source, rect, 1); },
        [](int x, int y, int p, const Plain& from, const Plain& to) {
            return to.ToRaw(255.0 - from.To256(from.At(x, y, p), p), p);
        });
}

TEST(Invert, IgnoresEscAndIsSilentUnlessAsked)
{
    ProgressWindow window;
    CStlImage source = RandomImage({2, 9}, 3, 1);
    source.SetProgressHandle(window.Handle());
    CImgInvert operation(source);
    PostMessageA(window.Handle(), WM_KEYDOWN, VK_ESCAPE, 0);
    operation.Do(&source, nullptr, 1);
    EXPECT_FALSE(window.Take().empty());
    EXPECT_NE(*operation.GetImageAdr(0, 8, 2), *source.GetImageAdr(0, 8, 2));
    operation.Do(&source, nullptr, 0);
    EXPECT_TRUE(window.Take().empty());
}
