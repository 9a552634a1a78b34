#include "corvane/tone/stretch.h"

#include <cmath>
#include <tuple>

#include "corvane/tone/auto_stretch.h"
#include "corvane/tone/hyperbolic_stretch.h"
#include "tests/tone/mapped.h"

using namespace corvane;
using namespace corvane::test;

namespace {

double At(const StretchFunction& stretch, double x)
{
    stretch(&x, 1);
    return x;
}

/// T of the definition, with the slope that its formula has.
double T(double u, double d, double b)
{
    if (b == 0.0) {
        return 1.0 - std::exp(-d * u);
    }
    if (b > 0.0) {
        return 1.0 - std::pow(1.0 + b * d * u, -1.0 / b);
    }
    return b == -1.0 ? std::log(1.0 + d * u) : (1.0 - std::pow(1.0 - b * d * u, (b + 1.0) / b)) / (d * (b + 1.0));
}

double Slope(double u, double d, double b)
{
    if (b == 0.0) {
        return d * std::exp(-d * u);
    }
    if (b > 0.0) {
        return d * std::pow(1.0 + b * d * u, -1.0 / b - 1.0);
    }
    return b == -1.0 ? d / (1.0 + d * u) : std::pow(1.0 - b * d * u, 1.0 / b);
}

double Hyperbola(double x, const HyperbolicShape& s)
{
    const auto raw = [&](double v) {
        if (v < s.lp) {
            return -T(s.sp - s.lp, s.d, s.b) + Slope(s.sp - s.lp, s.d, s.b) * (v - s.lp);
        }
        if (v > s.hp) {
            return T(s.hp - s.sp, s.d, s.b) + Slope(s.hp - s.sp, s.d, s.b) * (v - s.hp);
        }
        return v < s.sp ? -T(s.sp - v, s.d, s.b) : T(v - s.sp, s.d, s.b);
    };
    return (raw(x) - raw(0.0)) / (raw(1.0) - raw(0.0));
}

} // namespace

TEST(Stretch, FunctionsAgreeWithTheirPlainForms)
{
    EXPECT_NEAR(At(AsinhStretch(AsinhFor(0.01, 0.25)), 0.01), 0.25, 1e-9);
    for (double x = 0.0; x <= 1.0; x += 1.0 / 1024.0) {
        for (const double m : {1e-4, 0.25, 0.5, 0.9}) {
            EXPECT_NEAR(At(MidtoneStretch(m), x), (m - 1.0) * x / ((2.0 * m - 1.0) * x - m), 1e-12);
            EXPECT_NEAR(At(MidtoneStretch(MidtoneFor(m, 0.3)), m), 0.3, 1e-12);
        }
        for (const double k : {1e-5, 0.7, 100.0, 1e6}) {
            EXPECT_NEAR(At(AsinhStretch(k), x), std::asinh(k * x) / std::asinh(k), 1e-12) << k;
            EXPECT_NEAR(At(LogStretch(k), x), std::log1p(k * x) / std::log1p(k), 1e-12) << k;
        }
        for (const double g : {0.4, 1.0, 2.2}) {
            EXPECT_NEAR(At(GammaStretch(g), x), std::pow(x, 1.0 / g), 1e-12) << g;
        }
        EXPECT_NEAR(At(TableStretch({0.0, 0.6, 1.0}), x), x < 0.5 ? 1.2 * x : 0.2 + 0.8 * x, 1e-12);
    }
}

TEST(Stretch, HyperbolasAgreeWithTheirPlainFormAndTheirInverse)
{
    for (const double b : {0.0, 0.6, 7.0, -1.0, -1.01, -0.4, -2.5}) {
        for (const auto& [lp, sp, hp] :
             {std::tuple{0.0, 0.0, 1.0}, {0.1, 0.3, 0.8}, {0.4, 0.4, 0.4}, {0.0, 1.0, 1.0}}) {
            for (const double d : {0.02, 3.0, 14.0}) {
                HyperbolicShape shape{d, b, sp, lp, hp};
                const StretchFunction stretch = HyperbolicStretch(shape);
                shape.inverse = true;
                const StretchFunction inverse = HyperbolicStretch(shape);
                SCOPED_TRACE(testing::Message() << d << ' ' << b << ' ' << sp);
                for (double x = 0.0; x <= 1.0; x += 1.0 / 64.0) {
                    EXPECT_NEAR(At(stretch, x), Hyperbola(x, shape), 1e-12) << x;
                    EXPECT_NEAR(At(inverse, At(stretch, x)), x, 1e-6) << x;
                }
                EXPECT_EQ(At(stretch, 0.0), 0.0);
                EXPECT_NEAR(At(stretch, 1.0), 1.0, 1e-15);
            }
        }
    }
    EXPECT_EQ(At(HyperbolicStretch({0.0}), 0.3), 0.3);
}

