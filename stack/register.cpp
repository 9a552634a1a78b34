#include "stack/register.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "corvane/core/blank.h"
#include "corvane/core/text.h"
#include "stars/find_stars.h"

namespace corvane::stack {

namespace {

constexpr double kLeastCorrelation = 0.7;
constexpr double kLoneCorrelation = 0.9; // where the reference has hardly another star
constexpr double kLoneGain = 1.5;        // there, too
constexpr double kLeastPeak = 8.0;       // sigmas above the sky; the shift then is off by 0.14 pixels (1 sigma) at most
constexpr double kMostGain = 3.0;        // brighter or fainter than the reference
constexpr int kFineReach = 3;            // the fine passes look so far beyond the search [pixels]
constexpr double kSkyOffset = 10.0;      // in units of the patch's peak
constexpr std::size_t kWitnesses = 24;
constexpr int kWitnessReach = 256;         // pixels; farther away a turn of the field shows
constexpr double kWitnessTolerance = 2.0;  // pixels
constexpr double kWitnessTurn = 0.01;      // more of them for each pixel of distance from the star
constexpr double kWitnessExcess = 10.0;    // sigmas in the reference
constexpr double kWitnessDetection = 6.0;  // sigmas that it should have in the frame
constexpr double kWitnessPeak = 4.0;       // sigmas that it must have
constexpr double kWitnessBrightness = 0.4; // of what it should have, and the inverse
constexpr std::size_t kFewWitnesses = 2;   // as many as chance may put into their places
constexpr int kEnoughWitnesses = 3;        // in their places; chance does not put so many there
constexpr int kAttempts = 5;
constexpr int kStarReach = 6;       // pixels, beyond which a smoothed star hardly goes
constexpr double kMostDrift = 0.25; // pixels; farther off the centroid, something lies on the star

double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0;
}

/// Smooths a plane by the binomial filter of five taps, along rows and columns. The search reads one of two images
/// between its samples, which blurs that one alone and draws the match to whole pixels unless both are smooth.
void Smooth(CStlImage& image, int plane)
{
    const auto filter = [](double a, double b, double c, double d, double e) {
        return static_cast<float>((a + e + 4.0 * (b + d) + 6.0 * c) / 16.0);
    };
    CStlImage along(image);
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            const auto at = [&](int dx) { return image.GetPixelGrayRaw(x + dx, y, plane); };
            along.SetPixelGrayRaw(x, y, filter(at(-2), at(-1), at(0), at(1), at(2)), plane);
        }
    }
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            const auto at = [&](int dy) { return along.GetPixelGrayRaw(x, y + dy, plane); };
            image.SetPixelGrayRaw(x, y, filter(at(-2), at(-1), at(0), at(1), at(2)), plane);
        }
    }
}

/// The largest sample of a square.
struct Peak {
    double value;
    int x;
    int y;
};

Peak FindPeak(const CStlImage& image, int plane, int left, int top, int size)
{
    Peak peak{image.GetPixelGrayRaw(left, top, plane), left, top};
    for (int y = top; y < top + size; ++y) {
        for (int x = left; x < left + size; ++x) {
            const double s = image.GetPixelGrayRaw(x, y, plane);
            peak = s > peak.value ? Peak{s, x, y} : peak;
        }
    }
    return peak;
}

} // namespace

ShiftRegistration::ShiftRegistration(const CStlImage& reference, PixelPlace centre, const std::vector<Star>& stars,
                                     const Options& options)
    : width_(reference.GetWidth()), size_(options.size), search_(options.search),
      left_(std::clamp(centre.x - size_ / 2, 0, reference.GetWidth() - size_)),
      top_(std::clamp(centre.y - size_ / 2, 0, reference.GetHeight() - size_)),
      rows_{std::max(centre.y - std::max(size_ + search_ + kFineReach, kWitnessReach), 0),
            std::min(centre.y + std::max(size_ + search_ + kFineReach, kWitnessReach), reference.GetHeight())}
{
    const int margin = search_ + kFineReach;
    CStlImage surroundings(Cut(reference, 0));
    for (int plane = 0; plane < reference.GetPlanes(); ++plane) {
        const Peak peak = FindPeak(surroundings, plane, margin, margin, size_);
        patch_.level = std::max(patch_.level, kSkyOffset * peak.value);
        if (plane == stars::StarPlane(reference)) {
            patch_.plane = plane;
            patch_.peak = peak.value;
            patch_.peakX = peak.x - margin;
            patch_.peakY = peak.y - margin;
        }
    }
    surroundings = Cut(reference, 0); // again, now that the level is known
    patch_.image = CStlImage(-32, size_, size_, reference.GetPlanes(), 1.0, 0.0, 1);
    patch_.image.PixelBlt(0, 0, size_, size_, &surroundings, margin, margin, 0);
    ChooseWitnesses(stars, MeasureSky(reference, stars::StarPlane(reference)));
}

