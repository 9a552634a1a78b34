#include "stars/find_stars.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "stars/common_width.h"
#include "stars/field_blocks.h"
#include "stars/full_well.h"
#include "stars/gaussian_fit.h"
#include "stars/maxima.h"
#include "stars/sky_mesh.h"
#include "stars/star_neighbours.h"
#include "stars/star_shape.h"
#include "stars/typical_star.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kMaximaPerStar = 4; // hot pixels and noise take places, too
constexpr std::size_t kFewestMaxima = 4000;
constexpr std::size_t kMostStars = std::numeric_limits<std::size_t>::max() / kMaximaPerStar;
constexpr double kNarrowWindow = 0.6; // widths: half as far is another star's pull felt
constexpr double kAperture = 2.0;     // FWHM: a Moffat profile of exponent 4 has 0.985 of its light there
constexpr double kGap = 0.01;         // of the window on undefined samples: the centroid moves
constexpr double kHot = 0.6;          // of the typical star's width
constexpr double kHotFwhm = 1.2;      // pixels
constexpr double kElongated = 1.3;    // times the typical star's elongation,
constexpr double kByNoise = 1.0;      // and this more for a peak of one deviation of the sky
constexpr double kBroad = 1.8;        // times the typical star's width
constexpr int kAreaMargin = 2;        // pixels about a saturated area
constexpr double kReach = 3.0;        // of a window, in its deviations
constexpr std::size_t kMaximaOfBlock = 64;

bool IsBrighter(const FieldStar& a, const FieldStar& b)
{
    return a.flux > b.flux;
}

/// Leaves out the maxima in and about saturated areas: each of those is one object.
void RemoveCovered(std::vector<Maximum>& maxima, const std::vector<SaturatedArea>& areas)
{
    std::vector<bool> isCovered(maxima.size());
    for (const SaturatedArea& area : areas) {
        const int margin = kAreaMargin + static_cast<int>(std::min(area.box.Width(), area.box.Height())) / 2;
        const auto isAbove = [](const Maximum& m, int y) { return m.y < y; };
        const auto top = static_cast<int>(area.box.top) - margin;
        for (auto m = std::lower_bound(maxima.begin(), maxima.end(), top, isAbove);
             m != maxima.end() && m->y < area.box.bottom + margin; ++m) {
            if (m->x >= area.box.left - margin && m->x < area.box.right + margin) {
                isCovered[static_cast<std::size_t>(m - maxima.begin())] = true;
            }
        }
    }
    std::size_t i = 0;
    std::erase_if(maxima, [&](const Maximum&) { return isCovered[i++]; });
}

/// Measures objects of one frame, all with the window of its typical star.
class StarMeter {
public:
    StarMeter(const CStlImage& image, int plane, const SkyMesh& sky, const TypicalStar& typical)
        : sky_(sky), typical_(typical), fwhm_(typical.Fwhm(typical.width)),
          stamp_(image, plane,
                 static_cast<int>(std::max(kReach * typical.width, kAperture * fwhm_ + typical.width)) + 1)
    {}

    double TypicalFwhm() const { return fwhm_; }
    /// How many samples it looks at for an object.
    long long Samples() const { return static_cast<long long>(stamp_.Side()) * stamp_.Side(); }

    /// The object at a maximum; nothing when its light belongs to another one.
    std::optional<FieldStar> Measure(const Maximum& maximum)
    {
        FieldStar star = At(maximum.x, maximum.y);
        std::optional<StarShape> shape = MeasureShape(stamp_, typical_.width);
        if (!shape) { // a brighter one nearby pulls at its centroid
            star.isCrowded = true;
            shape = MeasureShape(stamp_, kNarrowWindow * typical_.width);
        }
        if (!shape) {
            return std::nullopt;
        }
        star.x = shape->x;
        star.y = shape->y;
        star.peak = star.sky + Brightest();
        star.flux = ApertureSum(stamp_, star.x, star.y, kAperture * fwhm_);
        Judge(*shape, star);
        return std::isfinite(star.flux) ? std::optional(star) : std::nullopt;
    }

    /// The star whose saturated samples are known.
    FieldStar Measure(const SaturatedArea& area)
    {
        FieldStar star = At(static_cast<int>(std::lround(area.x)), static_cast<int>(std::lround(area.y)));
        star.isSaturated = true;
        star.x = area.x;
        star.y = area.y;
        star.peak = area.peak;
        if (const std::optional<StarShape> shape = MeasureShape(stamp_, typical_.width)) {
            Judge(*shape, star);
        }
        star.flux = std::max(area.sum - static_cast<double>(area.samples) * star.sky,
                             ApertureSum(stamp_, star.x, star.y, kAperture * fwhm_));
        return star;
    }

private:
    FieldStar At(int x, int y)
    {
        FieldStar star;
        star.sky = sky_.level.At(x, y);
        star.noise = sky_.noise.At(x, y);
        stamp_.MoveTo(x, y, star.sky);
        return star;
    }