TEST(Stretch, GoesByTheLevelsOfEachPlane)
{
    ForEachImage([](CStlImage& image) {
        ForEachRect(image, [&](CRect* rect) {
            CStlImage result(image);
            Stretch(result, image, {MidtoneStretch(0.2), GammaStretch(3.0)}, {.high = 150.5}, rect, {});
            const Plain before(image);
            EXPECT_TRUE(Agree(result, before.Map([&](double v, int x, int y, int p) {
                const double place = std::min(std::max((v - before.min[p]) / (150.5 - before.min[p]), 0.0), 1.0);
                const double to = p == 0 ? -0.8 * place / (-0.6 * place - 0.2) : std::pow(place, 1.0 / 3.0);
                const bool stays = std::isnan(v) || before.IsBlank(v) || (rect && !rect->PtInRect({x, y}));
                return stays ? v : before.min[p] + to * (before.max[p] - before.min[p]);
            }),
                              1, 1e-11));
        });
    });
}

TEST(Stretch, KeepsTheColoursOfEachPixel)
{
    CStlImage image = RandomImage({37, 11}, 3, 4);
    for (int p = 0; p < 3; ++p) {
        image.CImage::SetLevel(p, 0.0, 250.0);
    }
    image.SetPixelGrayRaw(3, 2, NAN, 1);
    CStlImage result(image);
    Stretch(result, image, {AsinhStretch(50.0)}, {.perPlane = false}, nullptr, {});
    const Plain from(image);
    const auto place = [&](int x, int y, int p) { return std::min(std::max(from.At(x, y, p) / 250.0, 0.0), 1.0); };
    EXPECT_TRUE(Agree(result, from.Map([&](double v, int x, int y, int p) {
        const double r = place(x, y, 0);
        const double g = std::isnan(from.At(x, y, 1)) ? 0.0 : place(x, y, 1);
        const double b = place(x, y, 2);
        const double mean = (r + g + b) / (std::isnan(from.At(x, y, 1)) ? 2.0 : 3.0);
        const double factor = std::asinh(50.0 * mean) / std::asinh(50.0) / mean;
        return std::isnan(v) ? v : 250.0 * place(x, y, p) * std::min(factor, 1.0 / std::max({r, g, b}));
    }),
                      1));
}

TEST(Stretch, EqualisesWhatLiesBetweenTheEnds)
{
    CStlImage image = RandomImage({200, 150}, 3, 6);
    for (int p = 0; p < 3; ++p) {
        image.CImage::SetLevel(p, 0.0, 250.0);
    }
    const std::vector<StretchFunction> own = EqualisingStretches(image, {}, nullptr, {});
    const std::vector<StretchFunction> joint = EqualisingStretches(image, {.perPlane = false}, nullptr, {});
    ASSERT_EQ(own.size() + joint.size(), 4U);
    const Plain plain(image);
    double below[4] = {};
    double all[4] = {};
    plain.ForEach([&](int x, int y, int p) {
        const double v = plain.At(x, y, p);
        for (const int i : {p, 3}) {
            all[i] += v >= 0.0 && v <= 250.0;
            below[i] += v >= 0.0 && v < 75.0;
        }
    });
    for (std::size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(At(i < 3 ? own[i] : joint[0], 0.3), below[i] / all[i], 1e-4) << i;
    }
}

