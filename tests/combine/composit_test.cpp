#include "corvane/combine/composit.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/alignment.h"
#include "corvane/core/blank.h"
#include "corvane/core/threads.h"
#include "tests/combine/aligned.h"
#include "tests/support/progress_window.h"
#include "tests/support/storage.h"

using namespace corvane::test;

namespace {

/// The arguments of one call, but for images and rectangle.
struct CompositCall {
    double dx;
    double dy;
    double angle;
    int mode;
    int display = 0;
    int clamp = 0;
    double ratio = 0.3;
    double fraction = 0.7;
    int radius = 0;

    bool IsDisplay() const { return display != 0 || mode < 0 || mode > 9; }
};

CImgComposit Composite(const CStlImage& before, CStlImage& base, CStlImage& overlay, const CompositCall& c,
                       CRect* rect = nullptr)
{
    CImgComposit result(before);
    result.Do(&base, &overlay, c.dx, c.dy, c.angle, c.mode, c.ratio, c.display, c.clamp, c.fraction, c.radius, rect, 0,
              -1);
    return result;
}

double Combined(const CompositCall& c, bool colour, double a, double b, double blank)
{
    const double shown = !colour && b <= 0.0 ? 0.0 : a * std::clamp(b, 0.0, 255.0) / 255.0;
    const double guarded = colour || !c.display ? a / b : a / (std::clamp(b, 0.001, 255.0) / 255.0);
    const double values[] = {a + b,
                             (a + b) * 0.5,
                             (1.0 - c.ratio) * a + c.ratio * b,
                             colour && c.clamp && a - b < 0.0 ? 0.0 : a - b,
                             c.display ? shown : a * b,
                             b == 0.0 ? blank : guarded,
                             std::abs(a - b),
                             a <= b ? b : a,
                             a >= b ? b : a};
    return c.mode < 0 || c.mode > 8 ? a : values[c.mode];
}

/// The composite in its plain form.
Plain PlainComposit(const CStlImage& before, const CStlImage& base, const CStlImage& overlay, const CompositCall& c)
{
    Plain expected(before);
    if (base.IsBlankUsed() || overlay.IsBlankUsed() || c.dx != 0.0 || c.dy != 0.0 || c.angle != 0.0) {
        const bool isOverlays = !base.IsBlankUsed() && overlay.IsBlankUsed();
        expected.blank = isOverlays ? overlay.GetBlank() : static_cast<int>(corvane::UndefinedValue(base));
        expected.blankUsed = true;
    }
    const Plain first(base);
    const Plain second(overlay);
    const double beyond = c.IsDisplay() && (c.mode == 4 || c.mode == 5) ? 255.0 : 0.0;
    return expected.Map([&](double old, int x, int y, int plane) {
        double b[3];
        const bool isInside = SampleAt(x, y, overlay, c.dx, c.dy, c.angle, expected.Colour(), c.IsDisplay(),
                                       second.blankUsed ? expected.blank : beyond, b);
        bool isBaseBlank = true;
        bool isOverlayBlank = true;
        for (int p = 0; p < expected.planes; ++p) {
            isBaseBlank = isBaseBlank && first.IsBlank(first.At(x, y, std::min(p, first.planes - 1)));
            isOverlayBlank = isOverlayBlank && second.IsBlank(b[p]);
        }
        const bool isUndefined = !first.blankUsed && !second.blankUsed && !isInside;
        const int from = std::min(plane, first.planes - 1);
        const double a = c.IsDisplay() ? first.To256(first.At(x, y, from), from) : first.At(x, y, from);
        const double v = isBaseBlank || isOverlayBlank || isUndefined
                             ? (c.IsDisplay() ? 0.0 : expected.blank)
                             : Combined(c, expected.Colour(), a, b[plane], expected.blank);
        return x >= first.width ? old : c.IsDisplay() ? expected.ToRaw(v, plane) : v;
    });
}

/// Mode 9 in its plain form.
Plain ExpectedDesaturated(const CStlImage& before, const CStlImage& base, const CStlImage& overlay,
                          const CompositCall& c)
{
    Plain r(before);
    const Plain first(base);
    const Plain second(overlay);
    const double sine = std::sin(c.angle * 0.017453292522222223);
    const corvane::Alignment alignment(c.dx, c.dy, sine, std::sqrt(1.0 - sine * sine), 1.0, overlay.GetStdCtr());
    const int radius = std::clamp(c.radius, 0, 2);
    const double ta = c.fraction * (c.display ? 255.0 : base.GetMaxPixel(0));
    const double tb = c.fraction * (c.display ? 255.0 : overlay.GetMaxPixel(0));
    const auto scaled = [&](const Plain& image, double v, int p) { return c.display ? image.To256(v, p) : v; };
    first.ForEach([&](int x, int y, int p) {
        const int q = std::min(p, second.planes - 1);
        const auto [sx, sy] = alignment.Map(x, y);
        const double a = scaled(first, first.At(x, y, p), 0);
        const double b = scaled(second, second.Between(sx, sy, q), q);
        double maxA = a;
        double maxB = b;
        for (int i = 0; i < 25 && radius > 0; ++i) {
            const int nx = std::clamp(x + std::clamp(i % 5 - 2, -radius, radius), 0, r.width - 1);
            const int ny = std::clamp(y + std::clamp(i / 5 - 2, -radius, radius), 0, r.height - 1);
            const float nearB = second.At(static_cast<int>(nx + sx - x + 0.5), static_cast<int>(ny + sy - y + 0.5), q);
            maxA = std::max(maxA, scaled(first, first.At(nx, ny, p), p));
            maxB = std::max(maxB, scaled(second, nearB, q));
        }
        const double m = b * c.ratio;
        const double larger = maxA >= ta && !(maxB >= tb) ? maxA : a;
        const double other = maxB >= tb && !(maxA >= ta) ? maxB * c.ratio : m;
        double v = larger >= other ? other : larger;
        if (sx < 1 || sx >= second.width - 1 || sy < 1 || sy >= second.height - 1) {
            v = a;
        } else if (maxA >= ta && maxB >= tb && !(a >= ta && b >= tb)) {
            const auto off = [&](double of, int nx, int ny) { return std::abs(of - scaled(r, r.At(nx, ny, p), 0)); };
            const auto sum = [&](double of) { return off(of, x - 1, y - 1) + off(of, x, y - 1) + off(of, x - 1, y); };
            v = sum(a) >= sum(m) ? m : a;
        }
        r.At(x, y, p) = static_cast<float>(c.display ? r.ToRaw(v, 0) : v);
    });
    return r;
}

} // namespace

