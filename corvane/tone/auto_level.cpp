#include "corvane/tone/auto_level.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/fold.h"
#include "corvane/core/truncate.h"
#include "corvane/platform/application.h"
#include "corvane/platform/registry.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Shows the wait cursor while it lives.
struct WaitCursor {
    WaitCursor() { BeginWaitCursor(); }
    ~WaitCursor() { EndWaitCursor(); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;
};

/// The samples that statistics are taken from: a grid of every step-th column and row of a rectangle.
struct Grid {
    CRect area;
    int step;

    Grid(const CImage& image, const CRect* rect)
        : area(WorkingArea(image, rect)),
          step(std::max(Truncate(static_cast<double>(image.GetWidth()) * image.GetHeight() * 1e-6), 1))
    {}

    /// Calls visit(rows, x) at each grid point, with the rows of planes firstPlane to lastPlane.
    template <class Visit>
    void Walk(const CStlImage& image, int firstPlane, int lastPlane, Visit visit) const
    {
        const float* rows[3] = {};
        for (int y = static_cast<int>(area.top); y < area.bottom; y += step) {
            for (int p = firstPlane; p <= lastPlane; ++p) {
                rows[p - firstPlane] = image.GetImageAdr(0, y, p, 1);
            }
            for (int x = static_cast<int>(area.left); x < area.right; x += step) {
                visit(rows, x);
            }
        }
    }
};

/// Hands on the plain samples of one plane on a grid, blanks and NaN left out.
auto PlaneSamples(const CStlImage& image, const Grid& grid, int plane)
{
    return [&image, &grid, plane, isBlank = BlankTest(image)](auto visit) {
        grid.Walk(image, plane, plane, [&](const float* const* rows, int x) {
            const double v = rows[0][x];
            if (!(isBlank(v) | std::isnan(v))) {
                visit(v);
            }
        });
    };
}

/// Hands on the luminance of a colour image on a grid; a pixel is left out when any of its samples is blank or NaN.
auto LuminanceSamples(const CStlImage& image, const Grid& grid)
{
    return [&image, &grid, isBlank = BlankTest(image)](auto visit) {
        grid.Walk(image, 0, 2, [&](const float* const* rows, int x) {
            const double r = rows[0][x];
            const double g = rows[1][x];
            const double b = rows[2][x];
            const double y = BrightnessOf(r, g, b);
            if (!(isBlank(r) | isBlank(g) | isBlank(b) | std::isnan(y))) {
                visit(y);
            }
        });
    };
}

/// Mean and standard deviation.
struct Spread {
    double mean = 0.0;
    // One third of the largest float, so that the first interval of 3 sigma admits every value.
    double sigma = 1.1342744887950962e38;
    bool counted = false;
};

/// Mean and deviation of the samples that lie strictly within reach: of the old mean for the mean, and of the new mean
/// for the deviation. A deviation of 0 keeps the old one. Not counted when nothing was.
template <class Samples>
Spread Measure(const Samples& samples, double oldMean, double oldSigma, double reach)
{
    double sum = 0.0;
    long long count = 0;
    samples([&, low = oldMean - reach, high = oldMean + reach](double v) {
        if (low < v && v < high) {
            sum += v;
            ++count;
        }
    });
    const double mean = sum / static_cast<double>(count);
    double squares = 0.0;
    samples([&, low = mean - reach, high = mean + reach](double v) {
        if (low < v && v < high) {
            squares += (v - mean) * (v - mean);
        }
    });
    const double sigma = std::sqrt(squares / static_cast<double>(count));
    return {mean, sigma > 0.0 ? sigma : oldSigma, count > 0};
}

/// Clips at 3 sigma until the whole part of the mean settles.
template <class Samples>
Spread IteratedSpread(const Samples& samples)
{
    constexpr int kMost = 1000; // a mean that swings between two values for ever ends here
    Spread spread;
    double previous = -3.4028234663852886e38;
    for (int i = 0; i < kMost; ++i) {
        spread = Measure(samples, spread.mean, spread.sigma, 3.0 * spread.sigma);
        if (!spread.counted || std::floor(spread.mean) == std::floor(previous)) {
            break;
        }
        previous = spread.mean;
    }
    return spread;
}

/// Mean and deviation of all finite samples; a deviation of 0 keeps the one before.
template <class Samples>
Spread PlainSpread(const Samples& samples, const Spread& before)
{
    return Measure(samples, 0.0, before.sigma, std::numeric_limits<double>::infinity());
}

/// A pair of values: bounds of data, or levels.
struct Bounds {
    double low;
    double high;
};

Bounds LevelsFrom(const Spread& spread, double lowSigma, double highSigma, const Bounds& data)
{
    return {std::max(spread.mean - lowSigma * spread.sigma, data.low),
            std::min(spread.mean + highSigma * spread.sigma, data.high)};
}

Bounds PlaneBounds(const CImage& image, int plane)
{
    Bounds bounds{};
    image.GetMinMax(plane, &bounds.low, &bounds.high);
    return bounds;
}

/// Extremes of the luminance of the whole image; pixels whose luminance is blank are left out.
Bounds LuminanceBounds(const CStlImage& image)
{
    const Extremes extremes = ExtremesOf(WorkingArea(image, nullptr), [&](Extremes& part, int y) {
        const float* const r = image.GetImageAdr(0, y, 0, 1);
        const float* const g = image.GetImageAdr(0, y, 1, 1);
        const float* const b = image.GetImageAdr(0, y, 2, 1);
        part.Add(
            image.GetWidth(), [=](int x) { return BrightnessOf(r[x], g[x], b[x]); }, BlankTest(image));
    });
    return {extremes.Min(), extremes.Max()};
}

/// Extremes of what `Get` looks at in a rectangle, in raw units: the samples, or the displayed luminance.
Bounds DisplayedBounds(const CStlImage& image, const CRect& area)
{
    const bool colour = image.GetDimension() >= 3;
    const Extremes extremes = ExtremesOf(area, [&](Extremes& part, int y) {
        for (int x = static_cast<int>(area.left); x < area.right; ++x) {
            double v = image.GetPixelGrayRaw(x, y, 0);
            if (colour) {
                const double green = image.GetPixelGrayRaw(x, y, 1);
                v = BrightnessOf(image.To256(v, 0), image.To256(green, 1), image.GetPixelGray256f(x, y, 2));
            }
            part.Add(v);
        }
    });
    const auto toRaw = [&](double v) { return colour ? image.ToRaw(v, 0) : v; };
    return {toRaw(extremes.Min()), toRaw(extremes.Max())};
}

/// The cumulative distribution of data in equal bins, every bin counting one more than it holds.
class Distribution {
public:
    Distribution(CStlImage& image, const Bounds& data, CRect area)
        : data_(data), range_(data.high - data.low), counts_(kBins)
    {
        image.GetHistGram(counts_.data(), kBins, data.low, data.high, -1, &area, 1, IDS_AUTO_LEVEL);
        total_ = static_cast<double>(area.Width()) * area.Height() + kBins;
    }