/// The brightest other stars, the only ones that chance hardly puts into each other's places.
void ShiftRegistration::ChooseWitnesses(const std::vector<Star>& stars, const Sky& sky)
{
    for (const Star& star : stars) {
        const int distance = Distance(star);
        const bool isOther = distance > kStarReach && distance < kWitnessReach;
        const bool isBright = star.excess > kWitnessExcess * sky.noise;
        if (star.IsPoint() && isOther && isBright && witnesses_.size() < kWitnesses) {
            witnesses_.push_back(star);
        }
    }
}

/// Of another star from the patch's.
int ShiftRegistration::Distance(const Star& other) const
{
    return std::max(std::abs(other.x - left_ - patch_.peakX), std::abs(other.y - top_ - patch_.peakY));
}

/// The surroundings of the patch in a frame of which rows from firstRow on are given: smoothed, without hits, the sky
/// at the common level, and nothing but sky where the frame has nothing.
CStlImage ShiftRegistration::Cut(const CStlImage& rows, int firstRow) const
{
    const int margin = search_ + kFineReach;
    const int extent = size_ + 2 * margin;
    const BlankTest isBlank(rows);
    CStlImage window(-32, extent, extent, rows.GetPlanes(), 1.0, 0.0, 1);
    for (int plane = 0; plane < rows.GetPlanes(); ++plane) {
        const Sky sky = MeasureSky(rows, plane);
        for (int y = 0; y < extent; ++y) {
            const int from = top_ - margin + y - firstRow;
            float* row = window.GetImageAdr(0, y, plane);
            for (int x = 0; x < extent; ++x) {
                const int column = left_ - margin + x;
                const bool exists = from >= 0 && from < rows.GetHeight() && column >= 0 && column < rows.GetWidth();
                const double s = exists ? rows.GetPixelGrayRaw(column, from, plane) : sky.level;
                row[x] =
                    static_cast<float>(std::isfinite(s) && !isBlank(s) ? s - sky.level + patch_.level : patch_.level);
            }
        }
        RemoveHits(window, plane, {patch_.level, sky.noise});
        Smooth(window, plane);
    }
    return window;
}

Match ShiftRegistration::Find(const CStlImage& rows) const
{
    const Sky sky = MeasureSky(rows, stars::StarPlane(rows));
    CImgMatching window(Cut(rows, rows_.first));
    Match first;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Found found = Search(window, sky);
        Match& match = found.match;
        const bool isStar = match.reason.empty();
        if (isStar) {
            match.reason = JudgeWitnesses(found, CountWitnesses(rows, found, sky));
        }
        if (match.reason.empty() && !IsLone()) {
            return match;
        }
        if (attempt == 0) {
            first = match;
        } else if (first.reason.empty() && match.reason.empty()) {
            first.reason = "several stars match the reference equally well";
        }
        if (!isStar) {
            break;
        }
        Erase(window, found.x + patch_.peakX, found.y + patch_.peakY);
    }
    return first;
}

/// The place of the patch in a window and its brightness there, judged by themselves.
ShiftRegistration::Found ShiftRegistration::Search(CImgMatching& window, const Sky& sky) const
{
    const double start = search_ + kFineReach;
    Found found{{}, start, start, 0.0, 0.0};
    CStlImage patch(patch_.image);
    if (window.Do(&patch, &found.x, &found.y, 2 * search_, 1, 0) == 0) {
        found.match.reason = "nothing in it can be compared with the reference";
        return found;
    }
    const Likeness likeness = Compare(window, found.x, found.y, patch_);
    found.gain = likeness.gain;
    found.drift = likeness.drift;
    found.match = {Tenths(start - found.x), Tenths(start - found.y), likeness.correlation, ""};
    found.match.reason = Judge(found, sky);
    return found;
}