    void Judge(const StarShape& shape, FieldStar& star) const
    {
        const auto fit = typical_.isSparse ? FitGaussian(stamp_, typical_.fit * typical_.width) : std::nullopt;
        star.fwhm = fit ? fit->Fwhm() : typical_.Fwhm(shape.Width());
        star.elongation = shape.Elongation();
        star.isAtEdge = shape.lost > kGap;
        if (star.isAtEdge) {
            return; // part of an object has no shape
        }
        const double limit = kElongated + kByNoise * star.noise / (star.peak - star.sky);
        star.isElongated = star.elongation > limit * typical_.elongation || star.fwhm > kBroad * fwhm_;
        star.isHot = fit ? fit->sigma < LeastSigma(star.noise, fit->peak)
                         : typical_.Fwhm(shape.shortest) < std::max(kHotFwhm, kHot * typical_.Fwhm(typical_.shortest));
    }

    /// The brightest sample at the middle of the stamp, above the sky.
    float Brightest() const
    {
        float brightest = 0.0F;
        for (int dy = -1; dy <= 1; ++dy) {
            const float* middle = stamp_.Row(dy) + stamp_.Reach();
            brightest = std::max({brightest, middle[-1], middle[0], middle[1]});
        }
        return brightest;
    }

    const SkyMesh& sky_;
    TypicalStar typical_;
    double fwhm_;
    Stamp stamp_;
};

/// The stars of saturated areas, then those of maxima, in their order; asks at each maximum whether to go on.
std::vector<FieldStar> MeasureAll(const CStlImage& image, const StarMeter& meter,
                                  const std::vector<SaturatedArea>& areas, const std::vector<Maximum>& maxima,
                                  const Run& run)
{
    std::vector<FieldStar> stars;
    StarMeter ofAreas = meter;
    for (const SaturatedArea& area : areas) {
        stars.push_back(ofAreas.Measure(area));
    }
    std::vector<std::optional<FieldStar>> found(maxima.size());
    const auto endOf = [&](int block) { return std::min((block + std::size_t{1}) * kMaximaOfBlock, maxima.size()); };
    const auto measure = [&](int block) {
        StarMeter own = meter;
        for (std::size_t i = block * kMaximaOfBlock; i < endOf(block); ++i) {
            found[i] = own.Measure(maxima[i]);
        }
    };
    const auto add = [&](int block) {
        for (std::size_t i = block * kMaximaOfBlock; i < endOf(block); ++i) {
            run.ThrowIfCancelled();
            if (found[i]) {
                stars.push_back(*found[i]);
            }
        }
    };
    const int blocks = static_cast<int>((maxima.size() + kMaximaOfBlock - 1) / kMaximaOfBlock);
    platform::ForBlocks(blocks, ReadersOf(image, meter.Samples() * static_cast<long long>(maxima.size()), run), measure,
                        add);
    return stars;
}

/// At most `limit` stars, usable ones before others, in the order of their flux.
void KeepBest(std::vector<FieldStar>& stars, std::size_t limit)
{
    std::stable_sort(stars.begin(), stars.end(), IsBrighter);
    std::stable_partition(stars.begin(), stars.end(), [](const FieldStar& s) { return s.IsUsable(); });
    stars.resize(std::min(stars.size(), limit));
    std::stable_sort(stars.begin(), stars.end(), IsBrighter);
}

double CommonFwhm(const std::vector<FieldStar>& stars)
{
    std::vector<double> widths;
    for (const FieldStar& star : stars) {
        if (star.IsUsable()) {
            widths.push_back(star.fwhm);
        }
    }
    return CommonWidth(std::move(widths));
}

/// The stars that a plane shows against its sky, in any order.
std::vector<FieldStar> FindObjects(const CStlImage& image, int plane, const SkyMesh& sky, double fullWell,
                                   const FindOptions& options, const Run& run)
{
    const std::vector<SaturatedArea> areas = FindSaturatedAreas(image, plane, fullWell, run);
    std::vector<Maximum> maxima =
        FindMaxima(image, plane, sky, options.sigmas,
                   std::max(kFewestMaxima, kMaximaPerStar * std::min(options.limit, kMostStars)), run);
    RemoveCovered(maxima, areas);
    const StarMeter meter(image, plane, sky, MeasureTypicalStar(image, plane, sky, maxima, run));
    std::vector<FieldStar> stars = MeasureAll(image, meter, areas, maxima, run);
    RemoveDuplicates(stars, meter.TypicalFwhm());
    MarkCrowded(stars, meter.TypicalFwhm());
    JoinTrails(stars, meter.TypicalFwhm());
    return stars;
}

} // namespace

StarField FindFieldStars(const CStlImage& image, int plane, const FindOptions& options, const Run& run)
{
    const platform::KeptThreads threads(run.Threads());
    const SkyMesh sky = MeasureSkyMesh(image, plane, run);
    run.ThrowIfCancelled();
    if (sky.IsEmpty()) {
        return {};
    }
    StarField field;
    field.sky = sky.level.Median();
    field.noise = sky.noise.Median();
    const double fullWell =
        options.fullWell ? *options.fullWell : FullWellLevel(image, plane, field.sky, field.noise, run);
    field.stars = FindObjects(image, plane, sky, fullWell, options, run);
    KeepBest(field.stars, options.limit);
    field.fwhm = CommonFwhm(field.stars);
    return field;
}

} // namespace corvane::stars
