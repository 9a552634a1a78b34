#include "tests/support/images.h"

#include <algorithm>
#include <limits>

namespace corvane::test {

// G. L. Steele, D. Lea, C. H. Flood, Fast splittable pseudorandom number generators, OOPSLA 2014.
std::uint64_t Random::Next()
{
    std::uint64_t z = state_ += 0x9e3779b97f4a7c15U;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return z ^ (z >> 31);
}

double Random::Between(double low, double high)
{
    return low + (high - low) * static_cast<double>(Next() >> 11) * 0x1p-53;
}

int Random::Whole(int low, int high)
{
    return low + static_cast<int>(Next() % static_cast<std::uint64_t>(high - low + 1));
}

CStlImage RandomImage(Size size, int planes, std::uint64_t seed)
{
    CStlImage image(-32, size.width, size.height, planes, 1.0, 0.0, 1);
    Random random(seed);
    for (int p = 0; p < planes; ++p) {
        image.CImage::SetLevel(p, 10.25 + 7.0 * p, 211.5 - 13.0 * p);
        for (int y = 0; y < size.height; ++y) {
            float* const row = image.GetImageAdr(0, y, p);
            std::generate_n(row, size.width, [&] { return static_cast<float>(random.Between(-20.0, 300.0)); });
        }
    }
    return image;
}

void Sprinkle(CStlImage& image, std::initializer_list<float> values, std::uint64_t seed)
{
    Random random(seed);
    for (int row = 0; row < image.GetPlanes() * image.GetHeight(); ++row) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            if (random.Whole(0, 7) == 0) {
                *image.GetImageAdr(x, row % image.GetHeight(), row / image.GetHeight()) =
                    values.begin()[random.Next() % values.size()];
            }
        }
    }
}

void SprinkleOddities(CStlImage& image, std::uint64_t seed, bool finite)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    image.SetBlankUsed(1);
    image.SetBlank(-7);
    Sprinkle(image, {-7.0F, -7.999F, -6.999F, -8.0F}, seed);
    if (!finite) {
        Sprinkle(image, {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity}, seed + 1);
    }
}

std::vector<float> Samples(const CImage& image)
{
    std::vector<float> samples;
    for (int p = 0; p < image.GetPlanes(); ++p) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            const auto* const row = reinterpret_cast<const float*>(image.GetImageAdr(0, y, p, 1));
            samples.insert(samples.end(), row, row + image.GetWidth());
        }
    }
    return samples;
}

} // namespace corvane::test
