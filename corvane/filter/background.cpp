// Smoothing of the background.

#include <algorithm>
#include <vector>

#include "corvane/core/display_scale.h"
#include "corvane/filter/filter.h"
#include "corvane/filter/mean_rows.h"
#include "corvane/filter/pixel_rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;
using namespace corvane::filter;

namespace {

/// Part of the level range over which smoothing fades in monochrome images.
constexpr double kFadePart = 0.05;
/// The same in display units, and one over it, in colour images.
constexpr double kFadeShown = 16.0;
constexpr double kPerFadeShown = 0.0625;

/// Smoothing that ends at a level, towards which it fades.
struct Smoothing {
    WeightedMean mean;
    double weight;
    double level;
    double begin; ///< where it begins to fade
    double perFade;

    /// The sample for centre c and the sum s of its neighbours in a pixel as bright as `place`.
    double operator()(double c, double s, double place) const
    {
        const double faded = (1.0 - (place - begin) * perFade) * weight;
        const double smooth = mean(c, s, place > begin ? faded : weight);
        return place > level ? c : smooth;
    }
};

/// Smooths the columns that have all their neighbours within the row, each by the brightness of its pixel.
template <int kType>
void SmoothInner(const Smoothing& smoothing, const Band& band, const double* bright, int begin, int end,
                 float* __restrict out)
{
    for (; begin < end; begin += kBlockColumns) {
        const int count = std::min(kBlockColumns, end - begin);
        const BlockSums<kType> sums(band, begin, count);
        const float* const middle = band.Row(0) + begin;
        for (int i = 0; i < count; ++i) {
            out[begin + i] = static_cast<float>(smoothing(middle[i], sums.Others(i), bright[begin + i]));
        }
    }
}

void SmoothRow(const Smoothing& smoothing, const Band& band, int type, const double* bright, int left, int right,
               float* out)
{
    const auto inner = [&](int begin, int end) {
        switch (type) {
        case kCross:
            return SmoothInner<kCross>(smoothing, band, bright, begin, end, out);
        case kSquare3:
            return SmoothInner<kSquare3>(smoothing, band, bright, begin, end, out);
        case kSquare5:
            return SmoothInner<kSquare5>(smoothing, band, bright, begin, end, out);
        default:
            std::copy(band.Row(0) + begin, band.Row(0) + end, out + begin);
        }
    };
    SplitColumns(left, right, band.Width(), Radius(type), inner, [&](int x) {
        const Neighbours points = band.At(x, type);
        out[x] = static_cast<float>(smoothing(points.Centre(), SumOfOthers(points), bright[x]));
    });
}

void SmoothMono(CStlImage& target, double level, int type, double weight, const CStlImage& source, const CRect* rect,
                const Run& run)
{
    const double fade = source.GetLevelRange(0) * kFadePart;
    const Smoothing smoothing{WeightedMean(type), weight, level, level - fade, 1.0 / fade};
    FilterRows(target, source, rect, run, IDS_BACKGROUND, Radius(type), [=](int) {
        return [=](const Band& band, int left, int right, float* out) {
            MapSums(band, type, left, right, out, [=](double c, double s) { return smoothing(c, s, c); });
        };
    });
}

void SmoothColour(CStlImage& target, double level, int type, double weight, const CStlImage& source, const CRect* rect,
                  const Run& run)
{
    const double shown = target.To256(level, 0);
    const Smoothing smoothing{WeightedMean(type), weight, shown, shown - kFadeShown, kPerFadeShown};
    const Brightness brightness(source);
    const auto kernel = [&, bright = std::vector<double>(static_cast<std::size_t>(source.GetWidth()))](
                            const PlaneBands& bands, int y, int left, int right) mutable {
        brightness.Row(bands, 0, left, right, bright.data());
        for (int plane = 0; plane < target.GetPlanes(); ++plane) {
            SmoothRow(smoothing, bands[plane], type, bright.data(), left, right, target.GetImageAdr(0, y, plane));
        }
    };
    FilterPixels(target, source, rect, run, IDS_BACKGROUND, Radius(type), 1, kernel);
}

} // namespace

void CImgFilter::BkgSmooth(double level, int type, double weight, CStlImage* source, CRect* rect, int showProgress)
{
    BkgSmooth(level, type, weight, *source, rect, WindowRun(*this, showProgress));
}

void CImgFilter::BkgSmooth(double level, int type, double weight, const CStlImage& source, const CRect* rect,
                           const Run& run)
{
    const auto smooth = GetDimension() < kColours ? SmoothMono : SmoothColour;
    smooth(*this, level, type, weight, source, rect, run);
}
