#include <cmath>
#include <memory>

#include "corvane/core/color.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

/// Compares an image, which it deletes, with planes `first`... of the Lab colours of what the source shows.
void ExpectLab(CStlImage* made, const Plain& source, int first, double most)
{
    const std::unique_ptr<CStlImage> owner(made);
    const auto unit = [&](int x, int y, int channel) {
        const int plane = source.planes < 3 ? 0 : channel;
        const double v = source.To256(source.At(x, y, plane), plane);
        return (v <= 0.0 ? 0.0 : v >= most ? most : v) / 255.0;
    };
    const Plain expected = Plain(*made).Map([&](double, int x, int y, int p) {
        CColor colour;
        colour.RgbToLab(unit(x, y, 0), unit(x, y, 1), unit(x, y, 2));
        return first + p == 0 ? colour.GetL() : first + p == 1 ? colour.Geta() : colour.Getb();
    });
    EXPECT_TRUE(Agree(*made, expected, 1, 1e-11));
}

} // namespace

TEST(LabPlanes, HoldTheColoursThatTheLevelsShow)
{
    const auto check = [](CStlImage& image) {
        ExpectLab(image.MakeLPlane(), Plain(image), 0, 5000.0);
        ExpectLab(image.MakeAbPlane(0), Plain(image), 1, 5000.0);
        ExpectLab(image.MakeAbPlane(1), Plain(image), 1, 255.0);
        ExpectLab(image.MakeLabPlane(), Plain(image), 0, 5000.0);
    };
    ForEachImage(check);
    CStlImage two = RandomImage({5, 3}, 2, 4);
    check(two);
    two.SetLevel(0, 10.0, 10.0);
    check(two);
    EXPECT_NEAR(CStlImage::CalcBrightL(9e9, -60.0, 0.0), 5000.0 * std::pow(4940.0 / 765.0, 1.2), 1e-8);
}

TEST(LabPlanes, TakeTheCentreReportToTheSourceAndNeedRoom)
{
    ProgressWindow window;
    CStlImage image = RandomImage({4, 2}, 3, 1);
    image.SetProgressHandle(window.Handle());
    image.SetStdCtr(1.5, 0.25);
    const std::unique_ptr<CStlImage> l(image.MakeLPlane());
    EXPECT_EQ(window.Take(), Counted("Creating L-channel...", 2, {1, 1}));
    EXPECT_EQ(l->GetLevelMax(0), image.GetLevelMax(0));
    EXPECT_EQ(l->GetStdCtr().x, 1.5);
    image.SetWidth(2147483647);
    image.SetHeight(2147483647);
    EXPECT_EQ(image.MakeLabPlane(), nullptr);
    EXPECT_TRUE(window.Take().empty());
}
