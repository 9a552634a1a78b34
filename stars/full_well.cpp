#include "stars/full_well.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "corvane/core/defined.h"
#include "corvane/core/reductions.h"
#include "stars/field_blocks.h"

namespace corvane::stars {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNearCeiling = 0.98; // of the way from the sky to the ceiling: columns differ in their offsets
constexpr double kFarAboveSky = 50.0; // deviations: the crests of noise may be equal, too
constexpr double kKeptHeight = 0.5;   // of the tallest: a flat takes off less
constexpr int kPlateau = 4;           // so many largest samples make a ceiling,
constexpr int kPlateauPairs = 2;      // when so many times two of them lie side by side

float LargestOf(const float* row, int count, DefinedTest isDefined)
{
    Extremes extremes;
    extremes.Add(
        count, [=](int x) { return row[x]; }, [=](float v) { return !isDefined(v); });
    return static_cast<float>(extremes.Max());
}

/// The largest sample of a plane, and how it occurs.
struct Largest {
    float value = -std::numeric_limits<float>::infinity();
    long long samples = 0;
    long long pairs = 0; ///< times two of them lie side by side in a row

    void Add(const float* row, int count, DefinedTest isDefined)
    {
        const float largest = LargestOf(row, count, isDefined);
        if (largest < value) {
            return;
        }
        if (largest > value) {
            *this = {.value = largest};
        }
        for (int x = 0; x < count; ++x) {
            samples += row[x] == value ? 1 : 0;
            pairs += x > 0 && row[x] == value && row[x - 1] == value ? 1 : 0;
        }
    }

    void Add(const Largest& other)
    {
        if (other.value > value) {
            *this = other;
        } else if (other.value == value) {
            samples += other.samples;
            pairs += other.pairs;
        }
    }
};

/// Neighbouring saturated samples of one row, and the area they belong to.
struct Stretch {
    int first;
    int end; ///< the first column after it
    int area;
};

/// Joins the stretches of rows, from the top down, to areas.
class AreaBuilder {
public:
    AreaBuilder(double level, DefinedTest isDefined) : level_(level), isDefined_(isDefined) {}

    /// Adds the next row.
    void Add(const float* row, int count, int y)
    {
        std::vector<Stretch> stretches;
        std::size_t next = 0; // the first stretch above that reaches this one or those to the right of it
        for (int x = 0; x < count; ++x) {
            if (IsSaturated(row[x])) {
                const int first = x;
                while (x < count && IsSaturated(row[x])) {
                    ++x;
                }
                while (next < above_.size() && above_[next].end < first) {
                    ++next;
                }
                stretches.push_back({first, x, AreaOf(first, x, next)});
                Extend(areas_[stretches.back().area], row, stretches.back(), y);
            }
        }
        above_ = std::move(stretches);
    }

    std::vector<SaturatedArea> Areas() const
    {
        std::vector<SaturatedArea> areas;
        for (SaturatedArea area : areas_) {
            if (area.samples > 0) {
                area.x /= static_cast<double>(area.samples);
                area.y /= static_cast<double>(area.samples);
                areas.push_back(area);
            }
        }
        return areas;
    }

private:
    bool IsSaturated(float v) const { return v >= level_ && isDefined_(v); }

    int RootOf(int area) const
    {
        while (leadsTo_[area] != area) {
            area = leadsTo_[area];
        }
        return area;
    }

    /// The area that a stretch continues, after all areas that it touches have become one; a new one when it touches
    /// none.
    int AreaOf(int first, int end, std::size_t next)
    {
        int area = -1;
        for (std::size_t i = next; i < above_.size() && above_[i].first <= end; ++i) {
            const int met = RootOf(above_[i].area);
            area = area < 0 ? met : Joined(area, met);
        }
        if (area < 0) {
            area = static_cast<int>(areas_.size());
            areas_.push_back({.box = {first, std::numeric_limits<int>::max(), end, 0}, .peak = -kInfinity});
            leadsTo_.push_back(area);
        }
        return area;
    }

