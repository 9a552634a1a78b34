#include "stack/reference.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "stars/saturation.h"

namespace corvane::stack {

namespace {

constexpr double kNearCeiling = 0.98;
constexpr int kPlateau = 4;    // so many equal largest samples make a ceiling
constexpr double kRival = 0.6; // of a star's brightness: enough to be taken for it
constexpr double kEdge = 0.3;  // as bad as a star of this brightness that could be taken for it
constexpr double kFaint = 0.5; // of the brightest: its place is measured far worse
constexpr double kTrail = 0.1; // of a star's brightness: enough to disturb the comparison of its patch
constexpr int kSameStar = 3;   // maxima so close belong to one star [pixels]

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
    const bool isCeiling = count >= kPlateau || largest >= stars::FullScale(raw.GetOrgBitsPixel());
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
        if (distance > kSameStar && distance <= reach && (other.IsPoint() || other.isSaturated)) {
            rival = std::max(rival, other.excess / star.excess);
        }
    }
    return rival;
}

/// True when a trail crosses the patch of a star. Hot pixels and tracks are removed from it.
bool IsCrossed(const std::vector<Star>& stars, const Star& star, int size)
{
    return std::any_of(stars.begin(), stars.end(), [&](const Star& other) {
        return other.isSpread && !other.isRound && other.excess > kTrail * star.excess &&
               Distance(star, other) <= size / 2;
    });
}

bool LiesInside(const Star& star, int width, int height, int margin)
{
    return star.x >= margin && star.y >= margin && star.x < width - margin && star.y < height - margin;
}

/// What speaks against a star, the gravest first.
using Fault = std::pair<bool, double>;

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
    const Star* best = nullptr;
    Fault least;
    double brightest = 0.0;
    for (const Star& star : stars) {
        if (!star.IsPoint() || star.isSaturated || !LiesInside(star, width, height, size / 2)) {
            continue;
        }
        brightest = std::max(brightest, star.excess);
        if (best != nullptr && !least.first && star.excess < kFaint * brightest) {
            break;
        }
        const double rival = RivalBrightness(stars, star, search + size / 2);
        const double edge = LiesInside(star, width, height, size / 2 + search) ? 0.0 : kEdge;
        const Fault fault{IsCrossed(stars, star, size), rival < kRival ? edge : rival};
        if (best == nullptr || fault < least) {
            best = &star;
            least = fault;
        }
        if (least == Fault()) {
            break;
        }
    }
    return best != nullptr ? std::optional(PixelPlace{best->x, best->y}) : std::nullopt;
}

} // namespace corvane::stack
