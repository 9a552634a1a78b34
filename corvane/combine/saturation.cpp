#include "corvane/combine/saturation.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/core/truncate.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

constexpr int kMostRadius = 2;
constexpr int kMostSide = 2 * kMostRadius + 1;

/// The smaller one; a where q is NaN.
double Smaller(double a, double q)
{
    return a >= q ? q : a;
}

double Threshold(const CStlImage& image, const SaturationSettings& settings)
{
    return settings.fraction * (settings.space == Space::kDisplay ? 255.0 : image.GetMaxPixel(0));
}

/// The rows of a window that moves along a plane. Each is looked up when it is another than before.
class WindowRows {
public:
    WindowRows(const CStlImage& image, int plane) : image_(image), plane_(plane) {}

    /// Row y, which is the window's i-th.
    const float* Row(int i, int y)
    {
        if (std::exchange(at_[i], y) != y || rows_[i] == nullptr) {
            rows_[i] = image_.GetImageAdr(0, y, plane_, 1);
        }
        return rows_[i];
    }

private:
    const CStlImage& image_;
    int plane_;
    int at_[kMostSide] = {};
    const float* rows_[kMostSide] = {};
};

/// A pixel that takes the base's value a or the overlay's q, whichever is closer to pixels already written.
struct Doubtful {
    int x;
    int y;
    double a;
    double q;
};

/// Replaces samples row by row.
class Replacement {
public:
    Replacement(CStlImage& result, const CStlImage& base, const CStlImage& overlay, const Alignment& alignment,
                int plane, const SaturationSettings& settings);

    /// Writes columns left to right - 1 of row y, as far as the base has them; the doubtful ones at once, or else hands
    /// them out.
    void Row(int y, int left, int right, std::vector<Doubtful>* doubtful);
    /// Writes a doubtful pixel, when those above it and to the left are there.
    void Settle(const Doubtful& pixel);

private:
    /// Display scale or, in raw space, none.
    struct Scale {
        bool isDisplay;
        DisplayScale display;

        double To(double v) const { return isDisplay ? display.To256(v) : v; }
        double Back(double v) const { return isDisplay ? display.ToRaw(v) : v; }
    };

    /// A pixel and what base and overlay have there.
    struct Pixel {
        int x;
        int y;
        Position at; ///< in the overlay
        double a;
        double b;
    };

    /// What becomes of a pixel.
    struct Choice {
        double value;
        bool isDoubtful = false;
    };

    Choice Replaced(const Pixel& pixel);
    bool IsUsable(const Position& at) const;
    double LargestInBase(const Pixel& pixel);
    double LargestInOverlay(const Pixel& pixel);
    template <class RowOf, class ColumnOf>
    double Largest(double value, const Pixel& about, const Scale& scale, RowOf rowOf, ColumnOf columnOf) const;
    void Write(float& sample, double v) const { sample = static_cast<float>(resultScale_.Back(v)); }

    CStlImage& result_;
    const CStlImage& base_;
    const CStlImage& overlay_;
    Alignment alignment_;
    int plane_;
    int basePlane_;
    int overlayPlane_;
    double ratio_;
    int radius_;
    Scale baseScale_; ///< plane 0's levels for every plane, but for the neighbours in the base
    Scale neighbourScale_;
    Scale overlayScale_;
    Scale resultScale_;
    double saturatedBase_;
    double saturatedOverlay_;
    WindowRows baseRows_;
    WindowRows overlayRows_;
    std::vector<double> values_;
    std::vector<int> inside_;
};

Replacement::Replacement(CStlImage& result, const CStlImage& base, const CStlImage& overlay, const Alignment& alignment,
                         int plane, const SaturationSettings& settings)
    : result_(result), base_(base), overlay_(overlay), alignment_(alignment), plane_(plane),
      basePlane_(std::min(plane, base.GetPlanes() - 1)),
      overlayPlane_(overlay.GetDimension() < 3 ? 0 : std::min(plane, overlay.GetPlanes() - 1)), ratio_(settings.ratio),
      radius_(std::clamp(settings.radius, 0, kMostRadius)),
      baseScale_{settings.space == Space::kDisplay, DisplayScale(base, 0)},
      neighbourScale_{baseScale_.isDisplay, DisplayScale(base, plane)},
      overlayScale_{baseScale_.isDisplay, DisplayScale(overlay, overlayPlane_)},
      resultScale_{baseScale_.isDisplay, DisplayScale(result, 0)}, saturatedBase_(Threshold(base, settings)),
      saturatedOverlay_(Threshold(overlay, settings)), baseRows_(base, basePlane_),
      overlayRows_(overlay, overlayPlane_), values_(static_cast<std::size_t>(std::max(result.GetWidth(), 0))),
      inside_(values_.size())
{}

void Replacement::Row(int y, int left, int right, std::vector<Doubtful>* doubtful)
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
        const Choice choice = inside_[x] != 0 && IsUsable(pixel.at) ? Replaced(pixel) : Choice{pixel.a};
        if (!choice.isDoubtful) {
            Write(result[x], choice.value);
        } else if (const Doubtful open{x, y, pixel.a, choice.value}; doubtful != nullptr) {
            doubtful->push_back(open);
        } else {
            Settle(open);
        }
    }
}

