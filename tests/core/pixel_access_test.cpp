#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

double Mix(const double* rgb)
{
    return 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
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
        for (int i = 0; i < (plain.width + 4) * (plain.height + 4) * plain.planes; ++i) {
            const int x = i % (plain.width + 4) - 2;
            const int y = i / (plain.width + 4) % (plain.height + 4) - 2;
            const int p = i / (plain.width + 4) / (plain.height + 4);
            const float v = plain.At(x, y, p);
            const float* const at = image.GetImageAdr(x, y, p, 1);
            ASSERT_TRUE(Same(image.GetPixelGrayRaw(x, y, p), v) && Same(image.GetPixelGrayRaw(at), v));
            ASSERT_TRUE(Same(image.GetPixelGray(x, y, p), static_cast<float>(v - plain.min[p])));
            ASSERT_TRUE(Same(image.GetPixelGray256f(x, y, p), static_cast<float>(plain.To256(v, p))));
            ASSERT_EQ(image.GetPixelGray256(x, y, p), plain.Byte(x, y, p));
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

TEST(PixelAccess, Brightness)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        const double low = Mix(plain.min);
        const auto toRaw = [&](double d) {
            return d * (Mix(plain.max) - low) * static_cast<double>(0.003921569F) + low;
        };
        const auto close = [](double a, double b) { return Same(a, b, 1e-12) || std::fabs(a - b) < 1e-10; };
        Random random(3);
        for (int i = 0; i < 200; ++i) {
            const double x = random.Between(-1.0, plain.width + 1);
            const double y = random.Between(-1.0, plain.height + 1);
            const int ix = static_cast<int>(std::floor(x));
            const int iy = static_cast<int>(std::floor(y));
            double raw[2][3];
            double shown[2][3];
            for (int p = 0; p < 3; ++p) {
                raw[0][p] = plain.At(ix, iy, plain.Colour() ? p : 0);
                raw[1][p] = plain.Between(x, y, plain.Colour() ? p : 0);
                shown[0][p] = plain.To256(raw[0][p], p);
                shown[1][p] = plain.To256(raw[1][p], p);
            }
            const double whole = plain.Colour() ? Mix(shown[0]) : shown[0][0];
            const double between = plain.Colour() ? Mix(shown[1]) : shown[1][0];
            ASSERT_TRUE(close(image.GetPixelBright256f(ix, iy), whole) &&
                        close(image.GetPixelBright256f(x, y), between));
            ASSERT_TRUE(close(image.GetPixelBright(ix, iy), toRaw(whole)) &&
                        close(image.GetPixelBright(x, y), toRaw(between)));
            ASSERT_TRUE(!plain.Colour() || (close(image.GetPixelBrightRaw(ix, iy), Mix(raw[0])) &&
                                            close(image.GetPixelBrightRaw(x, y), Mix(raw[1]))));
            const auto at = [&](int p) { return image.GetImageAdr(ix, iy, p, 1); };
            ASSERT_TRUE(close(image.GetPixelBrightRaw(at(0), at(1), at(2)), plain.ToRaw(whole, 0)));
        }
    });
}

TEST(PixelAccess, BetweenSamples)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        std::vector<double> xs{-0.5, -1.0, 1e300, -kInfinity, kInfinity, std::numeric_limits<double>::quiet_NaN()};
        std::vector<double> ys(xs);
        Random random(4);
        for (int i = 0; i < 20; ++i) { // edges first
            xs.push_back(plain.width + (i < 4 ? i * 0.5 - 1.0 : random.Between(-plain.width, 0.0)));
            ys.push_back(plain.height + (i < 4 ? i * 0.5 - 1.0 : random.Between(-plain.height, 0.0)));
        }
        for (std::size_t i = 0; i < xs.size() * ys.size(); ++i) {
            const double x = xs[i % xs.size()];
            const double y = ys[i / xs.size()];
            for (int p = 0; p < plain.planes; ++p) {
                const double v = plain.Between(x, y, p);
                ASSERT_TRUE(Same(image.GetPixelGrayRaw(x, y, p), v)) << x << ' ' << y << ' ' << p;
                ASSERT_TRUE(Same(image.GetPixelGray(x, y, p), v - plain.min[p]));
                ASSERT_TRUE(Same(image.GetPixelGray256f(x, y, p), plain.To256(v, p)));
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
        for (int k = 0; k < 40; ++k) {
            const double radians = std::vector{0.0, 1e-11, 0.58, 1.5707963, -3.14159}[static_cast<std::size_t>(k % 5)];
            const double dx = std::vector{0.0, 1.0, -0.37, 1e9}[static_cast<std::size_t>(k / 5 % 4)];
            const Placement how{dx, 1.7 - dx * 2.0, std::sin(radians), std::cos(radians), k < 20 ? 1.0 : 0.7};
            SCOPED_TRACE(k);
            for (int i = 0; i<(plain.width + 2) * (plain.height + 2); i += plain.width> 100 ? 7 : 1) {
                const int x = i % (plain.width + 2) - 1;
                const int y = i / (plain.width + 2) - 1;
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
                    double raw[3];
                    double shown[3];
                    for (int p = 0; p < 3; ++p) {
                        const int q = plain.Colour() ? p : 0;
                        raw[p] = !inside   ? kOut
                                 : nearest ? plain.At(static_cast<int>(sx + 0.5), static_cast<int>(sy + 0.5), q)
                                           : plain.Between(sx, sy, q);
                        shown[p] = inside ? plain.To256(raw[p], q) : kOut;
                        ASSERT_TRUE(nearest || (Same(rgb[p], raw[p]) && Same(rgb[3 + p], shown[p])));
                    }
                    for (int p = -1; p < plain.planes; ++p) {
                        const bool mixed = p < 0 && plain.Colour() && inside;
                        double at[2] = {};
                        ASSERT_TRUE(Same(image.GetPixelGrayRaw(x, y, how.dx, how.dy, how.sine, how.cosine, how.scale, p,
                                                               kOut, nearest, &out, &at[0], &at[1]),
                                         mixed ? Mix(raw) : raw[std::max(p, 0)]));
                        ASSERT_TRUE(Same(at[0], sx) && Same(at[1], sy) && out == (inside ? 0 : 1));
                        ASSERT_TRUE(Same(image.GetPixelGray256f(x, y, how.dx, how.dy, how.sine, how.cosine, how.scale,
                                                                p, kOut, nearest, nullptr, nullptr, nullptr),
                                         mixed ? Mix(shown) : shown[std::max(p, 0)]));
                    }
                }
            }
        }
    });
}
