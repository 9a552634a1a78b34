#include "stars/star_extent.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>

#include "corvane/core/defined.h"
#include "corvane/platform/rect.h"
#include "stars/full_well.h"

namespace corvane::stars {
namespace {

constexpr int kMostRadius = 400;       // pixels
constexpr double kFaintestRim = 1e-5;  // of the peak: where there is no noise, stars end, too
constexpr double kUsualWidth = 3.0;    // pixels; of a field without a star to tell
constexpr double kWidestStar = 2.5;    // times the width of the field's stars
constexpr std::size_t kFewSamples = 6; // tell no median

// A star with wings as wide as seeing makes them falls as a Moffat profile of exponent 2, of this scale in widths.
constexpr double kScale = 0.777;
// So many widths out it has this part of its peak at most: what is brighter is not its own light.
constexpr double kBeside = 2.0;
constexpr double kWing = 0.02;

// Of a saturated star's light at three quarters of a radius as much is left there: its halo falls as r^-0.56 or faster.
constexpr double kInner = 0.75;
constexpr double kHalo = 0.85;
constexpr double kRim = 0.25;     // of its ceiling: there it falls steeply
constexpr int kFirstCompared = 4; // pixels: rings further in have few samples

/// The places about a pixel, by their distance rounded to whole pixels.
class Rings {
public:
    const std::vector<CPoint>& At(int radius)
    {
        while (static_cast<int>(rings_.size()) <= radius) {
            rings_.push_back(Made(static_cast<int>(rings_.size())));
        }
        return rings_[static_cast<std::size_t>(radius)];
    }

private:
    static std::vector<CPoint> Made(int radius)
    {
        const double least = std::max(radius - 0.5, 0.0);
        const double most = radius + 0.5;
        std::vector<CPoint> places;
        for (int dy = -radius; dy <= radius; ++dy) {
            for (int dx = -radius; dx <= radius; ++dx) {
                const double square = 1.0 * dx * dx + 1.0 * dy * dy;
                if (square >= least * least && square < most * most) {
                    places.emplace_back(dx, dy);
                }
            }
        }
        return places;
    }

    std::vector<std::vector<CPoint>> rings_;
};

/// Follows the light of stars outwards.
class ExtentMeter {
public:
    ExtentMeter(const CStlImage& image, int plane, double width, double limit)
        : image_(image), plane_(plane), width_(width), limit_(limit), isDefined_(image)
    {}

    /// Of a star that may stand on a nebula, or among others: as far as its peak above these lets it reach at most.
    double RadiusOnGround(const FieldStar& star)
    {
        const double excess = star.Excess();
        const double beside = MedianAbout(star, static_cast<int>(std::lround(kBeside * width_))).value_or(star.sky);
        const double ground = std::clamp(beside - star.sky - kWing * excess, 0.0, excess);
        const double least = Least(star);
        const double fall = std::sqrt(std::max((excess - ground) / least, 1.0));
        const double most = std::min(kScale * width_ * std::sqrt(fall - 1.0), double{kMostRadius});
        for (int radius = 1; radius < most; ++radius) {
            const std::optional<double> median = MedianAbout(star, radius);
            if (!median || *median - star.sky - ground <= least) {
                return radius;
            }
        }
        return most;
    }

    /// Of a saturated star, whose peak is not known.
    double RadiusOfHalo(const FieldStar& star)
    {
        std::vector<double> profile{star.Excess()};
        for (int radius = 1; radius < kMostRadius; ++radius) {
            const std::optional<double> median = MedianAbout(star, radius);
            if (!median || *median - star.sky <= Least(star)) {
                return radius;
            }
            profile.push_back(*median - star.sky);
            const bool isBeyondRim = radius >= kFirstCompared && profile.back() < kRim * profile.front();
            if (isBeyondRim && profile.back() > kHalo * ValueAt(profile, kInner * radius)) {
                return kInner * radius;
            }
        }
        return kMostRadius;
    }

private:
    /// The light where a star ends.
    double Least(const FieldStar& star) const { return std::max(limit_ * star.noise, kFaintestRim * star.Excess()); }

    static double ValueAt(const std::vector<double>& profile, double radius)
    {
        const auto inner = static_cast<std::size_t>(radius);
        const double part = radius - static_cast<double>(inner);
        return (1.0 - part) * profile[inner] + part * profile[inner + 1];
    }

