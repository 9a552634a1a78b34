#include "bench/support/frames.h"

#include <algorithm>
#include <cmath>

#include "bench/support/line.h"

namespace corvane::bench {
namespace {

/// S. Vigna's splitmix64, a random number for each n.
std::uint64_t Random(std::uint64_t n)
{
    n *= 0x9e3779b97f4a7c15;
    n = (n ^ (n >> 30)) * 0xbf58476d1ce4e5b9;
    n = (n ^ (n >> 27)) * 0x94d049bb133111eb;
    return n ^ (n >> 31);
}

/// Close to a normal deviate: the sum of four uniform ones.
double Deviate(std::uint64_t bits)
{
    constexpr double kScale = 1.7320508075688772 / 65536.0;
    const std::uint64_t sum = (bits & 0xffff) + (bits >> 16 & 0xffff) + (bits >> 32 & 0xffff) + (bits >> 48);
    return (static_cast<double>(sum) - 2.0 * 65535.0) * kScale;
}

void DrawStar(CStlImage& image, double cx, double cy, double peak)
{
    constexpr double kReach = 12.0;
    const auto clip = [](double v, int size) {
        return static_cast<int>(std::clamp(v, 0.0, static_cast<double>(size)));
    };
    const int right = clip(cx + kReach, image.GetWidth());
    const int bottom = clip(cy + kReach, image.GetHeight());
    for (int y = clip(cy - kReach, image.GetHeight()); y < bottom; ++y) {
        float* const row = image.GetImageAdr(0, y, 0);
        for (int x = clip(cx - kReach, image.GetWidth()); x < right; ++x) {
            const double r2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
            row[x] += static_cast<float>(peak * std::exp(-r2 / (2.0 * 2.5 * 2.5)));
        }
    }
}

} // namespace

void FillSky(CStlImage& image, std::uint64_t seed)
{
    std::uint64_t n = seed << 40;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        image.CImage::SetLevel(plane, 900.0, 1400.0);
        for (int y = 0; y < image.GetHeight(); ++y) {
            float* const row = image.GetImageAdr(0, y, plane);
            for (int x = 0; x < image.GetWidth(); ++x) {
                const std::uint64_t bits = Random(++n);
                const double star = bits % 499 == 0 ? 300.0 + static_cast<double>(bits >> 52) : 0.0;
                row[x] = static_cast<float>(1000.0 + 30.0 * Deviate(bits) + star);
            }
        }
    }
}

CStlImage& LargeFrame()
{
    static Sky frame(Size(4096, 67), Size(4096, 45), 1, 1);
    return frame;
}

CStlImage& ColourFrame()
{
    static Sky frame(Size(2048, 67), Size(2048, 45), 3, 5);
    return frame;
}

void DrawStars(CStlImage& image, double offsetX, double offsetY)
{
    constexpr int kCell = 24;
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::fill_n(image.GetImageAdr(0, y, 0), image.GetWidth(), 1000.0F);
    }
    const auto firstX = static_cast<int>(std::floor(offsetX / kCell)) - 1;
    const auto firstY = static_cast<int>(std::floor(offsetY / kCell)) - 1;
    for (int j = firstY; j <= firstY + image.GetHeight() / kCell + 3; ++j) {
        for (int i = firstX; i <= firstX + image.GetWidth() / kCell + 3; ++i) {
            const std::uint64_t bits =
                Random(static_cast<std::uint64_t>(j + 1000) * 10000 + static_cast<std::uint64_t>(i + 1000));
            const double x = i * kCell + static_cast<double>(bits & 0xffff) * kCell / 65536.0;
            const double y = j * kCell + static_cast<double>(bits >> 16 & 0xffff) * kCell / 65536.0;
            DrawStar(image, x - offsetX, y - offsetY, 50.0 + static_cast<double>(bits >> 56));
        }
    }
}

} // namespace corvane::bench