namespace {

double MedianOf(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return 0.5 * (v[(v.size() - 1) / 2] + v[v.size() / 2]);
}

struct Spread {
    std::vector<double> samples{};
    double median = 0.0;
    double sigma = 0.0;
};

Spread SpreadOf(const CStlImage& image, int plane)
{
    Spread spread;
    const Plain plain(image);
    plain.ForEach([&](int x, int y, int p) {
        const double v = plain.At(x, y, p);
        if (p == plane && std::isfinite(v) && !plain.IsBlank(v)) {
            spread.samples.push_back(v);
        }
    });
    spread.median = MedianOf(spread.samples);
    std::vector<double> away;
    for (const double v : spread.samples) {
        away.push_back(std::fabs(v - spread.median));
    }
    spread.sigma = 1.4826 * MedianOf(away);
    return spread;
}

/// A sky of 1000 and up with a few stars, blanks, NaN and infinities; `sign` -1 turns it over.
CStlImage Field(double sign)
{
    Random random(9);
    CStlImage image = Make(120, 101, 3, [&](int x, int y, int p) {
        const double star = (x * y) % 97 == 5 ? 30000.0 * random.Between(0.0, 1.0) : 0.0;
        return sign * (1000.0 + 200.0 * p + 20.0 * random.Between(-1.0, 1.0) + star);
    });
    image.SetBlankUsed(1);
    image.SetBlank(77);
    for (int p = 0; p < 3; ++p) {
        image.SetPixelGrayRaw(7, 7, 77.0F, p);
        image.SetPixelGrayRaw(8, 7, NAN, p);
        image.SetPixelGrayRaw(9, 7 + p, INFINITY, p);
    }
    return image;
}

} // namespace

TEST(AutoStretch, BringsTheMedianToTheTarget)
{
    for (const double sign : {1.0, -1.0}) {
        const CStlImage image = Field(sign);
        CStlImage result(image);
        AutoStretch(result, image, {.shadows = -2.0, .target = 0.2, .linked = false}, {});
        for (int p = 0; p < 3; ++p) {
            const Spread before = SpreadOf(image, p);
            const auto [least, most] = std::minmax_element(before.samples.begin(), before.samples.end());
            const double away = before.median - sign * 2.0 * before.sigma;
            EXPECT_NEAR(result.GetLevelMin(p), sign > 0.0 ? away : *least, 1e-5);
            EXPECT_NEAR(result.GetLevelMax(p), sign > 0.0 ? *most : away, 1e-5);
            result.SetPixelGrayRaw(9, 7 + p, NAN, p); // cut to white, it counts
            const double median = SpreadOf(result, p).median;
            EXPECT_NEAR((median - result.GetLevelMin(p)) / result.GetLevelRange(p), sign > 0.0 ? 0.2 : 0.8, 1e-6);
            EXPECT_TRUE(std::isnan(result.GetPixelGrayRaw(8, 7, p)));
            EXPECT_EQ(result.GetPixelGrayRaw(7, 7, p), 77.0F);
        }
    }
}

TEST(AutoStretch, LinksPlanesByMeans)
{
    const CStlImage image = Field(1.0);
    const std::vector<AutoStretchPlane> planes = ChooseAutoStretch(image, {});
    const Spread s[]{SpreadOf(image, 0), SpreadOf(image, 1), SpreadOf(image, 2)};
    const double median = (s[0].median + s[1].median + s[2].median) / 3.0;
    const double most = *std::max_element(s[2].samples.begin(), s[2].samples.end());
    for (const AutoStretchPlane& plane : planes) {
        EXPECT_NEAR(plane.low, median - 2.8 * (s[0].sigma + s[1].sigma + s[2].sigma) / 3.0, 1e-5);
        EXPECT_GE(plane.high, most);
        EXPECT_NEAR(At(MidtoneStretch(plane.midtone), (median - plane.low) / (plane.high - plane.low)), 0.25, 1e-9);
    }
    CStlImage flat = Make(9, 9, 1, [](int, int, int) { return 5.0; });
    flat.CImage::SetLevel(0, 2.0, 9.0);
    AutoStretch(flat, flat.Shared(), {}, {});
    EXPECT_EQ(flat.GetPixelGrayRaw(4, 4, 0), 5.0F);
    flat.SetPixelGrayRaw(3, 3, 11.0F, 0); // no noise, but a star
    EXPECT_EQ(ChooseAutoStretch(flat, {})[0].low, 5.0);
}

// A sky with dead pixels, far darker than any star is bright, is no negative.
TEST(AutoStretch, IsNotTurnedOverByDeadPixels)
{
    Random random(4);
    CStlImage image = Make(200, 150, 1, [&](int x, int y, int) {
        return x == 7 && y % 50 == 3 ? 0.0 : 500.0 + 10.0 * (random.Between(-1.0, 1.0) + random.Between(-1.0, 1.0));
    });
    const Spread sky = SpreadOf(image, 0);
    const AutoStretchPlane plane = ChooseAutoStretch(image, {})[0];
    EXPECT_NEAR(plane.low, sky.median - 2.8 * sky.sigma, 1e-5);
    EXPECT_EQ(plane.high, *std::max_element(sky.samples.begin(), sky.samples.end()));
}