    std::optional<double> MedianAbout(const FieldStar& star, int radius)
    {
        const int middleX = static_cast<int>(std::lround(star.x));
        const int middleY = static_cast<int>(std::lround(star.y));
        samples_.clear();
        for (const CPoint& place : rings_.At(radius)) {
            const int x = middleX + static_cast<int>(place.x);
            const int y = middleY + static_cast<int>(place.y);
            if (x >= 0 && y >= 0 && x < image_.GetWidth() && y < image_.GetHeight()) {
                const float v = *image_.GetImageAdr(x, y, plane_, 1);
                if (isDefined_(v)) {
                    samples_.push_back(v);
                }
            }
        }
        if (samples_.size() < std::min(kFewSamples, rings_.At(radius).size() / 2)) {
            return std::nullopt;
        }
        const auto middle = samples_.begin() + static_cast<std::ptrdiff_t>(samples_.size() / 2);
        std::nth_element(samples_.begin(), middle, samples_.end());
        return *middle;
    }

    const CStlImage& image_;
    int plane_;
    double width_; ///< full width at half maximum of the field's stars
    double limit_; ///< of the noise
    DefinedTest isDefined_;
    Rings rings_;
    std::vector<float> samples_;
};

/// The saturated samples of an area.
class SaturatedPart {
public:
    SaturatedPart(const CStlImage& image, int plane, const SaturatedArea& area, double level)
        : image_(image), plane_(plane), box_(area.box), level_(level), isDefined_(image)
    {}

    /// The middle of the largest square of them: that of the star, wherever its trail leads.
    CPoint Middle() const
    {
        std::vector<int> sides(static_cast<std::size_t>(box_.Width()) + 1); // of the largest that ends here or above
        int most = 0;
        CPoint middle;
        for (int y = static_cast<int>(box_.top); y < box_.bottom; ++y) {
            int corner = 0; // the side up and to the left
            for (int x = 0; x < box_.Width(); ++x) {
                int& side = sides[static_cast<std::size_t>(x) + 1];
                const int above = side;
                const int least = std::min({corner, above, sides[static_cast<std::size_t>(x)]});
                side = IsSaturated(Row(y)[x]) ? least + 1 : 0;
                corner = above;
                if (side > most) {
                    most = side;
                    middle = {static_cast<int>(box_.left) + x - side / 2, y - side / 2};
                }
            }
        }
        return middle;
    }

    /// Adds what they cover, row by row.
    void AddTo(std::vector<StarExtent>& extents, double radius) const
    {
        const auto isSaturated = [this](float v) { return IsSaturated(v); };
        for (int y = static_cast<int>(box_.top); y < box_.bottom; ++y) {
            const float* const row = Row(y);
            const float* const end = row + box_.Width();
            for (const float* at = std::find_if(row, end, isSaturated); at != end;) {
                const float* const last = std::find_if_not(at, end, isSaturated);
                extents.push_back({static_cast<double>(box_.left + (at - row)), static_cast<double>(y),
                                   static_cast<double>(last - at - 1), radius});
                at = std::find_if(last, end, isSaturated);
            }
        }
    }

private:
    const float* Row(int y) const { return image_.GetImageAdr(static_cast<int>(box_.left), y, plane_, 1); }
    bool IsSaturated(float v) const { return v >= level_ && isDefined_(v); }

    const CStlImage& image_;
    int plane_;
    CRect box_;
    double level_;
    DefinedTest isDefined_;
};

/// The star of a saturated area, with the sky that was found about it.
FieldStar StarOf(const SaturatedArea& area, const CPoint& middle, const StarField& field)
{
    const auto found = std::find_if(field.stars.begin(), field.stars.end(), [&](const FieldStar& other) {
        return other.isSaturated && other.x == area.x && other.y == area.y;
    });
    const bool isFound = found != field.stars.end();
    FieldStar star;
    star.sky = isFound ? found->sky : field.sky;
    star.noise = isFound ? found->noise : field.noise;
    star.x = static_cast<double>(middle.x);
    star.y = static_cast<double>(middle.y);
    star.peak = area.peak;
    return star;
}

} // namespace

std::vector<StarExtent> MeasureExtents(const CStlImage& image, int plane, const StarField& field, double limit,
                                       const Run& run)
{
    const double width = field.fwhm > 0.0 ? field.fwhm : kUsualWidth;
    std::vector<StarExtent> extents;
    ExtentMeter meter(image, plane, width, limit);
    for (const FieldStar& star : field.stars) {
        run.ThrowIfCancelled();
        const bool isWide = star.fwhm > kWidestStar * width;
        if (!star.isSaturated && !star.isHot && !isWide) {
            extents.push_back({star.x, star.y, 0.0, meter.RadiusOnGround(star)});
        }
    }
    const double level = FullWellLevel(image, plane, field.sky, field.noise, run);
    for (const SaturatedArea& area : FindSaturatedAreas(image, plane, level, run)) {
        run.ThrowIfCancelled();
        const SaturatedPart part(image, plane, area, level);
        const FieldStar star = StarOf(area, part.Middle(), field);
        extents.push_back({star.x, star.y, 0.0, meter.RadiusOfHalo(star)});
        part.AddTo(extents, width);
    }
    return extents;
}

} // namespace corvane::stars