void Replacement::Settle(const Doubtful& pixel)
{
    const auto [x, y, a, q] = pixel;
    double sumA = 0.0;
    double sumQ = 0.0;
    for (const auto& [nx, ny] : {std::pair(x - 1, y - 1), std::pair(x, y - 1), std::pair(x - 1, y)}) {
        const double r = resultScale_.To(result_.GetPixelGrayRaw(nx, ny, plane_));
        sumA += std::fabs(a - r);
        sumQ += std::fabs(q - r);
    }
    Write(*result_.GetImageAdr(x, y, plane_), sumA >= sumQ ? q : a);
}

/// True away from the overlay's border.
bool Replacement::IsUsable(const Position& at) const
{
    return at.x >= 1.0 && at.x < overlay_.GetWidth() - 1 && at.y >= 1.0 && at.y < overlay_.GetHeight() - 1;
}

Replacement::Choice Replacement::Replaced(const Pixel& pixel)
{
    const double q = pixel.b * ratio_;
    if (radius_ == 0) {
        return {Smaller(pixel.a, q)};
    }
    const double largestA = LargestInBase(pixel);
    const double largestB = LargestInOverlay(pixel);
    const bool isNearB = largestB >= saturatedOverlay_;
    if (!(largestA >= saturatedBase_)) {
        return {Smaller(pixel.a, isNearB ? largestB * ratio_ : q)};
    }
    if (!isNearB) {
        return {Smaller(largestA, q)};
    }
    const bool isInBoth = pixel.a >= saturatedBase_ && pixel.b >= saturatedOverlay_;
    return isInBoth ? Choice{Smaller(pixel.a, q)} : Choice{q, true};
}

double Replacement::LargestInBase(const Pixel& pixel)
{
    return Largest(
        pixel.a, pixel, neighbourScale_, [&](int i, int y) { return baseRows_.Row(i, y); },
        [&](int x) { return std::min(x, base_.GetWidth() - 1); });
}

double Replacement::LargestInOverlay(const Pixel& pixel)
{
    return Largest(
        pixel.b, pixel, overlayScale_,
        [&](int i, int y) { return overlayRows_.Row(i, Truncate(y + pixel.at.y - pixel.y + 0.5)); },
        [&](int x) { return std::clamp(Truncate(x + pixel.at.x - pixel.x + 0.5), 0, overlay_.GetWidth() - 1); });
}

/// The largest of a value and of the samples about a pixel, in rowOf(i, y) for the i-th row y, at columnOf(x).
template <class RowOf, class ColumnOf>
double Replacement::Largest(double value, const Pixel& about, const Scale& scale, RowOf rowOf, ColumnOf columnOf) const
{
    const int left = std::max(about.x - radius_, 0);
    const int top = std::max(about.y - radius_, 0);
    const int columns = std::min(about.x + radius_, result_.GetWidth() - 1) - left + 1;
    const int rows = std::min(about.y + radius_, result_.GetHeight() - 1) - top + 1;
    int at[kMostSide];
    for (int i = 0; i < columns; ++i) {
        at[i] = columnOf(left + i);
    }
    double largest = value;
    for (int i = 0; i < rows; ++i) {
        const float* const row = rowOf(i, top + i);
        double of[kMostSide];
        for (int k = 0; k < kMostSide; ++k) {
            of[k] = k < columns ? scale.To(row[at[k]]) : value;
        }
        largest = std::max({largest, of[0], of[1], of[2], of[3], of[4]}); // from the first on: NaN are passed over
    }
    return largest;
}

} // namespace

// Doubtful pixels are settled in their order, on the caller's thread, when all before them are there. With one thread
// they are at once: where base and result share samples, those that follow see what was written.
void ReplaceSaturated(CStlImage& result, const CStlImage& base, const CStlImage& overlay, const Alignment& alignment,
                      int plane, const SaturationSettings& settings, const CRect& area, Stage& stage)
{
    const Replacement replacement(result, base, overlay, alignment, plane, settings);
    const int threads = ThreadsOn(result, {&base, &overlay}, stage.Threads());
    std::vector<std::vector<Doubtful>> doubtful(static_cast<std::size_t>(std::max(area.Height(), 0)));
    const auto ofRow = [&](int y) { return &doubtful[static_cast<std::size_t>(y - area.top)]; };
    const auto replace = [&](const RowBlock& block) {
        Replacement own = replacement;
        for (int y = block.first; y < block.end; ++y) {
            own.Row(y, static_cast<int>(area.left), static_cast<int>(area.right), threads > 1 ? ofRow(y) : nullptr);
        }
    };
    ForRowBlocks(RowBlocks(area), threads, replace, [&, own = replacement](const RowBlock& block) mutable {
        for (int y = block.first; y < block.end; ++y) {
            for (const Doubtful& pixel : std::exchange(*ofRow(y), {})) {
                own.Settle(pixel);
            }
        }
        CountRows(stage, block);
    });
}

} // namespace corvane