TEST(Composit, AgreesWithThePlainFormWhateverTheImagesAndTheMode)
{
    constexpr Size kSizes[] = {{1, 1}, {3, 4}, {17, 13}, {300, 3}};
    constexpr double kPlaces[][3] = {{0.0, 0.0, 0.0},   {2.0, -1.0, 0.0},  {-1.0, 0.0, 0.0},
                                     {0.3, -1.75, 5.0}, {1.5, 2.25, 33.3}, {0.0, 0.0, 180.0}};
    Random random(6);
    for (int i = 0; i < 20000; ++i) {
        CStlImage base = RandomImage(kSizes[random.Whole(0, 3)], random.Whole(0, 1) * 2 + 1, 1);
        base.SetOrgBitsPixel(16 * random.Whole(0, 2));
        CStlImage overlay = RandomImage({19, 11}, random.Whole(0, 1) * 2 + 1, 2);
        overlay.SetStdCtr(4.25, 6.5);
        if (random.Whole(0, 1) != 0) {
            SprinkleOddities(base, 3);
        }
        if (random.Whole(0, 1) != 0) {
            SprinkleOddities(overlay, 4);
            overlay.SetBlank(random.Whole(-8, -7));
        }
        Sprinkle(overlay, {0.0F, -3.0F, 10.25F}, 5); // 0 in raw or display space, and negative
        base.CalcMinMax();
        overlay.CalcMinMax();
        CStlImage before(base);
        before.CImage::SetLevel(0, 3.5, 251.0);
        const auto& [dx, dy, angle] = kPlaces[random.Whole(0, 5)];
        const CompositCall call{
            dx, dy, angle, random.Whole(-1, 10), random.Whole(0, 1), random.Whole(0, 1), 1.3, 0.7, random.Whole(-1, 3)};
        const Plain expected = call.mode == 9 ? ExpectedDesaturated(before, base, overlay, call)
                                              : PlainComposit(before, base, overlay, call);
        const CImgComposit result = Composite(before, base, overlay, call);
        ASSERT_TRUE(Agree(result, expected, 1, 1e-9)) << i << ", mode " << call.mode;
        ASSERT_EQ(result.IsBlankUsed() != 0, expected.blankUsed);
        ASSERT_EQ(result.GetBlank(), expected.blank);
    }
}

