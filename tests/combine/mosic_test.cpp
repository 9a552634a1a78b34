#include "corvane/combine/mosic.h"

#include <cmath>
#include <limits>

#include "tests/combine/aligned.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

/// The arguments of one call, but for images and rectangle.
struct MosicCall {
    int ox;
    int oy;
    double dx;
    double dy;
    double angle;
    int mode;
    int display = 0;
    int average = 0;
    float key[3] = {100.0F, 90.0F, 80.0F};
    float outside[1] = {12.5F};
};

CImgMosic Joined(const CStlImage& canvas, CStlImage& first, CStlImage& second, MosicCall c, CRect* rect = nullptr)
{
    CImgMosic result(canvas);
    result.Do(&first, c.ox, c.oy, &second, c.dx, c.dy, c.angle, c.mode, c.key, c.outside, c.display, c.average, rect,
              0);
    return result;
}

bool SecondShows(const Plain& canvas, const MosicCall& c, const double* a, const double* b)
{
    const double ofA = canvas.Bright([&](int p) { return a[p]; });
    const double ofB = canvas.Bright([&](int p) { return b[p]; });
    double off = 0.0;
    for (int p = 0; p < canvas.planes; ++p) {
        off += std::abs((c.display ? canvas.To256(c.key[p], p) : c.key[p]) - b[p]);
    }
    const bool isKey = off < (c.display ? 1.0 : canvas.range[0] / 256.0);
    const bool isTie = ofA == ofB && canvas.Colour();
    return c.mode == 0 || (c.mode == 1 && !isKey) || (c.mode == 2 && (ofB > ofA || isTie)) ||
           (c.mode == 3 && (ofB < ofA || isTie));
}

/// The mosaic in its plain form.
Plain PlainMosic(const CStlImage& canvas, const CStlImage& first, const CStlImage& second, const MosicCall& c)
{
    const Plain before(canvas);
    const double outside = c.display ? c.outside[0] : 0.0;
    return before.Map([&](double, int x, int y, int p) {
        double a[3];
        double b[3];
        const bool inA = SampleAt(x, y, first, c.ox, c.oy, 0.0, before.Colour(), c.display, outside, a);
        const bool inB =
            SampleAt(x, y, second, c.ox + c.dx, c.oy + c.dy, c.angle, before.Colour(), c.display, outside, b);
        const bool isB = inB && (!inA || SecondShows(before, c, a, b));
        const double v = c.average ? (a[p] + b[p]) / 2.0 : isB ? b[p] : a[p];
        return c.display ? before.ToRaw(v, p) : v;
    });
}

} // namespace

TEST(Mosic, AgreesWithThePlainFormInEveryMode)
{
    const MosicCall calls[] = {
        {0, 0, 0.0, 0.0, 0.0, 0}, {3, 2, 7.0, -4.0, 0.0, 0}, {-2, 5, 2.5, 3.25, 0.0, 0}, {4, 4, 3.0, 1.0, -33.3, 0}};
    for (int kind = 0; kind < 8; ++kind) {
        const CStlImage canvas = RandomImage({29, 23}, kind % 2 == 0 ? 1 : 3, 1);
        CStlImage first = RandomImage({17, 13}, kind / 2 % 2 == 0 ? 1 : 3, 2);
        CStlImage second = RandomImage({15, 16}, kind / 4 == 0 ? 1 : 3, 3);
        second.SetStdCtr(7.5, 8.25);
        SprinkleOddities(first, 4);
        Sprinkle(second, {std::nanf(""), HUGE_VALF}, 5); // pixels with infinities are of one brightness, but not equal
        for (int i = 0; i < 16 * second.GetPlanes(); ++i) { // from the key away, over the tolerance
            const float off = 0.0604F * static_cast<float>(i % 16);
            second.SetPixelGrayRaw(3, i % 16, calls[0].key[i / 16] + off, i / 16);
        }
        for (MosicCall call : calls) {
            for (int i = 0; i < 7 * 4; ++i) {
                call.mode = i % 7 - 1;
                call.display = i / 7 % 2;
                call.average = i / 14;
                ASSERT_TRUE(
                    Agree(Joined(canvas, first, second, call), PlainMosic(canvas, first, second, call), 1, 1e-9))
                    << "kind " << kind << ", mode " << call.mode << ", " << call.display << call.average;
            }
        }
    }
}

TEST(Mosic, KeepsToTheRectangle)
{
    CStlImage first = RandomImage({17, 13}, 3, 2);
    const CStlImage canvas = RandomImage({29, 23}, 3, 1);
    ExpectToKeepToRects(canvas, [&](CRect* rect) {
        return Joined(canvas, first, first, {3, 2, 5.5, 4.5, 10.0, 2}, rect);
    });
}

TEST(Mosic, ReportsRowsAndTakesNullForZero)
{
    ProgressWindow window;
    CStlImage first = RandomImage({4, 3}, 3, 1);
    CImgMosic canvas(RandomImage({6, 5}, 3, 2));
    canvas.SetProgressHandle(window.Handle());
    const CStlImage before(canvas);
    canvas.Do(&first, 1, 1, &first, 0.5, 0.5, 0.0, 1, nullptr, nullptr, 1, 0, nullptr, 1);
    EXPECT_EQ(window.Take(), Counted("Creating mosaic...", 5, {1, 1, 1, 1, 1}));
    EXPECT_TRUE(Agree(canvas, PlainMosic(before, first, first, {1, 1, 0.5, 0.5, 0.0, 1, 1, 0, {}, {}}), 1, 1e-9));
}

TEST(Mosic, IsHarmlessWhateverTheArguments)
{
    constexpr int kMost = std::numeric_limits<int>::max();
    CStlImage first = RandomImage({7, 5}, 3, 1);
    CStlImage empty;
    for (const double odd : {static_cast<double>(NAN), HUGE_VAL, -1e300}) {
        const MosicCall call{kMost, -kMost, odd, odd, odd, kMost};
        EXPECT_EQ(Samples(Joined(first, first, first, call)), std::vector<float>(105, 0.0F));
        EXPECT_EQ(Samples(Joined(first, empty, empty, call)), std::vector<float>(105, 0.0F));
        EXPECT_EQ(Samples(Joined(empty, first, first, call)).size(), 0U);
    }
}
