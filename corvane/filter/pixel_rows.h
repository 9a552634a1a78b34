#pragma once

#include <algorithm>

#include "corvane/core/display_scale.h"
#include "corvane/filter/filter_rows.h"

namespace corvane::filter {

/// The planes of a colour image.
inline constexpr int kColours = 3;

/// The rows about row y in each plane of the source. A plane that it lacks is its last one again.
class PlaneBands {
public:
    PlaneBands(const CStlImage& source, int y, int radius)
        : bands_{{source, y, PlaneOf(source, 0), radius},
                 {source, y, PlaneOf(source, 1), radius},
                 {source, y, PlaneOf(source, 2), radius}}
    {}

    const Band& operator[](int plane) const { return bands_[std::min(plane, kColours - 1)]; }

private:
    Band bands_[kColours];
};

/// Walks a filter that takes the planes of a pixel together: kernel(bands, y, left, right) for each row, with the bands
/// of the source. A row counts `steps` steps of progress. Each block of rows has a copy of the kernel, which may so
/// keep buffers.
template <class Kernel>
void FilterPixels(CStlImage& target, const CStlImage& source, const CRect* rect, const Run& run, int textId, int radius,
                  int steps, Kernel kernel)
{
    const CRect area = WorkingArea(target, rect);
    const SharedColumns columns(source, area);
    Stage stage(run, textId, static_cast<int>(area.bottom - area.top) * steps);
    WalkBlocks(RowBlocks(area), target, {&source}, stage, steps, [&](const RowBlock& block) {
        Kernel ownKernel = kernel;
        for (int y = block.first; columns.Any() && y < block.end; ++y) {
            ownKernel(PlaneBands(source, y, radius), y, columns.Left(), columns.Right());
        }
    });
}

/// Brightness of pixels in display units: of a colour image 0.299 R + 0.587 G + 0.114 B.
class Brightness {
public:
    explicit Brightness(const CStlImage& image)
        : scale_{{image, 0}, {image, 1}, {image, 2}}, isColour_(image.GetDimension() >= kColours)
    {}

    /// Writes that of the row dy below the centre to out[x], for the columns from `left` to before `right`. Each plane
    /// goes through its 256f value, which is a float.
    void Row(const PlaneBands& bands, int dy, int left, int right, double* __restrict out) const
    {
        const float* const r = bands[0].Row(dy);
        const float* const g = bands[1].Row(dy);
        const float* const b = bands[2].Row(dy);
        for (int x = left; x < right; ++x) {
            const double red = Shown(r[x], 0);
            out[x] = isColour_ ? BrightnessOf(red, Shown(g[x], 1), Shown(b[x], 2)) : red;
        }
    }

private:
    float Shown(double v, int plane) const { return static_cast<float>(scale_[plane].To256(v)); }

    DisplayScale scale_[kColours];
    bool isColour_;
};

} // namespace corvane::filter
