// Histogram and mean of a plane.

#include <algorithm>
#include <vector>

#include "corvane/core/blank.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/reductions.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/truncate.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Sorts values into equal bins between two bounds. What is not counted goes to a bin of its own behind the last, so
/// that the loop has no branch.
class Binning {
public:
    Binning(int bins, double lo, double hi) : bins_(bins), lo_(lo), hi_(hi), counts_(static_cast<std::size_t>(bins) + 1)
    {}

    /// Counts valueOf(x) for x in 0..count - 1 wherever isSkipped(x) does not hold.
    template <class ValueOf, class IsSkipped>
    void Count(int count, ValueOf valueOf, IsSkipped isSkipped)
    {
        for (int begin = 0; begin < count; begin += kBlock) {
            const int length = std::min(kBlock, count - begin);
            int index[kBlock];
            for (int i = 0; i < length; ++i) {
                index[i] = Index(valueOf(begin + i), isSkipped(begin + i));
            }
            for (int i = 0; i < length; ++i) {
                ++counts_[static_cast<std::size_t>(index[i])];
            }
        }
    }

    void CopyTo(int* hist) const { std::copy_n(counts_.begin(), bins_, hist); }

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
    std::vector<int> counts_;
};

/// Brightness on the 256 scale of a row of three planes.
struct BrightnessRow {
    const CStlImage& image;
    double factor[3];
    double min[3];
    const float* rows[3] = {};

    explicit BrightnessRow(const CStlImage& source) : image(source)
    {
        for (int p = 0; p < 3; ++p) {
            min[p] = image.GetLevelMin(p);
            factor[p] = 255.0 / image.GetLevelRange(p);
        }
    }

    void MoveTo(int x, int y)
    {
        for (int p = 0; p < 3; ++p) {
            rows[p] = image.GetImageAdr(x, y, p, 1);
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
    BrightnessRow bright(*this);
    Binning binning(std::max(bins, 0), lo, hi);
    for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
        if (brightness && count > 0) {
            bright.MoveTo(area.left, y);
            const auto& rows = bright.rows;
            binning.Count(count, bright,
                          [&](int x) { return isBlank(rows[0][x]) & isBlank(rows[1][x]) & isBlank(rows[2][x]); });
        } else if (count > 0) {
            const float* const row = GetImageAdr(area.left, y, plane, 1);
            binning.Count(
                count, [=](int x) { return row[x]; }, [=](int x) { return isBlank(row[x]); });
        }
        stage.Step();
    }
    if (bins <= 0) {
        return 0;
    }
    binning.CopyTo(hist);
    return Truncate(2.0 * GetHeight() * GetWidth() / bins);
}

float CStlImage::GetAvrGrayRaw(int plane) const
{
    const BlankTest isBlank(*this);
    Sums<1> sums;
    long long count = 0;
    for (int y = 0; y < GetHeight() && plane >= 0 && plane < GetPlanes(); ++y) {
        const float* const row = GetImageAdr(0, y, plane, 1);
        // The rest of a row behind its first blank does not count: frames are blank at one end, where they were moved.
        const float* const end = IsBlankUsed() ? std::find_if(row, row + GetWidth(), isBlank) : row + GetWidth();
        sums.Add(static_cast<std::size_t>(end - row), [=](std::size_t x, double* term) { *term = row[x]; });
        count += end - row;
    }
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
