#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "corvane/core/memory_budget.h"
#include "corvane/core/stl_image.h"
#include "corvane/restore/restore_progress.h"

namespace corvane {

/// What an iterative engine needs beside the region that it works on.
struct RestorationNeeds {
    int margin = 64; ///< by which a grid is at most wider or higher than a region [pixels]
    int arrays = 13; ///< floats for each sample of the grid

    /// With a function of a size, and more arrays than usual.
    static RestorationNeeds For(int psfWidth, int psfHeight, int moreArrays = 0)
    {
        const RestorationNeeds usual;
        return {std::max({usual.margin, psfWidth, psfHeight}), usual.arrays + moreArrays};
    }
};

/// Bytes that the iterative engines take at most for a region of an image: the copies of its planes, and the arrays of
/// the grid that one plane is worked on in.
CORVANE_VISIBLE double RestorationBytes(int width, int height, int planes, const RestorationNeeds& needs = {});

/// Where a restoration works: the whole image for no rectangle or one of the image's size, else the rectangle as it is
/// given, which may lie beyond the image.
struct Area {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    bool isWhole = true;

    /// A rectangle that is empty or turned over has no width or height. Throws CMemoryException when a side is too long
    /// for a transform.
    Area(const CStlImage& image, const CRect* rect);

    bool IsEmpty() const { return width == 0 || height == 0; }
};

/// The planes of an area, in memory until they are written back. Meanwhile all that the iterative engines take is
/// reserved from the memory budget.
class Region {
public:
    /// Copies the samples; beyond the image, those of its edge. An area without samples, or an image without any, has
    /// no planes. Throws CMemoryException, also when restoring them would take more than the memory budget.
    Region(const CStlImage& image, const CRect* rect, const RestorationNeeds& needs = {});

    int Width() const { return area_.width; }
    int Height() const { return area_.height; }
    int Planes() const { return static_cast<int>(planes_.size()); }
    float* Plane(int plane) { return planes_[static_cast<std::size_t>(plane)].data(); }
    /// Writes the samples back, as far as they lie in the image.
    void Write(CStlImage& image) const;

private:
    void Read(const CStlImage& image, int plane, std::vector<float>& samples) const;

    Area area_;
    std::optional<Reservation> reservation_;
    std::vector<std::vector<float>> planes_;
};

/// Restores each plane of a region by restore(samples, number), where planes count from 1 on and the only one is 0, and
/// writes them into the image when none of them has stopped. Returns kDone, or how the others ended.
template <class Restore>
Restored RestorePlanes(Region& region, CStlImage& image, Restore restore)
{
    Restored result = Restored::kDone;
    for (int p = 0; p < region.Planes(); ++p) {
        const Restored end = restore(region.Plane(p), region.Planes() == 1 ? 0 : p + 1);
        if (HasStopped(end)) {
            return end;
        }
        result = end == Restored::kDone ? result : end;
    }
    region.Write(image);
    return result;
}

} // namespace corvane
