#include "corvane/combine/saturation.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/aligned_row.h"
#include "corvane/core/truncate.h"

namespace corvane {
namespace {

constexpr int kMostRadius = 2;

/// The smaller one; a where q is NaN.
double Smaller(double a, double q)
{
    return a >= q ? q : a;
}

double Threshold(const CStlImage& image, const SaturationSettings& settings)
{
    return settings.fraction * (settings.space == Space::kDisplay ? 255.0 : image.GetMaxPixel(0));
}

} // namespace

SaturationReplacement::SaturationReplacement(CStlImage& result, const CStlImage& base, const CStlImage& overlay,
                                             const Alignment& alignment, int plane, const SaturationSettings& settings)
    : result_(result), base_(base), overlay_(overlay), alignment_(alignment), plane_(plane),
      basePlane_(std::min(plane, base.GetPlanes() - 1)),
      overlayPlane_(overlay.GetDimension() < 3 ? 0 : std::min(plane, overlay.GetPlanes() - 1)), ratio_(settings.ratio),
      radius_(std::clamp(settings.radius, 0, kMostRadius)),
      baseScale_{settings.space == Space::kDisplay, DisplayScale(base, 0)},
      neighbourScale_{baseScale_.isDisplay, DisplayScale(base, plane)},
      overlayScale_{baseScale_.isDisplay, DisplayScale(overlay, overlayPlane_)},
      resultScale_{baseScale_.isDisplay, DisplayScale(result, 0)}, saturatedBase_(Threshold(base, settings)),
      saturatedOverlay_(Threshold(overlay, settings)),
      values_(static_cast<std::size_t>(std::max(result.GetWidth(), 0))), inside_(values_.size())
{}

void SaturationReplacement::Row(int y, int left, int right)
{
    if (base_.GetHeight() < 1 || basePlane_ < 0) {
        return;
    }
    const int end = std::min(right, base_.GetWidth());
    const float* const base = base_.GetImageAdr(0, y, basePlane_, 1);
    float* const result = result_.GetImageAdr(0, y, plane_);
    SampleAlignedRow(overlay_, overlayPlane_, alignment_, y, std::max(end, 0), 0.0, values_.data(), inside_.data());
    for (int x = left; x < end; ++x) {
        const Pixel pixel{x, y, alignment_.Map(x, y), baseScale_.To(base[x]), overlayScale_.To(values_[x])};
        const double v = inside_[x] != 0 && IsUsable(pixel.at) ? Replaced(pixel) : pixel.a;
        result[x] = static_cast<float>(resultScale_.Back(v));
    }
}

/// True away from the overlay's border.
bool SaturationReplacement::IsUsable(const Position& at) const
{
    return at.x >= 1.0 && at.x < overlay_.GetWidth() - 1 && at.y >= 1.0 && at.y < overlay_.GetHeight() - 1;
}

double SaturationReplacement::Replaced(const Pixel& pixel) const
{
    return radius_ == 0 ? Smaller(pixel.a, pixel.b * ratio_) : BesideSaturation(pixel);
}

double SaturationReplacement::BesideSaturation(const Pixel& pixel) const
{
    const double q = pixel.b * ratio_;
    const double largestA = LargestInBase(pixel);
    const double largestB = LargestInOverlay(pixel);
    const bool isNearB = largestB >= saturatedOverlay_;
    if (!(largestA >= saturatedBase_)) {
        return Smaller(pixel.a, isNearB ? largestB * ratio_ : q);
    }
    if (!isNearB) {
        return Smaller(largestA, q);
    }
    const bool isInBoth = pixel.a >= saturatedBase_ && pixel.b >= saturatedOverlay_;
    return isInBoth ? Smaller(pixel.a, q) : BetweenNeighbours(pixel, q);
}

/// Of a and q the one that is closer to the pixels already written.
double SaturationReplacement::BetweenNeighbours(const Pixel& pixel, double q) const
{
    double sumA = 0.0;
    double sumQ = 0.0;
    const auto add = [&](int x, int y) {
        const double r = resultScale_.To(result_.GetPixelGrayRaw(x, y, plane_));
        sumA += std::fabs(pixel.a - r);
        sumQ += std::fabs(q - r);
    };
    add(pixel.x - 1, pixel.y - 1);
    add(pixel.x, pixel.y - 1);
    add(pixel.x - 1, pixel.y);
    return sumA >= sumQ ? q : pixel.a;
}

double SaturationReplacement::LargestInBase(const Pixel& pixel) const
{
    double largest = pixel.a;
    for (int ny = std::max(pixel.y - radius_, 0); ny <= std::min(pixel.y + radius_, result_.GetHeight() - 1); ++ny) {
        const float* const row = base_.GetImageAdr(0, ny, basePlane_, 1);
        for (int nx = std::max(pixel.x - radius_, 0); nx <= std::min(pixel.x + radius_, result_.GetWidth() - 1); ++nx) {
            const double v = neighbourScale_.To(row[std::min(nx, base_.GetWidth() - 1)]);
            largest = v > largest ? v : largest;
        }
    }
    return largest;
}

double SaturationReplacement::LargestInOverlay(const Pixel& pixel) const
{
    double largest = pixel.b;
    for (int ny = std::max(pixel.y - radius_, 0); ny <= std::min(pixel.y + radius_, result_.GetHeight() - 1); ++ny) {
        const float* const row = overlay_.GetImageAdr(0, Truncate(ny + pixel.at.y - pixel.y + 0.5), overlayPlane_, 1);
        for (int nx = std::max(pixel.x - radius_, 0); nx <= std::min(pixel.x + radius_, result_.GetWidth() - 1); ++nx) {
            const int column = Truncate(nx + pixel.at.x - pixel.x + 0.5);
            const double v = overlayScale_.To(row[std::clamp(column, 0, overlay_.GetWidth() - 1)]);
            largest = v > largest ? v : largest;
        }
    }
    return largest;
}

} // namespace corvane