/// Leaves nothing but sky where a star is.
void ShiftRegistration::Erase(CStlImage& window, double x, double y) const
{
    const int left = static_cast<int>(std::lround(x)) - kStarReach;
    const int top = static_cast<int>(std::lround(y)) - kStarReach;
    for (int plane = 0; plane < window.GetPlanes(); ++plane) {
        for (int row = top; row <= top + 2 * kStarReach; ++row) {
            for (int column = left; column <= left + 2 * kStarReach; ++column) {
                window.SetPixelGrayRaw(column, row, static_cast<float>(patch_.level), plane);
            }
        }
    }
}

std::string ShiftRegistration::Judge(const Found& found, const Sky& sky) const
{
    const auto& [match, x, y, gain, drift] = found;
    if (std::max(std::fabs(match.dx), std::fabs(match.dy)) >= std::max(search_, 1)) {
        return "the best match lies at the edge of the search range of " + std::to_string(search_) + " pixels";
    }
    if (!(match.correlation >= kLeastCorrelation)) {
        return "the best match has a correlation of " + NumberText(match.correlation, 2) + " with the reference, " +
               NumberText(kLeastCorrelation, 1) + " is needed";
    }
    if (!IsWhole(match)) {
        return "the best match lies at the edge of the frame";
    }
    const bool isAlike = gain * kMostGain >= 1.0 && gain <= kMostGain;
    if (!isAlike) {
        return "the best match has " + NumberText(gain, 2) + " times the brightness of the reference";
    }
    if (!(gain * patch_.peak >= kLeastPeak * sky.noise)) {
        return "the best match does not stand above the noise";
    }
    if (!(drift <= kMostDrift)) {
        return "something lies on the star of the best match";
    }
    return "";
}

/// True when the frame holds the whole star.
bool ShiftRegistration::IsWhole(const Match& match) const
{
    const double x = left_ + patch_.peakX - match.dx;
    const double y = top_ + patch_.peakY - match.dy;
    return x >= kStarReach && x < width_ - kStarReach && y >= rows_.first + kStarReach && y < rows_.end - kStarReach;
}

/// Why a match is not to be believed as far as other stars tell; empty if it is.
std::string ShiftRegistration::JudgeWitnesses(const Found& found, const Witnesses& witnesses) const
{
    const int enough = IsLone() ? 0 : std::min(kEnoughWitnesses, static_cast<int>(witnesses_.size() + 1) / 2);
    if (witnesses.present < enough || 2 * witnesses.present < witnesses.expected) {
        return "only " + std::to_string(witnesses.present) + " of " + std::to_string(witnesses.expected) +
               " other stars are where the best match would have them";
    }
    const bool isAlike = found.gain * kLoneGain >= 1.0 && found.gain <= kLoneGain;
    const bool isConvincing = isAlike && found.match.correlation >= kLoneCorrelation;
    if (IsLone() && !isConvincing) {
        return "the best match is not like enough to the reference, which has hardly another star to confirm it";
    }
    return "";
}

/// True when the reference has too few other stars for them to prove a match.
bool ShiftRegistration::IsLone() const
{
    return witnesses_.size() <= kFewWitnesses;
}

ShiftRegistration::Witnesses ShiftRegistration::CountWitnesses(const CStlImage& rows, const Found& found,
                                                               const Sky& sky) const
{
    Witnesses count;
    for (const Star& star : witnesses_) {
        const int reach = static_cast<int>(std::lround(kWitnessTolerance + kWitnessTurn * Distance(star)));
        const int left = static_cast<int>(std::lround(star.x - found.match.dx)) - reach;
        const int top = static_cast<int>(std::lround(star.y - found.match.dy)) - reach - rows_.first;
        const int extent = 2 * reach + 1;
        const bool isInside =
            left >= 0 && left + extent <= rows.GetWidth() && top >= 0 && top + extent <= rows.GetHeight();
        const double excess = found.gain * star.excess;
        if (isInside && excess > kWitnessDetection * sky.noise) {
            const double seen = FindPeak(rows, stars::StarPlane(rows), left, top, extent).value - sky.level;
            ++count.expected;
            const bool isBright = seen > kWitnessBrightness * excess && seen > kWitnessPeak * sky.noise;
            count.present += isBright && seen * kWitnessBrightness < excess ? 1 : 0;
        }
    }
    return count;
}

} // namespace corvane::stack
