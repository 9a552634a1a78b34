#include "corvane/colour/lab_color_enhance.h"

#include "corvane/core/color.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

/// What the enhancement makes of `target`, in plain form, with a gain for each sign of a and b.
Plain Enhanced(const CStlImage& target, const Plain& lab, const double (&gains)[4], const CRect* rect)
{
    const Plain before(target);
    return before.Map([&](double v, int x, int y, int p) {
        if (lab.samples.empty() || (rect != nullptr && !rect->PtInRect({x, y}))) {
            return v;
        }
        const double a = lab.At(x, y, 1);
        const double b = lab.At(x, y, 2);
        CColor colour;
        colour.LabToRgb(lab.At(x, y, 0), a * (a >= 0.0 ? gains[0] : gains[1]), b * (b >= 0.0 ? gains[2] : gains[3]));
        return before.ToRaw(255.0 * (p == 0 ? colour.GetR() : p == 1 ? colour.GetG() : colour.GetB()), p);
    });
}

} // namespace

TEST(LabColorEnhance, EqualsThePlainFormAndReports)
{
    ProgressWindow window;
    ForEachImage([&](CStlImage& lab) {
        ForEachRect(lab, [&](CRect* rect) {
            const CStlImage target = RandomImage({lab.GetWidth(), lab.GetHeight()}, lab.GetPlanes(), 5);
            for (CStlImage source : {lab, RandomImage({6, 2}, 3, 9), CStlImage(-32, 5, 0, 3, 1.0, 0.0, 1)}) {
                CImgLabColorEnhance result(target);
                result.Do(&source, 1.5, 0.25, -0.75, 2.0, rect, 0);
                EXPECT_TRUE(Agree(result, Enhanced(target, Plain(source), {1.5, 0.25, -0.75, 2.0}, rect), 1, 1e-10));
            }
        });
        CImgLabColorEnhance result(lab);
        result.SetProgressHandle(window.Handle());
        result.Do(&lab, 0.5, 1.25, nullptr, 1);
        EXPECT_EQ(window.Take(), Counted("Enhancing Lab color...", lab.GetHeight(), std::vector(lab.GetHeight(), 1)));
        EXPECT_TRUE(Agree(result, Enhanced(lab, Plain(lab), {0.5, 0.5, 1.25, 1.25}, nullptr), 1, 1e-10));
    });
}
