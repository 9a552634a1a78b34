#include <cmath>
#include <complex>

#include "corvane/core/stl_image.h"
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
    using Complex = std::complex<double>;
    constexpr double kOut = -12345.5;
    ForEachImage([](CStlImage& image) {
        const Complex centre(image.GetWidth() / 2.0 + 0.3, image.GetHeight() / 2.0 - 0.2);
        image.SetStdCtr(centre.real(), centre.imag());
        const Plain plain(image);
        for (int i = 0; i < 40; ++i) {
            const double radians = std::vector{0.0, 1e-11, 0.58, 1.5707963, -3.14159}[static_cast<std::size_t>(i % 5)];
            const double dx = std::vector{0.0, 1.0, -0.37, 1e9}[static_cast<std::size_t>(i / 5 % 4)];
            const double dy = 1.7 - dx * 2.0;
            const double sine = std::sin(radians);
            const double cosine = std::cos(radians);
            const double scale = i < 20 ? 1.0 : 0.7;
            SCOPED_TRACE(i);
            for (int k = 0; k<(plain.width + 2) * (plain.height + 2); k += plain.width> 100 ? 7 : 1) {
                const int x = k % (plain.width + 2) - 1;
                const int y = k / (plain.width + 2) - 1;
                double sx = 0.0;
                double sy = 0.0;
                int out = 7;
                const auto raw = [&](int p, int nearest) {
                    return image.GetPixelGrayRaw(x, y, dx, dy, sine, cosine, scale, p, kOut, nearest, &out, &sx, &sy);
                };
                const auto shown = [&](int p, int nearest) {
                    return image.GetPixelGray256f(x, y, dx, dy, sine, cosine, scale, p, kOut, nearest, nullptr, nullptr,
                                                  nullptr);
                };
                raw(0, 0);
                const Complex from = Complex(x - dx, y - dy) - centre;
                const Complex apart = Complex(sx, sy) - centre - from * std::polar(scale, -radians);
                ASSERT_LE(std::abs(apart), 1e-12 * (1e3 + std::abs(from)));
                ASSERT_EQ(out == 0, 0.0 <= sx && sx < plain.width && 0.0 <= sy && sy < plain.height);
                for (int n = 0; n < 2 * (plain.planes + 1); ++n) {
                    const int nearest = n % 2;
                    const int plane = n / 2 - 1;
                    const auto rawAt = [&](int p) {
                        return nearest != 0 ? plain.At(static_cast<int>(sx + 0.5), static_cast<int>(sy + 0.5), p)
                                            : plain.Between(sx, sy, p);
                    };
                    const auto shownAt = [&](int p) { return plain.To256(rawAt(p), p); };
                    const auto at = [&](auto of) { return out != 0 ? kOut : plane < 0 ? plain.Bright(of) : of(plane); };
                    ASSERT_TRUE(Same(raw(plane, nearest), at(rawAt)) && Same(shown(plane, nearest), at(shownAt)));
                }
                double rgb[6];
                image.GetPixelRgbRaw(x, y, dx, dy, sine, cosine, scale, rgb, rgb + 1, rgb + 2, kOut, &out, nullptr,
                                     nullptr);
                image.GetPixelRgb256f(x, y, dx, dy, sine, cosine, scale, rgb + 3, rgb + 4, rgb + 5, kOut, nullptr,
                                      nullptr, nullptr);
                for (int q = 0; q < 3; ++q) {
                    const int p = plain.Colour() ? q : 0;
                    ASSERT_TRUE(Same(rgb[q], raw(p, 0)) && Same(rgb[3 + q], shown(p, 0)));
                }
            }
        }
    });
}
