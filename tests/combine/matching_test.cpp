#include "corvane/combine/matching.h"

#include <cmath>

#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

constexpr double kNoScore = 3.402823466e38;

/// The score in its plain form at any offset; `between` reads the reference between its samples.
double PlainScore(const Plain& s, const Plain& r, double ox, double oy, const double* gains, bool between)
{
    const CRect both(static_cast<int>(std::ceil(std::max(ox, 0.0))), static_cast<int>(std::ceil(std::max(oy, 0.0))),
                     static_cast<int>(std::floor(std::min<double>(s.width, ox + r.width))),
                     static_cast<int>(std::floor(std::min<double>(s.height, oy + r.height))));
    double sum = 0.0;
    int used = 0;
    s.ForEach([&](int x, int y, int p) {
        if (both.PtInRect({x, y}) && p < r.planes) {
            const double sv = s.At(x, y, p);
            const double rv =
                between ? r.Between(x - ox, y - oy, p) : r.At(x - static_cast<int>(ox), y - static_cast<int>(oy), p);
            // The blank value of the searched image counts for both.
            const bool isBlank = s.IsBlank(sv) || (r.blankUsed && std::trunc(rv) == s.blank);
            sum += isBlank ? 0.0 : (sv - rv * gains[p]) * (sv - rv * gains[p]);
            used += isBlank ? 0 : 1;
        }
    });
    return both.Width() > 0 && both.Height() > 0 ? sum / used : kNoScore;
}

/// The search in its plain form. `steps` are the progress steps that it reports.
std::pair<double, double> PlainSearch(const CStlImage& image, const CStlImage& reference, double x, double y, int range,
                                      bool subPixel, std::vector<int>& steps)
{
    const Plain s(image);
    const Plain r(reference);
    double gains[3] = {};
    for (int p = 0; p < s.planes; ++p) {
        gains[p] = static_cast<double>(image.GetAvrGrayRaw(p)) / static_cast<double>(reference.GetAvrGrayRaw(p));
    }
    double best = kNoScore;
    std::pair<double, double> at;
    const auto scan = [&](double cx, double cy, double reach, double step) {
        for (double oy = cy - reach; oy <= cy + reach; oy += step) {
            for (double ox = cx - reach; ox <= cx + reach; ox += step) {
                if (step == 2.0 || std::pair(ox, oy) != std::pair(cx, cy)) {
                    const double score = PlainScore(s, r, ox, oy, gains, step < 1.0);
                    steps.push_back(step < 1.0 ? 6 : 1);
                    at = score < best ? std::pair(ox, oy) : at;
                    best = std::min(best, score);
                }
            }
        }
    };
    scan(std::trunc(x), std::trunc(y), range / 2, 2.0);
    scan(at.first, at.second, 1.0, 1.0);
    if (subPixel) {
        scan(at.first, at.second, 0.6, 0.3);
        scan(at.first, at.second, 0.19999999999999998, 0.1);
    }
    return at;
}

/// A part of an image, placed between its samples.
CStlImage CutOut(const CStlImage& image, double left, double top, Size size)
{
    return Make(size.width, size.height, image.GetPlanes(),
                [&](int x, int y, int p) { return image.GetPixelGrayRaw(left + x, top + y, p); });
}

/// A few smooth stars, so that positions between samples mean something.
CStlImage Field(int planes)
{
    return Make(80, 60, planes, [](int x, int y, int p) {
        Random random(81);
        double light = 0.0;
        for (int star = 0; star < 12; ++star) {
            const double dx = x - random.Between(0.0, 80.0);
            const double dy = y - random.Between(0.0, 60.0);
            light += 10.0 + p + 1000.0 * std::exp((dx * dx + dy * dy) * -0.1);
        }
        return light;
    });
}

} // namespace

