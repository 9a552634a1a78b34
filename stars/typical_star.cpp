#include "stars/typical_star.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "stars/robust.h"
#include "stars/star_shape.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kStars = 200;
constexpr std::size_t kFewestStars = 20; // of which faint ones may be part
constexpr double kBright = 20.0;         // deviations of the sky
constexpr std::size_t kTries = 4000;
constexpr int kReach = 24; // pixels
constexpr double kWindow = 1.5;
constexpr double kNarrowestWindow = 0.6;
constexpr double kWidestWindow = kReach / 3.0;
constexpr double kNarrowest = 0.5; // deviation of the least that light through optics leaves on pixels
constexpr double kMostElongated = 3.0;
constexpr double kGap = 0.01;       // of the window
constexpr double kWideWindow = 1.5; // times the width
constexpr int kRounds = 10;
constexpr double kSettled = 0.01;
constexpr double kPixelVariance = 1.0 / 12.0;
constexpr double kFwhmPerSigma = 2.3548200450309493;

/// The shape of an object through a window as wide as itself; nothing for what is no star.
std::optional<StarShape> ShapeThroughOwnWindow(const Stamp& stamp)
{
    double window = kWindow;
    for (int round = 0; round < kRounds; ++round) {
        const std::optional<StarShape> shape = MeasureShape(stamp, window);
        if (!shape || shape->lost > kGap || shape->shortest < kNarrowest || shape->Width() > kWidestWindow ||
            shape->Elongation() > kMostElongated) {
            return std::nullopt;
        }
        const double next = std::max(shape->Width(), kNarrowestWindow);
        if (std::fabs(next - window) < kSettled * window) {
            return shape;
        }
        window = next;
    }
    return std::nullopt;
}

/// The ratio to the power 1.625; by roots, which every processor rounds the same.
double WingsFromRatio(double ratio)
{
    const double root = std::sqrt(ratio);
    return ratio * root * std::sqrt(std::sqrt(root));
}

} // namespace

double TypicalStar::Fwhm(double deviation) const
{
    const double own = deviation * wings;
    return kFwhmPerSigma * std::sqrt(std::max(0.0, own * own - kPixelVariance));
}

TypicalStar MeasureTypicalStar(const CStlImage& image, int plane, const SkyMesh& sky, std::vector<Maximum> maxima)
{
    const auto isBrighter = [](const Maximum& a, const Maximum& b) { return a.excess > b.excess; };
    std::stable_sort(maxima.begin(), maxima.end(), isBrighter);
    maxima.resize(std::min(maxima.size(), kTries));
    std::vector<double> widths;
    std::vector<double> shortest;
    std::vector<double> elongations;
    std::vector<double> ratios;
    Stamp stamp(image, plane, kReach);
    for (const Maximum& maximum : maxima) {
        const bool isFaint = maximum.excess < kBright * sky.noise.At(maximum.x, maximum.y);
        if (widths.size() == kStars || (isFaint && widths.size() >= kFewestStars)) {
            break;
        }
        stamp.MoveTo(maximum.x, maximum.y, sky.level.At(maximum.x, maximum.y));
        const std::optional<StarShape> shape = ShapeThroughOwnWindow(stamp);
        const std::optional<StarShape> wide = shape ? MeasureShape(stamp, kWideWindow * shape->Width()) : std::nullopt;
        if (!wide) {
            continue;
        }
        widths.push_back(shape->Width());
        shortest.push_back(shape->shortest);
        elongations.push_back(shape->Elongation());
        ratios.push_back(shape->Width() / wide->Width());
    }
    if (widths.empty()) {
        return {};
    }
    return {MedianOf(widths), MedianOf(shortest), MedianOf(elongations),
            WingsFromRatio(std::min(1.0, MedianOf(ratios)))};
}

} // namespace corvane::stars