    /// Makes two areas the larger one of them, and leaves the other empty.
    int Joined(int a, int b)
    {
        if (a == b) {
            return a;
        }
        const int kept = areas_[a].samples < areas_[b].samples ? b : a;
        const int left = a + b - kept;
        SaturatedArea& to = areas_[kept];
        const SaturatedArea from = std::exchange(areas_[left], {});
        to.box = {std::min(to.box.left, from.box.left), std::min(to.box.top, from.box.top),
                  std::max(to.box.right, from.box.right), std::max(to.box.bottom, from.box.bottom)};
        to.x += from.x;
        to.y += from.y;
        to.sum += from.sum;
        to.peak = std::max(to.peak, from.peak);
        to.samples += from.samples;
        leadsTo_[left] = kept;
        return kept;
    }

    static void Extend(SaturatedArea& area, const float* row, const Stretch& stretch, int y)
    {
        area.box = {std::min<int>(area.box.left, stretch.first), std::min<int>(area.box.top, y),
                    std::max<int>(area.box.right, stretch.end), y + 1};
        area.samples += stretch.end - stretch.first;
        for (int x = stretch.first; x < stretch.end; ++x) {
            area.x += x;
            area.y += y;
            area.sum += row[x];
            area.peak = std::max<double>(area.peak, row[x]);
        }
    }

    double level_;
    DefinedTest isDefined_;
    std::vector<SaturatedArea> areas_; ///< x and y still sums
    std::vector<int> leadsTo_;         ///< the area that each has become part of, or itself
    std::vector<Stretch> above_;
};

} // namespace

double FullScale(int bits)
{
    return bits == 8 ? 255.0 : bits == 16 ? 65535.0 : kInfinity;
}

double FullWellLevel(const CStlImage& image, int plane, double sky, double noise, const Run& run)
{
    const DefinedTest isDefined(image);
    const auto largestOf = [&](const RowBlock& block) {
        Largest part;
        for (int y = block.first; y < block.end; ++y) {
            part.Add(image.GetImageAdr(0, y, plane, 1), image.GetWidth(), isDefined);
        }
        return part;
    };
    Largest largest;
    FoldFieldBlocks(image, run, largestOf, [&](const Largest& part) { largest.Add(part); });
    const bool isPlateau =
        largest.samples >= kPlateau && largest.pairs >= kPlateauPairs && largest.value > sky + kFarAboveSky * noise;
    const bool isCeiling = isPlateau || largest.value >= FullScale(image.GetOrgBitsPixel());
    return isCeiling ? sky + kNearCeiling * (largest.value - sky) : kInfinity;
}

std::optional<double> LevelSaturated(const CStlImage& raw, int rawPlane, double level, CStlImage& image, int plane,
                                     double sky)
{
    if (level == kInfinity) {
        return std::nullopt;
    }
    const DefinedTest isDefined(image);
    const auto forEach = [&](auto action) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            const float* const before = raw.GetImageAdr(0, y, rawPlane, 1);
            float* const row = image.GetImageAdr(0, y, plane);
            for (int x = 0; x < image.GetWidth(); ++x) {
                if (before[x] >= level && isDefined(row[x])) {
                    action(row[x]);
                }
            }
        }
    };
    float largest = -std::numeric_limits<float>::infinity();
    forEach([&](float v) { largest = std::max(largest, v); });
    forEach([&](float& v) { v = v - sky >= kKeptHeight * (largest - sky) ? largest : v; });
    return largest > sky ? std::optional<double>(largest) : std::nullopt;
}

std::vector<SaturatedArea> FindSaturatedAreas(const CStlImage& image, int plane, double level, const Run& run)
{
    if (level == kInfinity) {
        return {};
    }
    const DefinedTest isDefined(image);
    std::vector<char> isBelow(static_cast<std::size_t>(std::max(image.GetHeight(), 0)));
    const auto look = [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            const float* const row = image.GetImageAdr(0, y, plane, 1);
            isBelow[static_cast<std::size_t>(y)] = LargestOf(row, image.GetWidth(), isDefined) < level ? 1 : 0;
        }
    };
    ForFieldBlocks(image, run, look);
    AreaBuilder builder(level, isDefined);
    for (int y = 0; y < image.GetHeight(); ++y) {
        const bool hasNone = isBelow[static_cast<std::size_t>(y)] != 0;
        builder.Add(image.GetImageAdr(0, y, plane, 1), hasNone ? 0 : image.GetWidth(), y);
    }
    return builder.Areas();
}

} // namespace corvane::stars