TEST(Composit, DesaturatesAlikeWithAnyNumberOfThreads)
{
    CStlImage base = RandomImage({700, 500}, 3, 1); // more than one thread takes
    CStlImage overlay = RandomImage({690, 510}, 3, 2);
    base.CalcMinMax();
    overlay.CalcMinMax();
    const CompositCall call{0.3, -1.75, 5.0, 9, 0, 0, 1.3, 0.9, 2};
    const Plain expected = ExpectedDesaturated(base, base, overlay, call);
    for (const int threads : {1, 2, 7}) {
        corvane::SetThreads(threads);
        EXPECT_TRUE(Agree(Composite(base, base, overlay, call), expected, 1)) << threads;
    }
    corvane::SetThreads(0);
}

TEST(Composit, KeepsToTheRectangleAndToWhatTheBaseHas)
{
    CStlImage base = RandomImage({17, 13}, 1, 1);
    CStlImage overlay = RandomImage({19, 11}, 3, 2);
    for (const CStlImage& before : {RandomImage({17, 13}, 1, 3), RandomImage({23, 20}, 3, 4)}) {
        const CompositCall mean{0.5, 0.5, 3.0, 1};
        EXPECT_TRUE(Agree(Composite(before, base, overlay, mean), PlainComposit(before, base, overlay, mean), 1));
        for (const int mode : {1, 9}) {
            ExpectToKeepToRects(before, [&](CRect* rect) {
                return Composite(before, base, overlay, {0.5, 0.5, 3.0, mode}, rect);
            });
        }
    }
}

TEST(Composit, ShortFormTakesTheDefaults)
{
    CStlImage base = RandomImage({17, 13}, 3, 1);
    CStlImage overlay = RandomImage({17, 13}, 3, 2);
    for (const int mode : {2, 3, 9}) {
        CImgComposit result(base);
        result.Do(&base, &overlay, 0.5, 0.0, 1.0, mode, 1);
        EXPECT_EQ(Samples(result), Samples(Composite(base, base, overlay, {0.5, 0.0, 1.0, mode, 1, 0, 0.5, 0.95, 0})));
    }
}

TEST(Composit, ReportsRowsAndInModeNineThoseOfEveryPlane)
{
    ProgressWindow window;
    CStlImage base = RandomImage({4, 3}, 3, 1);
    base.SetProgressHandle(window.Handle());
    CRect rect(0, 1, 4, 3);
    for (const int mode : {0, 9}) {
        CImgComposit result(base);
        result.Do(&base, &base, 0.0, 0.0, 0.0, mode, 1.0, 0, 0, 0.5, 0, &rect, 1, mode == 0 ? -1 : 3035);
        const std::vector<int> steps(mode == 0 ? 2 : 6, 1);
        EXPECT_EQ(window.Take(), Counted(mode == 0 ? "Combining files..." : "Creating mosaic...", 2, steps));
    }
}

TEST(Composit, IsHarmlessWhateverTheArguments)
{
    constexpr int kMin = std::numeric_limits<int>::min();
    CStlImage base = RandomImage({7, 5}, 3, 1);
    CStlImage empty;
    for (const double odd : {static_cast<double>(NAN), HUGE_VAL, -HUGE_VAL, 1e300, 2147483647.0}) {
        for (const int mode : {kMin, 0, 9}) {
            const CompositCall call{odd, odd, mode == 0 ? odd : 0.0, mode, 0, 0, odd, odd, kMin};
            const CImgComposit result = Composite(base, base, base, call);
            const double undefined = mode == 0 ? result.GetBlank() : result.GetLevelMin(1);
            const double v = mode == 9 ? base.GetPixelGrayRaw(3, 3, 1) : undefined;
            EXPECT_EQ(result.GetPixelGrayRaw(3, 3, 1), v) << odd << ' ' << mode;
            EXPECT_EQ(Samples(Composite(base, empty, base, call)), Samples(base));
            EXPECT_EQ(Samples(Composite(empty, base, base, call)).size(), 0U);
        }
    }
    EXPECT_EQ(Samples(Composite(base, base, empty, {0.0, 0.0, 0.0, 9})), Samples(base));
}

TEST(Composit, IsTheSameFromPagedImages)
{
    const auto composite = [](int mode) {
        CStlImage base = RandomImage({700, 500}, 1, 1);
        CStlImage overlay = RandomImage({650, 520}, 1, 2);
        return Samples(Composite(base, base, overlay, {3.5, -2.25, 5.0, mode, 0, 0, 2.0, 0.9, 1}));
    };
    for (const int mode : {0, 9}) {
        const std::vector<float> expected = composite(mode);
        const TightMemory tight(1 << 20);
        EXPECT_EQ(composite(mode), expected);
    }
}