    /// The fraction below a level, summed from the low end up to the first bin that begins above it.
    double FromBelow(double level) const
    {
        if (level <= data_.low || level >= data_.high) {
            return (level - data_.low) / range_;
        }
        double sum = 0.0;
        for (int i = 0; i < kBins; ++i) {
            sum += Count(i);
            if (Start(i) > level) {
                return sum / total_;
            }
        }
        return 0.0;
    }

    /// The fraction below a level, summed from the high end down to the first bin that begins below it. The bin under
    /// that one is taken off too: shown levels have always been told this way.
    double FromAbove(double level) const
    {
        if (level >= data_.high || level <= data_.low) {
            return (level - data_.low) / range_;
        }
        double sum = 0.0;
        for (int i = kBins - 1; i > 0; --i) {
            sum += Count(i);
            if (Start(i) < level) {
                return 1.0 - (sum - Count(i - 1)) / total_;
            }
        }
        return 1.0;
    }

private:
    static constexpr int kBins = 5000;
    static constexpr double kPerBin = 0.0002;

    double Count(int i) const { return counts_[static_cast<std::size_t>(i)] + 1.0; }
    double Start(int i) const { return data_.low + i * range_ * kPerBin; }

    Bounds data_;
    double range_;
    double total_;
    std::vector<int> counts_;
};

} // namespace

void CImgAutoLevel::Do(double lowSigma, double highSigma, int perPlane, CRect* rect)
{
    const WaitCursor wait;
    const Grid grid(*this, rect);
    const auto apply = [&](int plane, const Spread& spread, const Bounds& data) {
        if (spread.counted && data.low <= data.high) {
            const Bounds levels = LevelsFrom(spread, lowSigma, highSigma, data);
            SetLevel(plane, levels.low, levels.high);
        }
    };
    if (GetPlanes() < 3) {
        apply(-1, IteratedSpread(PlaneSamples(*this, grid, 0)), PlaneBounds(*this, 0));
    } else if (perPlane == 0) {
        apply(-1, PlainSpread(LuminanceSamples(*this, grid), Spread()), LuminanceBounds(*this));
    } else {
        Spread spread;
        for (int plane = 0; plane < GetPlanes(); ++plane) {
            spread = PlainSpread(PlaneSamples(*this, grid, plane), spread);
            apply(plane, spread, PlaneBounds(*this, plane));
        }
    }
}

void CImgAutoLevel::Get(double& lowFraction, double& highFraction, CRect* rect)
{
    const CRect area = WorkingArea(*this, rect);
    const Bounds data = DisplayedBounds(*this, area);
    lowFraction = 0.0;
    highFraction = 1.0;
    if (area.left >= area.right || area.top >= area.bottom) {
        return;
    }
    const Distribution distribution(*this, data, area);
    lowFraction = distribution.FromBelow(GetLevelMin(0));
    highFraction = distribution.FromAbove(GetLevelMax(0));
}

AutoLevelSettings corvane::ReadAutoLevelSettings()
{
    AutoLevelSettings settings;
    CRegistry::Read("PrcAutoLevel", "Min", settings.lowSigma, &settings.lowSigma);
    CRegistry::Read("PrcAutoLevel", "Max", settings.highSigma, &settings.highSigma);
    CRegistry::Read("PrcAutoLevel", "Plane", settings.perPlane, &settings.perPlane);
    return settings;
}
