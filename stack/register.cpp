#include "stack/register.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "corvane/core/blank.h"
#include "stack/text.h"

namespace corvane::stack {

namespace {

constexpr double kLeastCorrelation = 0.7;
constexpr double kLeastPeak = 5.0;  // sigmas above the sky
constexpr double kMostGain = 3.0;   // brighter or fainter than the reference
constexpr int kFineReach = 3;       // the fine passes look so far beyond the search [pixels]
constexpr double kSkyOffset = 10.0; // in units of the patch's peak
constexpr std::size_t kWitnesses = 8;
constexpr int kWitnessReach = 512;         // columns; farther away a turn of the field shows
constexpr int kWitnessTolerance = 3;       // pixels
constexpr double kWitnessDetection = 10.0; // sigmas that it should have
constexpr double kWitnessBrightness = 0.3; // of what it should have
constexpr int kAttempts = 5;
constexpr int kErasedReach = 6; // pixels, beyond which a smoothed star hardly goes

double Tenths(double v)
{
    return std::round(v * 10.0) / 10.0;
}

/// Sums for the correlation and the regression of one set of samples on another.
struct Regression {
    double n = 0.0;
    double s = 0.0;
    double r = 0.0;
    double ss = 0.0;
    double rr = 0.0;
    double sr = 0.0;

    void Add(double sample, double reference)
    {
        n += 1.0;
        s += sample;
        r += reference;
        ss += sample * sample;
        rr += reference * reference;
        sr += sample * reference;
    }
    double Covariance() const { return sr - s * r / n; }
    double Variance() const { return rr - r * r / n; }
    double Correlation() const
    {
        const double product = Variance() * (ss - s * s / n);
        return product > 0.0 ? Covariance() / std::sqrt(product) : 0.0;
    }
    double Gain() const { return Variance() > 0.0 ? Covariance() / Variance() : 0.0; }
};

/// Compares the patch with what lies at a place of a window. Levels are taken off, which keeps the sums exact.
Regression Compare(const CStlImage& window, double x, double y, const CStlImage& patch, double level)
{
    Regression sums;
    for (int plane = 0; plane < patch.GetPlanes(); ++plane) {
        for (int row = 0; row < patch.GetHeight(); ++row) {
            for (int column = 0; column < patch.GetWidth(); ++column) {
                sums.Add(window.GetPixelGrayRaw(x + column, y + row, plane) - level,
                         patch.GetPixelGrayRaw(column, row, plane) - level);
            }
        }
    }
    return sums;
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
    : size_(options.size), search_(options.search),
      left_(std::clamp(centre.x - size_ / 2, 0, reference.GetWidth() - size_)),
      top_(std::clamp(centre.y - size_ / 2, 0, reference.GetHeight() - size_)),
      rows_{std::max(top_ - search_ - kFineReach, 0),
            std::min(top_ + size_ + search_ + kFineReach, reference.GetHeight())}
{
    const int margin = search_ + kFineReach;
    CStlImage surroundings(Cut(reference, 0));
    for (int plane = 0; plane < reference.GetPlanes(); ++plane) {
        const Peak peak = FindPeak(surroundings, plane, margin, margin, size_);
        offset_ = std::max(offset_, kSkyOffset * peak.value);
        if (plane == StarPlane(reference)) {
            peak_ = peak.value;
            peakX_ = peak.x - margin;
            peakY_ = peak.y - margin;
        }
    }
    surroundings = Cut(reference, 0); // again, now that the level is known
    patch_ = CStlImage(-32, size_, size_, reference.GetPlanes(), 1.0, 0.0, 1);
    patch_.PixelBlt(0, 0, size_, size_, &surroundings, margin, margin, 0);
    ChooseWitnesses(centre, stars);
}

void ShiftRegistration::ChooseWitnesses(PixelPlace centre, const std::vector<Star>& stars)
{
    for (const Star& star : stars) {
        const bool isOther = std::max(std::abs(star.x - centre.x), std::abs(star.y - centre.y)) > 2 * kWitnessTolerance;
        const bool isNear = star.y >= rows_.first && star.y < rows_.end && std::abs(star.x - centre.x) < kWitnessReach;
        if (star.IsSpread() && isOther && isNear && witnesses_.size() < kWitnesses) {
            witnesses_.push_back(star);
        }
    }
}

/// The surroundings of the patch in a frame of which rows from firstRow on are given: smoothed, without hot pixels, the
/// sky at the common level, and nothing but sky where the frame has nothing.
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
                row[x] = static_cast<float>(std::isfinite(s) && !isBlank(s) ? s - sky.level + offset_ : offset_);
            }
        }
        RemoveHotPixels(window, plane, {offset_, sky.noise});
        Smooth(window, plane);
    }
    return window;
}

