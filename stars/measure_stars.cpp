#include "stars/measure_stars.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <utility>

#include "corvane/core/blank.h"
#include "corvane/core/text.h"
#include "corvane/measure/psf.h"
#include "stars/field_blocks.h"
#include "stars/plane_of.h"
#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr double kMostWidth = 20.0;  // that PSF accepts [pixels]
constexpr double kMomentReach = 1.5; // widths: holds 99.8 % of a Gaussian
constexpr double kRingFrom = 2.0;    // widths
constexpr int kRingMargin = 3;       // pixels beyond that, where the narrowest stars' wings end
constexpr int kRingWidth = 6;        // pixels
constexpr int kSamplesOfStar = 2000; // that are looked at, or so

/// What lies about a place of a monochrome image.
class Surroundings {
public:
    explicit Surroundings(const CStlImage& image) : image_(image), isBlank_(image) {}

    bool IsInside(const CPoint& p) const
    {
        return p.x >= 0 && p.y >= 0 && p.x < image_.GetWidth() && p.y < image_.GetHeight();
    }

    float At(const CPoint& p) const { return image_.GetPixelGrayRaw(static_cast<int>(p.x), static_cast<int>(p.y), 0); }
    bool IsDefined(float s) const { return std::isfinite(s) && !isBlank_(s); }

    /// The peak that PSF climbs to: each step goes to the highest of the neighbours, of equal ones to the first, column
    /// by column.
    CPoint Top(CPoint place) const
    {
        for (CPoint next = place;; place = next) {
            for (const int dx : {-1, 0, 1}) {
                for (const int dy : {-1, 0, 1}) {
                    const CPoint p(place.x + dx, place.y + dy);
                    next = IsInside(p) && !isBlank_(At(p)) && At(p) > At(next) ? p : next;
                }
            }
            if (next == place) {
                return place;
            }
        }
    }

    /// Calls action(x, y, sample) for the defined samples from `inner` to `outer` pixels away.
    template <class Action>
    void ForEach(const CPoint& centre, double inner, double outer, Action action) const
    {
        const int reach = static_cast<int>(outer);
        const auto left = static_cast<int>(centre.x) - reach;
        const auto top = static_cast<int>(centre.y) - reach;
        for (int y = std::max(top, 0); y <= std::min(top + 2 * reach, image_.GetHeight() - 1); ++y) {
            for (int x = std::max(left, 0); x <= std::min(left + 2 * reach, image_.GetWidth() - 1); ++x) {
                const double away = std::hypot(x - centre.x, y - centre.y);
                const float s = At(CPoint(x, y));
                if (away >= inner && away <= outer && IsDefined(s)) {
                    action(x, y, s);
                }
            }
        }
    }

    /// True when the samples reach the edge somewhere along the row or the column of a place before they are down to a
    /// level.
    bool ReachesEdge(const CPoint& from, double level) const
    {
        const CPoint ways[] = {{-1, 0}, {1, 0}, {0, -1}, {0, 1}};
        return std::any_of(std::begin(ways), std::end(ways), [&](const CPoint& way) {
            CPoint p(from.x + way.x, from.y + way.y);
            while (IsInside(p) && !(At(p) <= level)) {
                p = CPoint(p.x + way.x, p.y + way.y);
            }
            return !IsInside(p);
        });
    }

private:
    const CStlImage& image_;
    BlankTest isBlank_;
};

/// The star's width; 0 when PSF refuses it.
double Width(const CStlImage& image, const CPoint& top)
{
    PSF psf(image);
    double width = 0.0;
    const bool isMeasured = psf.Add(top) != 0 && psf.GetMeanFWHM(&width) != 0 && std::isfinite(width);
    return isMeasured ? width : 0.0;
}

/// False when no sample about the star is defined.
bool MeasureSky(const Surroundings& about, MeasuredStar& star)
{
    const double inner = kRingFrom * (star.fwhm > 0.0 ? star.fwhm : kMostWidth) + kRingMargin;
    std::vector<double> ring;
    about.ForEach(star.top, inner, inner + kRingWidth, [&](int, int, double s) { ring.push_back(s); });
    if (ring.empty()) {
        return false;
    }
    const RobustLevel level = MeasureLevel(std::move(ring));
    star.sky = level.median;
    star.noise = level.deviation;
    return true;
}

void MeasureLight(const Surroundings& about, MeasuredStar& star)
{
    double weight = 0.0;
    double atX = 0.0;
    double atY = 0.0;
    about.ForEach(star.top, 0.0, kMomentReach * star.fwhm, [&](int x, int y, double s) {
        const double excess = s - star.sky;
        const double w = excess > 0.0 ? excess * excess : 0.0;
        star.flux += excess;
        weight += w;
        atX += w * (x - star.top.x);
        atY += w * (y - star.top.y);
    });
    if (weight > 0.0) {
        star.x += atX / weight;
        star.y += atY / weight;
    }
}

