#include "stars/psf.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "stars/common_width.h"
#include "stars/field_blocks.h"
#include "stars/find_stars.h"
#include "stars/psf_samples.h"
#include "stars/stamp.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kMostPsfStars = 200; // of a zone
constexpr std::size_t kEnoughStars = 20;   // without faint ones
constexpr double kClearExcess = 30.0;      // deviations of the sky
constexpr double kFitReach = 3.5;          // widths
constexpr int kLeastReach = 5;             // pixels
constexpr int kMostReach = 60;
constexpr double kSizeOfWidths = 10.0;
constexpr int kMostUsualSize = 127;
constexpr double kNeighbour = 2.0;  // widths about another star that do not count
constexpr double kFaintest = 0.005; // of the star's height, that a neighbour must have to be seen to
constexpr double kLeastLeft = 0.7;  // of the samples within the fit
constexpr double kUsualPerBeta = 0.3;

/// What is measured of all stars alike.
struct PsfStamps {
    const std::vector<FieldStar>& all;
    double width; ///< of the stars
    int fitReach;
    int reach; ///< of the squares
};

/// Marks the samples about other stars.
void LeaveOutNeighbours(const FieldStar& star, const PsfStamps& stamps, PsfStar& fitted, int x, int y)
{
    const double most = kNeighbour * stamps.width;
    for (const FieldStar& other : stamps.all) {
        const double atX = other.x - x;
        const double atY = other.y - y;
        const bool isNear = std::max(std::fabs(atX), std::fabs(atY)) < stamps.reach + most;
        if (&other == &star || !isNear || other.isHot || other.Excess() < kFaintest * star.Excess()) {
            continue;
        }
        for (int dy = -stamps.reach; dy <= stamps.reach; ++dy) {
            for (int dx = -stamps.reach; dx <= stamps.reach; ++dx) {
                if (std::hypot(dx - atX, dy - atY) < most) {
                    fitted.LeaveOut(dx, dy);
                }
            }
        }
    }
}

/// How much of a star's samples within the fit counts.
double ShareLeft(const PsfStar& star, int fitReach)
{
    int all = 0;
    int left = 0;
    for (int dy = -fitReach; dy <= fitReach; ++dy) {
        for (int dx = -fitReach; dx <= fitReach; ++dx) {
            ++all;
            left += std::isnan(star.At(dx, dy)) ? 0 : 1;
        }
    }
    return static_cast<double>(left) / all;
}

PsfStar StampOf(const FieldStar& star, const PsfStamps& stamps, Stamp& stamp)
{
    const int x = static_cast<int>(std::lround(star.x));
    const int y = static_cast<int>(std::lround(star.y));
    stamp.MoveTo(x, y, star.sky);
    PsfStar fitted{.reach = stamps.reach, .noise = star.noise, .peak = star.Excess(), .x = star.x - x, .y = star.y - y};
    for (int dy = -stamps.reach; dy <= stamps.reach; ++dy) {
        for (int i = 0; i < stamp.Side(); ++i) {
            fitted.values.push_back(stamp.Gaps(dy)[i] == 0.0F ? stamp.Row(dy)[i]
                                                              : std::numeric_limits<double>::quiet_NaN());
        }
    }
    LeaveOutNeighbours(star, stamps, fitted, x, y);
    return fitted;
}

/// The stars of a zone to measure with.
std::vector<PsfStar> StarsIn(const CRect& zone, const CStlImage& image, int plane, const PsfStamps& stamps)
{
    std::vector<PsfStar> chosen;
    Stamp stamp(image, plane, stamps.reach);
    for (const FieldStar& star : stamps.all) { // the brightest first
        const bool isClear = star.Excess() >= kClearExcess * star.noise;
        if (chosen.size() >= (isClear ? kMostPsfStars : kEnoughStars)) {
            break;
        }
        const bool isIn = star.x >= zone.left - 0.5 && star.x < zone.right - 0.5 && star.y >= zone.top - 0.5 &&
                          star.y < zone.bottom - 0.5;
        if (isIn && star.IsUsable() && IsCommon(star.fwhm, stamps.width)) {
            PsfStar fitted = StampOf(star, stamps, stamp);
            if (ShareLeft(fitted, stamps.fitReach) >= kLeastLeft) {
                chosen.push_back(std::move(fitted));
            }
        }
    }
    return chosen;
}

/// How many threads may share the fit of so many stars.
int FittersOf(std::size_t stars, int reach, int threads)
{
    constexpr long long kWork = 16; // of a sample of a star, whose profile is worked out, over that of other samples
    const long long side = 2 * reach + 1;
    return ThreadsFor(static_cast<long long>(stars) * side * side * kWork, threads);
}

ZonePsf MeasureZone(std::vector<PsfStar> stars, const PsfStamps& stamps, PsfModel model, int size, int threads)
{
    const bool isMoffat = model != PsfModel::kGaussian;
    const double half = 4.0 / (stamps.width * stamps.width);
    const PsfProfile guess{half, 0.0, half, isMoffat ? kUsualPerBeta : 0.0};
    const std::optional<PsfFit> fit =
        FitPsf(stars, guess,
               {isMoffat, static_cast<double>(stamps.fitReach), FittersOf(stars.size(), stamps.fitReach, threads)});
    if (!fit) {
        return {};
    }
    return {static_cast<int>(stars.size()), WidthsOf(fit->profile, fit->covariance), fit->residual,
            model == PsfModel::kStars ? SamplesOf(stars, fit->profile, size) : SamplesOf(fit->profile, size)};
}

/// An odd number, no more than the image has.
int UsualSize(double width, const CStlImage& image)
{
    const int most = std::min({kMostUsualSize, image.GetWidth(), image.GetHeight()});
    const int half = static_cast<int>(std::ceil(0.5 * kSizeOfWidths * width));
    return 2 * std::min(half, (most - 1) / 2) + 1;
}

} // namespace

FieldPsf MeasurePsf(const CStlImage& image, int plane, const PsfOptions& options, const Run& run)
{
    const StarField field = FindFieldStars(image, plane, {.fullWell = options.fullWell}, run);
    if (field.fwhm == 0.0) {
        return {};
    }
    const int size = options.size > 0 ? options.size : UsualSize(field.fwhm, image);
    const int fitReach = std::clamp(static_cast<int>(std::ceil(kFitReach * field.fwhm)), kLeastReach, kMostReach);
    const PsfStamps stamps{field.stars, field.fwhm, fitReach,
                           options.model == PsfModel::kStars ? std::clamp(size / 2 + 2, fitReach, kMostReach)
                                                             : fitReach};
    FieldPsf psf{size, std::vector<ZonePsf>(static_cast<std::size_t>(options.zones) * options.zones)};
    const auto edge = [&](int extent, int i) { return static_cast<LONG>(1LL * extent * i / options.zones); };
    const auto measure = [&](int i) {
        const int column = i % options.zones;
        const int row = i / options.zones;
        const CRect zone(edge(image.GetWidth(), column), edge(image.GetHeight(), row),
                         edge(image.GetWidth(), column + 1), edge(image.GetHeight(), row + 1));
        psf.zones[static_cast<std::size_t>(i)] =
            MeasureZone(StarsIn(zone, image, plane, stamps), stamps, options.model, size, run.Threads());
    };
    const long long samples = 1LL * image.GetWidth() * image.GetHeight();
    platform::ForBlocks(static_cast<int>(psf.zones.size()), ReadersOf(image, samples, run), measure,
                        [&](int) { run.ThrowIfCancelled(); });
    return psf;
}

} // namespace corvane::stars
