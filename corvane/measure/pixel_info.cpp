#include "corvane/measure/pixel_info.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/reductions.h"
#include "corvane/measure/clamped_region.h"

using namespace corvane;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// A whole number for each float, in their order; NaN of either sign comes last.
std::uint32_t KeyOf(float v)
{
    constexpr std::uint32_t kSign = 0x80000000U;
    constexpr std::uint32_t kNaNKey = 0xFFC00000U;
    const auto bits = std::bit_cast<std::uint32_t>(v);
    const std::uint32_t key = bits & kSign ? ~bits : bits | kSign;
    return v == v ? key : kNaNKey;
}

float FloatOf(std::uint32_t key)
{
    constexpr std::uint32_t kSign = 0x80000000U;
    return std::bit_cast<float>(key & kSign ? key ^ kSign : ~key);
}

/// Counts one half of the bits of keys, to find which value a rank falls on.
class HalfCounts {
public:
    /// Counts binOf(sample) of each sample, as often as the weight says; kNoBin is not counted.
    template <class BinOf>
    void Add(const float* samples, int length, std::uint64_t weight, BinOf binOf)
    {
        for (int begin = 0; begin < length; begin += kBlock) {
            std::uint32_t bins[kBlock];
            const int size = std::min(kBlock, length - begin);
            for (int i = 0; i < size; ++i) {
                bins[i] = binOf(samples[begin + i]);
            }
            // Those that count move together first: a branch for each would be foreseen badly.
            int counted = 0;
            for (int i = 0; i < size; ++i) {
                bins[counted] = bins[i];
                counted += bins[i] != kNoBin;
            }
            for (int i = 0; i < counted; ++i) {
                counts_[bins[i]] += weight;
            }
        }
    }

    std::uint64_t Total() const
    {
        std::uint64_t total = 0;
        for (const std::uint64_t count : counts_) {
            total += count;
        }
        return total;
    }

    /// The bin that holds the element of a rank; the rank becomes that within the bin. The rank must be below the
    /// total.
    std::uint32_t Find(std::uint64_t& rank) const
    {
        std::uint32_t bin = 0;
        for (; rank >= counts_[bin]; ++bin) {
            rank -= counts_[bin];
        }
        return bin;
    }

    static constexpr std::uint32_t kNoBin = 0xFFFFFFFFU;

private:
    static constexpr int kBlock = 512;

    std::vector<std::uint64_t> counts_ = std::vector<std::uint64_t>(0x10000);
};

struct Measures {
    double max;
    double min;
    double mean;
    double median;
};

/// Width times height is 1, which it is for a pixel turned over, too.
bool IsOnePixel(const CRect& rect)
{
    const std::int64_t width = static_cast<std::int64_t>(rect.right) - rect.left;
    const std::int64_t height = static_cast<std::int64_t>(rect.bottom) - rect.top;
    return width == height && (width == 1 || width == -1);
}

/// The samples of one plane on the positions of a rectangle.
struct Region {
    const CStlImage& image;
    int plane;
    ClampedSpan columns;
    ClampedSpan rows;
    BlankTest isBlank;

    Region(const CStlImage& measured, int p, const CRect& rect)
        : image(measured), plane(p), columns(rect.left, rect.right, measured.GetWidth()),
          rows(rect.top, rect.bottom, measured.GetHeight()), isBlank(measured)
    {}

    template <class Run>
    void Visit(Run visit) const
    {
        VisitRuns(
            image, plane, columns, rows, [](const float*, int count) { return count; }, visit);
    }

    Measures Measure(double corner, bool withMedian) const
    {
        Extremes extremes;
        WeightedSum sum;
        Visit([&](const float* samples, int length, std::uint64_t weight) {
            extremes.Add(samples, length, isBlank);
            sum.Add(samples, length, weight, isBlank);
        });
        return {extremes.Max() > corner ? extremes.Max() : corner, extremes.Min() < corner ? extremes.Min() : corner,
                sum.Mean(), withMedian ? Median() : 0.0};
    }

    /// The element count / 2 in order: the upper half of its bits is found first, then the lower half among those.
    double Median() const
    {
        HalfCounts upper;
        Visit([&](const float* samples, int length, std::uint64_t weight) {
            upper.Add(samples, length, weight,
                      [&](float v) { return isBlank(v) ? HalfCounts::kNoBin : KeyOf(v) >> 16; });
        });
        const std::uint64_t total = upper.Total();
        if (total == 0) {
            return kNaN;
        }
        std::uint64_t rank = total / 2;
        const std::uint32_t high = upper.Find(rank);
        HalfCounts lower;
        Visit([&](const float* samples, int length, std::uint64_t weight) {
            lower.Add(samples, length, weight, [&](float v) {
                const std::uint32_t key = KeyOf(v);
                const bool isElsewhere = (key >> 16 != high) | isBlank(v);
                return isElsewhere ? HalfCounts::kNoBin : key & 0xFFFFU;
            });
        });
        return FloatOf(high << 16 | lower.Find(rank));
    }
};

} // namespace

void CImgPixelInfo::Calc(CRect rect, double* maxima, double* minima, double* means, double* medians)
{
    for (double* const output : {maxima, minima, means, medians}) {
        std::fill_n(output, output != nullptr ? 3 : 0, 0.0);
    }
    for (int plane = 0; plane < std::min(GetPlanes(), 3) && GetPixelCount() > 0; ++plane) {
        const double corner = GetPixelGrayRaw(static_cast<int>(rect.left), static_cast<int>(rect.top), plane);
        Measures measures{corner, corner, corner, corner};
        if (!IsOnePixel(rect)) {
            measures = Region(*this, plane, rect).Measure(corner, medians != nullptr);
        }
        maxima[plane] = measures.max;
        minima[plane] = measures.min;
        means[plane] = measures.mean;
        if (medians != nullptr) {
            medians[plane] = measures.median;
        }
    }
}

void CImgPixelInfo::Calc(CPoint point, int size, double* maxima, double* minima, double* means, double* medians)
{
    const auto edge = [](std::int64_t v) {
        return static_cast<int>(
            std::clamp<std::int64_t>(v, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
    };
    const std::int64_t half = size / 2;
    Calc(CRect(edge(point.x - half), edge(point.y - half), edge(point.x + half + 1), edge(point.y + half + 1)), maxima,
         minima, means, medians);
}