MeasuredStar MeasureOne(const CStlImage& image, const CPoint& place, double sigmas)
{
    const Surroundings about(image);
    MeasuredStar star{.top = about.Top(CPoint(std::clamp<int>(place.x, 0, image.GetWidth() - 1),
                                              std::clamp<int>(place.y, 0, image.GetHeight() - 1)))};
    star.x = star.top.x;
    star.y = star.top.y;
    star.peak = about.At(star.top);
    if (!about.IsDefined(about.At(star.top))) {
        star.fault = "no defined sample";
        return star;
    }
    star.fwhm = Width(image, star.top);
    if (!MeasureSky(about, star)) {
        star.fault = "no sky about it";
        return star;
    }
    MeasureLight(about, star);
    if (star.peak <= star.sky || star.peak < star.sky + sigmas * star.noise) {
        star.fault = "not " + NumberText(sigmas) + " standard deviations above the sky";
    } else if (star.fwhm == 0.0) {
        const bool isCut = about.ReachesEdge(star.top, (star.peak + star.sky) / 2.0);
        star.fault = isCut ? "at the edge of the image" : "no width below 20 pixels";
    }
    return star;
}

/// Measures all stars, each once: where two places lead to one peak, the second does not count.
std::vector<MeasuredStar> MeasureEach(const CStlImage& image, const std::vector<CPoint>& places, double sigmas,
                                      const Run& run)
{
    std::vector<MeasuredStar> stars(places.size());
    std::map<std::pair<int, int>, int> seen;
    const auto measure = [&](int i) { stars[i] = MeasureOne(image, places[i], sigmas); };
    const auto compare = [&](int i) {
        run.ThrowIfCancelled();
        MeasuredStar& star = stars[i];
        const auto [first, isNew] = seen.try_emplace({star.top.y, star.top.x}, i + 1);
        if (!isNew && star.IsUsed()) {
            star.fault = "the same as star " + std::to_string(first->second);
        }
    };
    const long long samples = static_cast<long long>(places.size()) * kSamplesOfStar;
    platform::ForBlocks(static_cast<int>(places.size()), ReadersOf(image, samples, run), measure, compare);
    return stars;
}

struct Widths {
    int stars = 0;
    double mean = 0.0;
    double median = 0.0;
};

/// PSF's mean and median over those of the stars that count.
template <class IsWanted>
Widths Average(const CStlImage& image, const std::vector<MeasuredStar>& stars, IsWanted isWanted)
{
    PSF psf(image);
    for (const MeasuredStar& star : stars) {
        if (star.IsUsed() && isWanted(star)) {
            psf.Add(star.top);
        }
    }
    Widths widths{.stars = psf.GetCount()};
    if (psf.GetCount() > 0) {
        psf.GetMeanFWHM(&widths.mean);
        psf.GetMedianFWHM(&widths.median);
    }
    return widths;
}

/// In which of the parts of an axis a position lies.
int PartOf(int position, int size)
{
    return static_cast<int>(static_cast<long long>(position) * kFieldParts / size);
}

FieldWidths Summarise(const CStlImage& image, std::vector<MeasuredStar> stars)
{
    FieldWidths field{.stars = std::move(stars)};
    const Widths all = Average(image, field.stars, [](const MeasuredStar&) { return true; });
    field.used = all.stars;
    field.meanFwhm = all.mean;
    field.medianFwhm = all.median;
    for (int row = 0; row < kFieldParts; ++row) {
        for (int column = 0; column < kFieldParts; ++column) {
            const Widths part = Average(image, field.stars, [&](const MeasuredStar& star) {
                return PartOf(star.top.x, image.GetWidth()) == column && PartOf(star.top.y, image.GetHeight()) == row;
            });
            field.parts[row][column] = {part.stars, part.mean};
        }
    }
    return field;
}

std::string Joined(const std::vector<std::string>& words)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

} // namespace

FieldWidths MeasureStars(const CStlImage& image, int plane, const std::vector<CPoint>& places, double sigmas,
                         const Run& run)
{
    if (image.GetPixelCount() == 0) {
        return {};
    }
    const CStlImage alone(PlaneOf(image, plane));
    return Summarise(alone, MeasureEach(alone, places, sigmas, run));
}

FieldWidths MeasureStars(const CStlImage& image, int plane, const std::vector<FieldStar>& found, double sigmas,
                         const Run& run)
{
    if (image.GetPixelCount() == 0) {
        return {};
    }
    std::vector<CPoint> places;
    for (const FieldStar& star : found) {
        places.emplace_back(static_cast<int>(std::lround(star.x)), static_cast<int>(std::lround(star.y)));
    }
    const CStlImage alone(PlaneOf(image, plane));
    std::vector<MeasuredStar> stars = MeasureEach(alone, places, sigmas, run);
    for (std::size_t i = 0; i < found.size(); ++i) {
        stars[i].fault = found[i].IsUsable() ? stars[i].fault : Joined(FlagWords(found[i]));
    }
    return Summarise(alone, std::move(stars));
}

std::vector<std::string> FlagWords(const FieldStar& star)
{
    std::vector<std::string> words;
    const auto add = [&](bool isSet, const char* word) {
        if (isSet) {
            words.emplace_back(word);
        }
    };
    add(star.isSaturated, "saturated");
    add(star.isHot, "hot");
    add(star.isElongated, "elongated");
    add(star.isAtEdge, "edge");
    add(star.isCrowded, "crowded");
    return words;
}

} // namespace corvane::stars
