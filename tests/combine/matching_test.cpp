#include "corvane/combine/matching.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/images.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

constexpr double kNoScore = 3.402823466e38;

bool IsPairBlank(const Plain& s, const Plain& r, double sv, double rv)
{
    return (s.blankUsed && std::trunc(sv) == s.blank) || (r.blankUsed && std::trunc(rv) == s.blank);
}

/// The score in its plain form at any offset; `between` reads the reference between its samples.
double PlainScore(const Plain& s, const Plain& r, double ox, double oy, const double* gains, bool between)
{
    const int left = static_cast<int>(std::ceil(std::max(ox, 0.0)));
    const int top = static_cast<int>(std::ceil(std::max(oy, 0.0)));
    const int right = static_cast<int>(std::floor(std::min<double>(s.width, ox + r.width)));
    const int bottom = static_cast<int>(std::floor(std::min<double>(s.height, oy + r.height)));
    if (left >= right || top >= bottom) {
        return kNoScore;
    }
    double sum = 0.0;
    int used = 0;
    for (int p = 0; p < std::min(s.planes, r.planes); ++p) {
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                const double sv = s.At(x, y, p);
                const double rv = between ? r.Between(x - ox, y - oy, p)
                                          : r.At(x - static_cast<int>(ox), y - static_cast<int>(oy), p);
                if (!IsPairBlank(s, r, sv, rv)) {
                    sum += (sv - rv * gains[p]) * (sv - rv * gains[p]);
                    ++used;
                }
            }
        }
    }
    return sum / used;
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
    const auto scan = [&](double left, double right, double top, double bottom, double step, bool between) {
        const std::pair<double, double> centre = at;
        for (double oy = top; oy <= bottom; oy += step) {
            for (double ox = left; ox <= right; ox += step) {
                if (step == 2.0 || std::pair(ox, oy) != centre) {
                    const double score = PlainScore(s, r, ox, oy, gains, between);
                    steps.push_back(between ? 6 : 1);
                    at = score < best ? std::pair(ox, oy) : at;
                    best = std::min(best, score);
                }
            }
        }
    };
    const int half = range / 2;
    scan(std::trunc(x - half), std::trunc(x + half), std::trunc(y - half), std::trunc(y + half), 2.0, false);
    scan(at.first - 1, at.first + 1, at.second - 1, at.second + 1, 1.0, false);
    if (subPixel) {
        scan(at.first - 0.6, at.first + 0.6, at.second - 0.6, at.second + 0.6, 0.3, true);
        const double reach = 0.19999999999999998;
        scan(at.first - reach, at.first + reach, at.second - reach, at.second + reach, 0.1, true);
    }
    return at;
}

/// A part of an image, placed between its samples.
CStlImage CutOut(const CStlImage& image, double left, double top, Size size)
{
    CStlImage part(-32, size.width, size.height, image.GetPlanes(), 1.0, 0.0, 1);
    Plain(part).ForEach([&](int x, int y, int p) {
        *part.GetImageAdr(x, y, p) = static_cast<float>(image.GetPixelGrayRaw(left + x, top + y, p));
    });
    return part;
}

/// A few smooth stars, so that positions between samples mean something.
CStlImage Field(Size size, int planes)
{
    CStlImage image(-32, size.width, size.height, planes, 1.0, 0.0, 1);
    Random random(81);
    for (int star = 0; star < 12; ++star) {
        const double cx = random.Between(0.0, size.width);
        const double cy = random.Between(0.0, size.height);
        Plain(image).ForEach([&](int x, int y, int p) {
            const double square = (x - cx) * (x - cx) + (y - cy) * (y - cy);
            *image.GetImageAdr(x, y, p) += static_cast<float>(10.0 + p + 1000.0 * std::exp(square * -0.1));
        });
    }
    return image;
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
                EXPECT_TRUE(
                    Same(image.CalcValue(&reference, ix, iy, gains), PlainScore(s, r, ix, iy, gains, false), 1e-12));
                EXPECT_TRUE(
                    Same(image.CalcValue(&reference, fx, fy, gains), PlainScore(s, r, fx, fy, gains, true), 1e-12));
            }
        }
    });
}

TEST(Matching, FindsACutOut)
{
    struct Case {
        double left, top, x, y;
        int range, subPixel;
        double tolerance;
    };
    for (const int planes : {1, 3}) {
        const CStlImage field = Field({80, 60}, planes);
        for (const Case& c : {Case{40, 30, 42, 28, 10, 0, 0.0},
                              {40, 30, 40.9, 30.9, 0, 0, 0.0},
                              {41, 30, 40, 30, 1, 0, 0.0},
                              {33, 21, 35, 23, 8, 1, 1e-9},
                              {30.6, 20.3, 33, 18, 10, 1, 0.051},
                              {0.2, 20.3, 1, 19, 4, 1, 1.0}}) {
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
            EXPECT_NEAR(x, c.left, c.tolerance);
            EXPECT_NEAR(y, c.top, c.tolerance);
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
}
