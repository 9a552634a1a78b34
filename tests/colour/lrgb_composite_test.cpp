#include "corvane/colour/lrgb_composite.h"

#include <array>
#include <memory>

#include "corvane/core/color.h"
#include "tests/colour/placed.h"

using namespace corvane::test;

namespace {

/// The display colours at a pixel on the unit scale, cut as the colour model takes them or not.
std::array<double, 3> ColourAt(int x, int y, const CStlImage& frame, const Place& at, bool cuts)
{
    std::array<double, 3> v;
    frame.GetPixelRgb256f(x, y, at.dx, at.dy, at.Sine(), at.Cosine(), at.scale, &v[0], &v[1], &v[2], 0.0, nullptr,
                          nullptr, nullptr);
    for (double& c : v) {
        c = (cuts && c <= 0.0 ? 0.0 : cuts && c >= 5000.0 ? 5000.0 : c) * 0.00392156862745098;
    }
    return v;
}

double Channel(double l, double a, double b, int p)
{
    CColor colour;
    colour.LabToRgb(l, a, b);
    return p == 0 ? colour.GetR() : p == 1 ? colour.GetG() : colour.GetB();
}

/// Checks run(rect) against valueOf(x, y, p) on the unit scale, by the luminance's levels.
template <class Run, class ValueOf>
void Expect(const CStlImage& before, const CStlImage& luminance, Run run, ValueOf valueOf)
{
    const double min = luminance.GetLevelMin(0);
    const double range = luminance.GetLevelRange(0);
    const CStlImage result = run(nullptr);
    EXPECT_TRUE(Agree(result,
                      Plain(before).Map([&](double, int x, int y, int p) { return valueOf(x, y, p) * range + min; }), 1,
                      1e-9));
    for (int p = 0; p < 3; ++p) {
        EXPECT_TRUE(result.GetLevelMin(p) == min && result.GetLevelRange(p) == range);
    }
    ExpectToKeepToRects(before, run);
}

} // namespace

TEST(LrgbComposite, AgreesWithThePlainForm)
{
    for (int kind = 0; kind < 48; ++kind) {
        CStlImage lum = OddFrame(kind % 2 == 0 ? 1 : 3, 1);
        CStlImage rgb = OddFrame(kind / 2 % 2 == 0 ? 3 : 1, 2);
        lum.SetLevel(0, 80.0, 90.0);
        rgb.SetPixelGrayRaw(8, 8, 1e5F, 0); // beyond 5000
        const CStlImage before = RandomImage({29, 23}, kind / 4 % 2 == 0 ? 3 : 1, 4);
        const int average = kind / 8 % 2;
        const Place l = kPlaces[kind / 16][0];
        const Place c = kPlaces[kind / 16][1];
        const auto composite = [&](CRect* rect) {
            CImgLrgbCmpst result(before);
            result.DoLrgb(&lum, l.dx, l.dy, l.angle, &rgb, c.dx, c.dy, c.angle, c.scale, rect, average, 0);
            return result;
        };
        Expect(before, lum, composite, [&](int x, int y, int p) {
            const auto a = ColourAt(x, y, lum, l, average == 0);
            const auto b = ColourAt(x, y, rgb, c, average == 0);
            CColor first;
            CColor second;
            first.RgbToLab(a[0], a[1], a[2]);
            second.RgbToLab(b[0], b[1], b[2]);
            return average != 0 ? (a[p] + b[p]) / 2.0 : Channel(first.GetL(), second.Geta(), second.Getb(), p);
        });
        const std::unique_ptr<CStlImage> ofL(lum.MakeLPlane());
        const std::unique_ptr<CStlImage> ab(rgb.MakeAbPlane(0));
        ab->SetStdCtr(3.0, 4.5);
        const auto ofLab = [&](CRect* rect) {
            CImgLrgbCmpst result(before);
            result.DoLab(ofL.get(), l.dx, l.dy, l.angle, ab.get(), c.dx, c.dy, c.angle, c.scale, rect, 0);
            return result;
        };
        Expect(before, lum, ofLab, [&](int x, int y, int p) {
            double a = 0.0;
            double b = 0.0;
            ab->GetPixelAb(x, y, c.dx, c.dy, c.Sine(), c.Cosine(), c.scale, &a, &b, 0.0);
            return Channel(ofL->GetPixelL(x, y, l.dx, l.dy, l.Sine(), l.Cosine(), 1.0, 0.0), a, b, p);
        });
    }
}

TEST(LrgbComposite, ReportsRowsButNotForAverages)
{
    ProgressWindow window;
    CStlImage frame = RandomImage({4, 3}, 1, 1);
    CStlImage empty;
    CImgLrgbCmpst result(RandomImage({6, 5}, 3, 2));
    result.SetProgressHandle(window.Handle());
    result.DoLrgb(&frame, NAN, 0.0, HUGE_VAL, &empty, 0.0, -1e300, 0.0, NAN, nullptr, 1, 1);
    EXPECT_TRUE(window.Take().empty());
    result.DoLab(&frame, NAN, 0.0, HUGE_VAL, &frame, 0.0, -1e300, 0.0, NAN, nullptr, 1);
    EXPECT_EQ(window.Take(), Counted("Combining LRGB images...", 5, {1, 1, 1, 1, 1}));
    EXPECT_EQ(Samples(result), std::vector<float>(90, static_cast<float>(frame.GetLevelMin(0))));
}