TEST(Matching, ScoresEqualThePlainForm)
{
    ForEachImage([](CStlImage& searched) {
        for (const int kind : {0, 1, 2, 3}) {
            CStlImage reference = RandomImage({5, 4}, kind % 2 == 0 ? 1 : 3, 82);
            Sprinkle(reference, {-7.0F, -7.6F}, 83);
            reference.SetBlankUsed(kind >= 2);
            reference.SetBlank(100); // never looked at
            searched.SetBlank(-7);
            const CImgMatching image(searched);
            const Plain s(image);
            const Plain r(reference);
            const double gains[] = {1.1, 0.9, 0.5};
            Random random(84);
            for (int i = 0; i < 60; ++i) {
                const int ix = random.Whole(-7, s.width + 2);
                const int iy = random.Whole(-6, s.height + 2);
                const double fx = ix + (i % 3 == 0 ? 0.0 : random.Between(0.0, 1.0));
                const double fy = iy + random.Between(0.0, 1.0);
                const double whole = image.CalcValue(&reference, ix, iy, gains);
                EXPECT_TRUE(Same(whole, PlainScore(s, r, ix, iy, gains, false), 1e-12));
                const double between = image.CalcValue(&reference, fx, fy, gains);
                EXPECT_TRUE(Same(between, PlainScore(s, r, fx, fy, gains, true), 1e-12));
            }
        }
    });
}

TEST(Matching, FindsACutOut)
{
    const struct {
        double left, top, x, y;
        int range, subPixel;
    } cases[] = {{40, 30, 42, 28, 10, 0}, {40, 30, 40.9, 30.9, 0, 0},  {41, 30, 40, 30, 1, 0},
                 {33, 21, 35, 23, 8, 1},  {30.6, 20.3, 33, 18, 10, 1}, {0.2, 20.3, 1, 19, 4, 1}};
    for (const int planes : {1, 3}) {
        const CStlImage field = Field(planes);
        for (const auto& c : cases) {
            SCOPED_TRACE(testing::Message() << c.left << ' ' << c.range << ' ' << planes);
            CStlImage reference = CutOut(field, c.left, c.top, {21, 17});
            CImgMatching image(field);
            ProgressWindow window;
            image.SetProgressHandle(window.Handle());
            double x = c.x;
            double y = c.y;
            std::vector<int> steps;
            const auto expected = PlainSearch(image, reference, x, y, c.range, c.subPixel != 0, steps);
            ASSERT_EQ(image.Do(&reference, &x, &y, c.range, c.subPixel, 1), 1);
            EXPECT_EQ(std::pair(x, y), expected);
            const int total = c.range * c.range / 4 + (c.subPixel ? 297 : 9);
            EXPECT_EQ(window.Take(), Counted("Processing object matching...", total, steps));
        }
    }
}

TEST(Matching, TiesGoToTheFirstAndNoOverlapFindsNothing)
{
    CImgMatching flat(CStlImage(-32, 20, 20, 1, 1.0, 0.0, 1));
    std::fill_n(flat.GetImageAdr(0, 0, 0), 400, 3.0F);
    CStlImage part = CutOut(flat, 0, 0, {4, 4});
    double x = 8.0;
    double y = 9.0;
    EXPECT_EQ(flat.Do(&part, &x, &y, 8, 1, 0), 1);
    EXPECT_EQ(std::pair(x, y), std::pair(4.0, 5.0));
    ProgressWindow window;
    flat.SetProgressHandle(window.Handle());
    x = 500.0;
    EXPECT_EQ(flat.Do(&part, &x, &y, 4, 1, 1), 0);
    EXPECT_EQ(std::pair(x, y), std::pair(500.0, 5.0));
    EXPECT_EQ(window.Take(), Counted("Processing object matching...", 301, std::vector<int>(9, 1)));
    EXPECT_EQ(flat.Do(&part, &x, &y, -9, 0, 0), 0);
    const double gain = 1.0;
    for (const double distant : {1e9, -1e9, 3e9, 1e300, -1e300, std::nan("")}) {
        EXPECT_EQ(flat.CalcValue(&part, distant, 0.5, &gain), kNoScore) << distant;
        EXPECT_EQ(flat.CalcValue(&part, 0.5, distant, &gain), kNoScore) << distant;
    }
}