Match ShiftRegistration::Find(const CStlImage& rows) const
{
    const Sky sky = MeasureSky(rows, StarPlane(rows));
    CImgMatching window(Cut(rows, rows_.first));
    Match first;
    for (int attempt = 0; attempt < kAttempts; ++attempt) {
        Found found = Search(window, sky);
        const bool isStar = found.match.reason.empty();
        const Witnesses witnesses = isStar ? CountWitnesses(rows, found.match, found.gain, sky) : Witnesses();
        if (isStar && (witnesses.Disagree() || (attempt > 0 && witnesses.expected < 2))) {
            found.match.reason = witnesses.Text();
        }
        if (found.match.reason.empty()) {
            return found.match;
        }
        first = attempt == 0 ? found.match : first;
        if (!isStar) {
            break;
        }
        Erase(window, found.x + peakX_, found.y + peakY_);
    }
    return first;
}

/// The place of the patch in a window and its brightness there, judged by themselves.
ShiftRegistration::Found ShiftRegistration::Search(CImgMatching& window, const Sky& sky) const
{
    const double start = search_ + kFineReach;
    Found found{{}, start, start, 0.0};
    CStlImage patch(patch_);
    if (window.Do(&patch, &found.x, &found.y, 2 * search_, 1, 0) == 0) {
        found.match.reason = "nothing in it can be compared with the reference";
        return found;
    }
    const Regression sums = Compare(window, found.x, found.y, patch, offset_);
    found.match = {Tenths(start - found.x), Tenths(start - found.y), sums.Correlation(), ""};
    found.match.reason = Judge(found.match, sums.Gain(), sky);
    found.gain = sums.Gain();
    return found;
}

/// Leaves nothing but sky where a star is.
void ShiftRegistration::Erase(CStlImage& window, double x, double y) const
{
    const int left = static_cast<int>(std::lround(x)) - kErasedReach;
    const int top = static_cast<int>(std::lround(y)) - kErasedReach;
    for (int plane = 0; plane < window.GetPlanes(); ++plane) {
        for (int row = top; row <= top + 2 * kErasedReach; ++row) {
            for (int column = left; column <= left + 2 * kErasedReach; ++column) {
                window.SetPixelGrayRaw(column, row, static_cast<float>(offset_), plane);
            }
        }
    }
}

std::string ShiftRegistration::Judge(const Match& match, double gain, const Sky& sky) const
{
    if (std::max(std::fabs(match.dx), std::fabs(match.dy)) >= std::max(search_, 1)) {
        return "the best match lies at the edge of the search range of " + std::to_string(search_) + " pixels";
    }
    if (!(match.correlation >= kLeastCorrelation)) {
        return "the best match has a correlation of " + NumberText(match.correlation, 2) + " with the reference, " +
               NumberText(kLeastCorrelation, 1) + " is needed";
    }
    const bool isAlike = gain * kMostGain >= 1.0 && gain <= kMostGain;
    if (!isAlike) {
        return "the best match has " + NumberText(gain, 2) + " times the brightness of the reference";
    }
    if (!(gain * peak_ >= kLeastPeak * sky.noise)) {
        return "the best match does not stand above the noise";
    }
    return "";
}

ShiftRegistration::Witnesses ShiftRegistration::CountWitnesses(const CStlImage& rows, const Match& match, double gain,
                                                               const Sky& sky) const
{
    Witnesses count;
    for (const Star& star : witnesses_) {
        const int left = static_cast<int>(std::lround(star.x - match.dx)) - kWitnessTolerance;
        const int top = static_cast<int>(std::lround(star.y - match.dy)) - kWitnessTolerance - rows_.first;
        const int extent = 2 * kWitnessTolerance + 1;
        const bool isInside =
            left >= 0 && left + extent <= rows.GetWidth() && top >= 0 && top + extent <= rows.GetHeight();
        if (isInside && gain * star.excess > kWitnessDetection * sky.noise) {
            const double excess = FindPeak(rows, StarPlane(rows), left, top, extent).value - sky.level;
            ++count.expected;
            count.present +=
                excess > kWitnessBrightness * gain * star.excess && excess > kLeastPeak * sky.noise ? 1 : 0;
        }
    }
    return count;
}

std::string ShiftRegistration::Witnesses::Text() const
{
    return "only " + std::to_string(present) + " of " + std::to_string(expected) +
           " other stars are where the best match would have them";
}

} // namespace corvane::stack
