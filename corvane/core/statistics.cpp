// Histogram and mean of a plane.

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/fold.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/truncate.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Sorts values into equal bins between two bounds. What is not counted goes to a bin of its own behind the last, so
/// that the loop has no branch.
class Binning {
public:
    Binning(int bins, double lo, double hi) : bins_(bins), lo_(lo), hi_(hi) {}

    std::size_t Counts() const { return static_cast<std::size_t>(bins_) + 1; }

    /// Counts valueOf(x) for x in 0..count - 1 wherever isSkipped(x) does not hold.
    template <class ValueOf, class IsSkipped>
    void Count(int count, ValueOf valueOf, IsSkipped isSkipped, int* counts) const
    {
        for (int begin = 0; begin < count; begin += kBlock) {
            const int length = std::min(kBlock, count - begin);
            int index[kBlock];
            for (int i = 0; i < length; ++i) {
                index[i] = Index(valueOf(begin + i), isSkipped(begin + i));
            }
            for (int i = 0; i < length; ++i) {
                ++counts[index[i]];
            }
        }
    }

private:
    static constexpr int kBlock = 512;

    int Index(double v, bool skipped) const
    {
        const bool counted = (v >= lo_) & (v <= hi_) & !skipped;
        const double place = (v - lo_) / (hi_ - lo_) * bins_;
        // An empty range gives NaN, which the comparison sends to bin 0.
        const int bin = static_cast<int>(place > 0.0 ? std::min(place, bins_ - 1.0) : 0.0);
        return counted ? bin : bins_;
    }

    int bins_;
    double lo_;
    double hi_;
};

/// Brightness on the 256 scale of a row of three planes.
struct BrightnessRow {
    double factor[3];
    double min[3];
    const float* rows[3];

    /// From pixel (x, y) on.
    BrightnessRow(const CStlImage& image, LONG x, int y)
    {
        for (int p = 0; p < 3; ++p) {
            min[p] = image.GetLevelMin(p);
            factor[p] = 255.0 / image.GetLevelRange(p);
            rows[p] = image.GetImageAdr(static_cast<int>(x), y, p, 1);
        }
    }

    double operator()(int x) const
    {
        return 0.587 * (rows[1][x] - min[1]) * factor[1] + 0.114 * (rows[2][x] - min[2]) * factor[2] +
               0.299 * (rows[0][x] - min[0]) * factor[0];
    }
};

/// Raw bounds on the scale of `BrightnessRow`.
void BoundsToBrightness(const CStlImage& image, double& lo, double& hi)
{
    const double low = 0.587 * image.GetLevelMin(1) + 0.299 * image.GetLevelMin(0) + 0.114 * image.GetLevelMin(2);
    const double high = 0.299 * image.GetLevelMax(0) + 0.587 * image.GetLevelMax(1) + 0.114 * image.GetLevelMax(2);
    lo = (lo - low) * 255.0 / (high - low);
    hi = (hi - low) * 255.0 / (high - low);
}

/// Adds the terms of the samples of some rows; returns how many samples count. The rest of a row behind its first blank
/// does not: frames are blank at one end, where they were moved.
template <int number, class TermsOf>
long long AddRows(const CStlImage& image, const RowBlock& rows, Sums<number>& sums, TermsOf termsOf)
{
    const BlankTest isBlank(image);
    long long count = 0;
    for (int y = rows.first; y < rows.end; ++y) {
        const float* const row = image.GetImageAdr(0, y, rows.plane, 1);
        const float* const last = row + image.GetWidth();
        const float* const end = isBlank.IsNever() ? last : std::find_if(row, last, isBlank);
        sums.Add(static_cast<std::size_t>(end - row), [=](std::size_t x, double* terms) { termsOf(row[x], terms); });
        count += end - row;
    }
    return count;
}

