#include "corvane/measure/pixel_info.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/fold.h"
#include "corvane/core/middle_two.h"
#include "corvane/measure/clamped_region.h"

using namespace corvane;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

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
class Region {
public:
    Region(const CStlImage& image, int plane, const CRect& rect)
        : image_(image), plane_(plane), columns_(rect.left, rect.right, image.GetWidth()),
          rows_(rect.top, rect.bottom, image.GetHeight()),
          blocks_({0, rows_.first, columns_.count, columns_.count > 0 ? rows_.first + rows_.count : rows_.first}),
          isBlank_(image)
    {}

    Measures Measure(double corner, bool withMedian) const
    {
        Extremes extremes;
        WeightedSum sum;
        const auto fold = [&](const Part& part) {
            extremes.Add(part.extremes);
            std::for_each(part.terms.begin(), part.terms.end(), [&](const WeightedSum& term) { sum.Add(term); });
        };
        FoldBlocks(
            blocks_, Threads(), [this](const RowBlock& block) { return PartOf(block); }, fold);
        return {extremes.Max() > corner ? extremes.Max() : corner, extremes.Min() < corner ? extremes.Min() : corner,
                sum.Mean(), withMedian ? Median() : 0.0};
    }

private:
    /// What a block of rows comes to.
    struct Part {
        Extremes extremes;
        std::vector<WeightedSum> terms; ///< apart: sums of several rows would depend on where a block begins
    };

    template <class VisitRun>
    void Visit(const RowBlock& block, VisitRun visit) const
    {
        for (int y = block.first; y < block.end; ++y) {
            VisitRuns(
                image_, plane_, columns_, rows_, y, [](const float*, int count) { return count; }, visit);
        }
    }

    Part PartOf(const RowBlock& block) const
    {
        Part part;
        Visit(block, [&](const float* samples, int length, std::uint64_t weight) {
            part.extremes.Add(samples, length, isBlank_);
            WeightedSum::VisitTerms(samples, length, weight, isBlank_,
                                    [&](const WeightedSum& term) { part.terms.push_back(term); });
        });
        return part;
    }

    /// Counts binOf(sample) of each sample.
    template <class BinOf>
    std::vector<std::uint64_t> Count(BinOf binOf) const
    {
        return CountBlocks<std::uint64_t>(blocks_, kHalves, [&](std::uint64_t* counts, const RowBlock& block) {
            Visit(block, [&](const float* samples, int length, std::uint64_t weight) {
                CountHalves(samples, length, weight, binOf, counts);
            });
        });
    }

    /// The element count / 2 in order.
    double Median() const
    {
        const auto middle = MiddleTwo([this](auto binOf) { return Count(binOf); },
                                      [isBlank = isBlank_](float v) { return isBlank(v) ? kNoKey : KeyOf(v); });
        return middle ? middle->second : kNaN;
    }

    const CStlImage& image_;
    int plane_;
    ClampedSpan columns_;
    ClampedSpan rows_;
    RowBlocks blocks_;
    BlankTest isBlank_;
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
