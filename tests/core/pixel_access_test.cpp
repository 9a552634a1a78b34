#include <cmath>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

double Mix(const double* rgb)
{
    return 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
}

bool Close(double a, double b)
{
    return Same(a, b, 1e-12) || std::fabs(a - b) < 1e-10;
}

/// Compares what is read at a place, whole or between samples, with the plain form.
template <class Number>
void ExpectReads(const CStlImage& image, const Plain& plain, Number x, Number y)
{
    using Result = decltype(image.GetPixelGrayRaw(x, y, 0));
    const auto raw = [&](int p) { return plain.Between(x, y, p); };
    const auto shown = [&](int p) { return plain.To256(raw(p), p); };
    for (int p = 0; p < plain.planes; ++p) {
        ASSERT_TRUE(Same(image.GetPixelGrayRaw(x, y, p), raw(p))) << x << ' ' << y << ' ' << p;
        ASSERT_TRUE(Same(image.GetPixelGray(x, y, p), static_cast<Result>(raw(p) - plain.min[p])));
        ASSERT_TRUE(Same(image.GetPixelGray256f(x, y, p), static_cast<Result>(shown(p))));
    }
    const double low = Mix(plain.min); // of all three, whatever the planes
    const double range = Mix(plain.max) - low;
    const double bright = plain.Bright(shown);
    ASSERT_TRUE(Close(image.GetPixelBright256f(x, y), bright));
    ASSERT_TRUE(Close(image.GetPixelBright(x, y), bright * range * static_cast<double>(0.003921569F) + low));
    ASSERT_TRUE(!plain.Colour() || Close(image.GetPixelBrightRaw(x, y), plain.Bright(raw)));
}

/// How an image is placed onto a frame.
struct Placement {
    double dx, dy, sine, cosine, scale;
};

/// Where pixel (x, y) of the frame lies in the image.
std::pair<double, double> Map(const Placement& how, const CfPoint& c, int x, int y)
{
    const bool straight = how.cosine == 1.0 && how.sine == 0.0;
    if (straight && how.scale == 1.0) {
        return {x - how.dx, y - how.dy};
    }
    if (straight) {
        return {(x - c.x - how.dx) * how.scale + c.x, (y - c.y - how.dy) * how.scale + c.y};
    }
    const double a = x - c.x - how.dx;
    const double b = c.y - y + how.dy;
    return {(a * how.cosine - b * how.sine) * how.scale + c.x, c.y - (a * how.sine + b * how.cosine) * how.scale};
}

} // namespace

TEST(PixelAccess, WholeCoordinatesClampAndScale)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        for (int i = 0; i < (plain.width + 4) * (plain.height + 4); ++i) {
            const int x = i % (plain.width + 4) - 2;
            const int y = i / (plain.width + 4) - 2;
            ExpectReads(image, plain, x, y);
            const auto at = [&](int p) { return image.GetImageAdr(x, y, p, 1); };
            for (int p = 0; p < plain.planes; ++p) {
                ASSERT_TRUE(Same(image.GetPixelGrayRaw(at(p)), plain.At(x, y, p)));
                ASSERT_EQ(image.GetPixelGray256(x, y, p), plain.Byte(x, y, p));
            }
            const double shown = plain.Bright([&](int p) { return plain.To256(plain.At(x, y, p), p); });
            ASSERT_TRUE(Close(image.GetPixelBrightRaw(at(0), at(1), at(2)), plain.ToRaw(shown, 0)));
        }
    });
    CStlImage image = RandomImage({4, 3}, 3, 1);
    Plain expected(image);
    image.SetPixelGrayRaw(9, 1, 5.5F, 0);
    expected.At(3, 1, 0) = 5.5F;
    image.SetPixelGray(-3, -1, 5.1F, 1);
    expected.At(0, 0, 1) = static_cast<float>(expected.min[1] + 5.1F);
    image.SetPixelGray256f(2, 7, 99.9F, 2);
    expected.At(2, 2, 2) = static_cast<float>(expected.ToRaw(99.9F, 2));
    EXPECT_TRUE(Agree(image, expected));
}

