#include "corvane/measure/vignetting.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// What samples beyond the reach of the model become, on the raw scale.
constexpr float kBeyond = 255.0F;

/// The model along one row: pixel i of it lies (left + i, down) from the centre.
struct RowModel {
    double k;
    double base;
    double left;
    double down;

    double SquareOf(int i) const { return (left + i) * (left + i) + down * down; }

    /// A corrected sample to the letter: the square of the distance is taken from the distance, and rounded as that is.
    float Exact(int i, double v) const
    {
        const double r = std::sqrt(SquareOf(i));
        const double d = r * r * k + base;
        const auto corrected = static_cast<float>(base / d * v);
        return d <= 0.0 ? kBeyond : corrected;
    }

    /// Whether a row may go without the root, and divide by d / base: it may where the terms of d do not nearly cancel.
    /// The square of the distance has its extremes at the ends of the row and at the pixel closest to the centre.
    bool IsQuick(int count) const
    {
        const auto isClear = [&](double i) {
            constexpr double kCancelled = 1e-6;
            const double square = SquareOf(static_cast<int>(i));
            return square * k + base > kCancelled * (square * std::fabs(k) + std::fabs(base));
        };
        constexpr double kMost = 1e100; // quotients and products of such numbers are far from any overflow
        return std::fabs(base) > 1.0 / kMost && std::fabs(base) < kMost && std::fabs(k) < kMost && isClear(0.0) &&
               isClear(count - 1.0) && isClear(std::clamp(-left, 0.0, count - 1.0));
    }

    /// Corrects pixels begin .. end - 1 of a row of `count`.
    void Apply(const float* in, float* out, int begin, int end, int count) const
    {
        const auto apply = [=](auto sampleOf) {
            for (int i = begin; i < end; ++i) {
                out[i] = sampleOf(i, in[i]);
            }
        };
        const double slope = k / base;
        const double atColumn = down * down * slope + 1.0;
        const auto quick = [=, first = left](int i, double v) {
            const double x = first + i;
            return static_cast<float>(v / (x * x * slope + atColumn));
        };
        IsQuick(count) ? apply(quick) : apply([model = *this](int i, double v) { return model.Exact(i, v); });
    }
};

} // namespace

void CImgFlat::Do(CStlImage* source, CPoint centre, double k, double base, CRect* rect, int showProgress)
{
    Do(*source, centre, k, base, rect, WindowRun(*this, showProgress));
}

void CImgFlat::Do(const CStlImage& source, CPoint centre, double k, double base, const CRect* rect, const Run& run)
{
    const CRect area = WorkingArea(*this, rect);
    const int x = static_cast<int>(area.left);
    const int count = source.GetPixelCount() > 0 ? area.Width() : 0;
    const int own = std::clamp(source.GetWidth() - x, 0, std::max(count, 0)); // what a narrower source has of it
    Stage stage(run, IDS_VIGNETTING, area.Height() * GetPlanes());
    WalkBlocks(RowBlocks(area, GetPlanes()), *this, {&source}, stage, 1, [&](const RowBlock& block) {
        for (int y = block.first; count > 0 && y < block.end; ++y) {
            const float* const in = source.GetImageAdr(x, y, PlaneOf(source, block.plane), 1);
            float* const out = GetImageAdr(x, y, block.plane);
            const RowModel model{k, base, static_cast<double>(x) - centre.x, static_cast<double>(y) - centre.y};
            std::fill_n(out + own, count - own, in[std::max(own, 1) - 1]);
            model.Apply(in, out, 0, own, count);
            model.Apply(out, out, own, count, count);
        }
    });
}