/// The mean of the first rows of a plane, on several threads: nothing where there is one, or where another order of the
/// sum might show. The mean is that of one sum over all rows, which as a float nearly all orders come to.
std::optional<float> MeanOfBlocks(const CStlImage& image, int plane, int rows)
{
    struct Part {
        Sums<2> sums; ///< of the samples and of their magnitudes
        long long count = 0;
    };
    const RowBlocks blocks({0, 0, image.GetWidth(), rows});
    if (ThreadsFor(blocks.Samples()) == 1) {
        return std::nullopt;
    }
    const auto partOf = [&](const RowBlock& block) {
        Part part;
        part.count = AddRows(image, {plane, block.first, block.end}, part.sums, [](double v, double* terms) {
            terms[0] = v;
            terms[1] = std::fabs(v);
        });
        return part;
    };
    double sum = 0.0;
    double magnitude = 0.0;
    long long count = 0;
    FoldBlocks(blocks, Threads(), partOf, [&](const Part& part) {
        const auto [ofPart, magnitudeOfPart] = part.sums.Totals();
        sum += ofPart;
        magnitude += magnitudeOfPart;
        count += part.count;
    });
    // Each addition of the longest chain, in either order, rounds by 2^-53 of the magnitude at most.
    const double additions = static_cast<double>(count) / Sums<2>::kLanes + 2.0 * rows + 64.0;
    const double error = 0x1p-51 * additions * magnitude;
    const auto least = static_cast<float>((sum - error) / static_cast<double>(count));
    const auto most = static_cast<float>((sum + error) / static_cast<double>(count));
    return least == most ? std::optional(least) : std::nullopt;
}

} // namespace

int CStlImage::GetHistGram(int* hist, int bins, double lo, double hi, int plane, CRect* rect, int showProgress,
                           int textId)
{
    return GetHistGram(hist, bins, lo, hi, plane, rect, WindowRun(*this, showProgress), textId);
}

int CStlImage::GetHistGram(int* hist, int bins, double lo, double hi, int plane, const CRect* rect, const Run& run,
                           int textId) const
{
    const CRect area = WorkingArea(*this, rect);
    Stage stage(run, textId == 0 ? IDS_HISTOGRAM : textId, static_cast<int>(area.bottom - area.top));
    const bool brightness = plane == -1 && IsColor() && GetPlanes() >= 3;
    if (brightness) {
        BoundsToBrightness(*this, lo, hi);
    }
    plane = plane == -1 ? 0 : plane;
    const bool hasPlane = plane >= 0 && plane < GetPlanes();
    const int count = hasPlane ? static_cast<int>(area.right - area.left) : 0;
    const BlankTest isBlank(*this);
    const Binning binning(std::max(bins, 0), lo, hi);
    const auto countRow = [&](int y, int* counts) {
        if (brightness) {
            const BrightnessRow bright(*this, area.left, y);
            const auto& rows = bright.rows;
            binning.Count(
                count, bright, [&](int x) { return isBlank(rows[0][x]) & isBlank(rows[1][x]) & isBlank(rows[2][x]); },
                counts);
        } else {
            const float* const row = GetImageAdr(area.left, y, plane, 1);
            binning.Count(
                count, [=](int x) { return row[x]; }, [=](int x) { return isBlank(row[x]); }, counts);
        }
    };
    const auto countBlock = [&](int* counts, const RowBlock& block) {
        for (int y = block.first; count > 0 && y < block.end; ++y) {
            countRow(y, counts);
        }
    };
    const auto counts = CountBlocks<int>(RowBlocks(area), stage.Threads(), binning.Counts(), countBlock,
                                         [&](const RowBlock& block) { CountRows(stage, block); });
    if (bins <= 0) {
        return 0;
    }
    std::copy_n(counts.begin(), bins, hist);
    return Truncate(2.0 * GetHeight() * GetWidth() / bins);
}

float CStlImage::GetAvrGrayRaw(int plane) const
{
    const int rows = plane >= 0 && plane < GetPlanes() ? GetHeight() : 0;
    if (const std::optional<float> mean = MeanOfBlocks(*this, plane, rows)) {
        return *mean;
    }
    Sums<1> sums;
    const long long count = AddRows(*this, {plane, 0, rows}, sums, [](double v, double* term) { *term = v; });
    return static_cast<float>(sums.Totals()[0] / static_cast<double>(count));
}

float CStlImage::GetAvrGray(int plane) const
{
    return static_cast<float>(GetAvrGrayRaw(plane) - GetLevelMin(plane));
}

float CStlImage::GetAvrGray256f(int plane) const
{
    return To256(GetAvrGrayRaw(plane), plane);
}