TEST(PixelAccess, BetweenSamples)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        std::vector<double> xs{-0.5, -1.0, 1e300, -HUGE_VAL, HUGE_VAL, NAN};
        std::vector<double> ys(xs);
        Random random(4);
        for (int i = 0; i < 20; ++i) { // edges first
            xs.push_back(plain.width + (i < 4 ? i * 0.5 - 1.0 : random.Between(-plain.width, 0.0)));
            ys.push_back(plain.height + (i < 4 ? i * 0.5 - 1.0 : random.Between(-plain.height, 0.0)));
        }
        for (std::size_t i = 0; i < xs.size() * ys.size(); ++i) {
            const double x = xs[i % xs.size()];
            const double y = ys[i / xs.size()];
            ExpectReads(image, plain, x, y);
            for (int p = 0; p < plain.planes; ++p) {
                const double v = plain.Between(x, y, p);
                ASSERT_TRUE(!(std::fabs(v) < 1e6) ||
                            image.GetPixelGray256(x, y, p) == (static_cast<int>(plain.To256(v, p)) & 255));
            }
        }
    });
}

TEST(PixelAccess, AlignedSampling)
{
    constexpr double kOut = -12345.5;
    ForEachImage([](CStlImage& image) {
        const CfPoint centre(image.GetWidth() / 2.0 + 0.3, image.GetHeight() / 2.0 - 0.2);
        image.SetStdCtr(centre);
        const Plain plain(image);
        for (int i = 0; i < 40; ++i) {
            const double radians = std::vector{0.0, 1e-11, 0.58, 1.5707963, -3.14159}[static_cast<std::size_t>(i % 5)];
            const double dx = std::vector{0.0, 1.0, -0.37, 1e9}[static_cast<std::size_t>(i / 5 % 4)];
            const Placement how{dx, 1.7 - dx * 2.0, std::sin(radians), std::cos(radians), i < 20 ? 1.0 : 0.7};
            SCOPED_TRACE(i);
            for (int k = 0; k<(plain.width + 2) * (plain.height + 2); k += plain.width> 100 ? 7 : 1) {
                const int x = k % (plain.width + 2) - 1;
                const int y = k / (plain.width + 2) - 1;
                const auto [sx, sy] = Map(how, centre, x, y);
                const bool inside = 0.0 <= sx && sx < plain.width && 0.0 <= sy && sy < plain.height;
                double rgb[6];
                int out = 7;
                image.GetPixelRgbRaw(x, y, how.dx, how.dy, how.sine, how.cosine, how.scale, rgb, rgb + 1, rgb + 2, kOut,
                                     &out, nullptr, nullptr);
                ASSERT_EQ(out, inside ? 0 : 1);
                image.GetPixelRgb256f(x, y, how.dx, how.dy, how.sine, how.cosine, how.scale, rgb + 3, rgb + 4, rgb + 5,
                                      kOut, nullptr, nullptr, nullptr);
                for (const int nearest : {1, 0}) {
                    const auto raw = [&, px = sx, py = sy](int p) -> double {
                        return !inside   ? kOut
                               : nearest ? plain.At(static_cast<int>(px + 0.5), static_cast<int>(py + 0.5), p)
                                         : plain.Between(px, py, p);
                    };
                    const auto shown = [&](int p) { return inside ? plain.To256(raw(p), p) : kOut; };
                    for (int q = 0; q < 3 && nearest == 0; ++q) {
                        const int p = plain.Colour() ? q : 0;
                        ASSERT_TRUE(Same(rgb[q], raw(p)) && Same(rgb[3 + q], shown(p)));
                    }
                    for (int p = -1; p < plain.planes; ++p) {
                        const auto expected = [&](auto of) {
                            return p >= 0 || !inside ? of(std::max(p, 0)) : plain.Bright(of);
                        };
                        double at[2] = {};
                        ASSERT_TRUE(Same(image.GetPixelGrayRaw(x, y, how.dx, how.dy, how.sine, how.cosine, how.scale, p,
                                                               kOut, nearest, &out, &at[0], &at[1]),
                                         expected(raw)));
                        ASSERT_TRUE(Same(at[0], sx) && Same(at[1], sy) && out == (inside ? 0 : 1));
                        ASSERT_TRUE(Same(image.GetPixelGray256f(x, y, how.dx, how.dy, how.sine, how.cosine, how.scale,
                                                                p, kOut, nearest, nullptr, nullptr, nullptr),
                                         expected(shown)));
                    }
                }
            }
        }
    });
}
