#include "stack/reference.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace corvane::stack {

namespace {

constexpr double kNearCeiling = 0.98;
constexpr int kPlateau = 4;    // so many equal largest samples make a ceiling
constexpr double kRival = 0.6; // of a star's brightness: enough to be taken for it
constexpr int kSameStar = 3;   // maxima so close belong to one star [pixels]

double FullScale(int bits)
{
    return bits == 8 ? 255.0 : bits == 16 ? 65535.0 : std::numeric_limits<double>::infinity();
}

/// The sample from which on a plane counts as saturated; infinite when nothing shows a ceiling.
double Ceiling(const CStlImage& raw, int plane)
{
    float largest = -std::numeric_limits<float>::infinity();
    int count = 0;
    for (int y = 0; y < raw.GetHeight(); ++y) {
        const float* row = raw.GetImageAdr(0, y, plane, 1);
        for (int x = 0; x < raw.GetWidth(); ++x) {
            if (row[x] > largest) {
                largest = row[x];
                count = 0;
            }
            count += row[x] == largest ? 1 : 0;
        }
    }
    const bool isCeiling = count >= kPlateau || largest >= FullScale(raw.GetOrgBitsPixel());
    return isCeiling ? kNearCeiling * largest : std::numeric_limits<double>::infinity();
}

int Distance(const Star& a, const Star& b)
{
    return std::max(std::abs(a.x - b.x), std::abs(a.y - b.y));
}

/// Brightness of the brightest other star within reach, as a fraction of the star's own.
double RivalBrightness(const std::vector<Star>& stars, const Star& star, int reach)
{
    double rival = 0.0;
    for (const Star& other : stars) {
        const int distance = Distance(star, other);
        if (distance > kSameStar && distance <= reach && (other.IsSpread() || other.isSaturated)) {
            rival = std::max(rival, other.excess / star.excess);
        }
    }
    return rival;
}

bool LiesInside(const Star& star, int width, int height, int margin)
{
    return star.x >= margin && star.y >= margin && star.x < width - margin && star.y < height - margin;
}

} // namespace

void MarkSaturated(const CStlImage& raw, int plane, std::vector<Star>& stars)
{
    const double ceiling = Ceiling(raw, plane);
    for (Star& star : stars) {
        for (int i = 0; i < 9; ++i) {
            star.isSaturated |= raw.GetPixelGrayRaw(star.x + i % 3 - 1, star.y + i / 3 - 1, plane) >= ceiling;
        }
    }
}

std::optional<PixelPlace> ChooseReference(const std::vector<Star>& stars, int width, int height, int size, int search)
{
    const Star* isolated = nullptr;
    const Star* standsOut = nullptr;
    double leastRival = std::numeric_limits<double>::infinity();
    for (const Star& star : stars) {
        if (!star.IsSpread() || star.isSaturated || !LiesInside(star, width, height, size / 2)) {
            continue;
        }
        const double rival = RivalBrightness(stars, star, search + size / 2);
        if (rival < kRival && LiesInside(star, width, height, size / 2 + search)) {
            return PixelPlace{star.x, star.y};
        }
        if (rival < kRival && isolated == nullptr) {
            isolated = &star;
        }
        if (rival < leastRival) {
            leastRival = rival;
            standsOut = &star;
        }
    }
    const Star* chosen = isolated != nullptr ? isolated : standsOut;
    return chosen != nullptr ? std::optional(PixelPlace{chosen->x, chosen->y}) : std::nullopt;
}

} // namespace corvane::stack
