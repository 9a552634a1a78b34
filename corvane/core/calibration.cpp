// Calibration in place, and the change between one plane and three.

#include <algorithm>
#include <cstring>
#include <vector>

#include "corvane/core/calibration_rows.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// A row of a calibration frame, as wide as the image that it calibrates: the frame's own row, or where that is
/// narrower a copy extended by its last sample. A monochrome frame serves every plane.
class FrameRow {
public:
    FrameRow(const CStlImage& frame, int width) : frame_(frame), width_(width) {}

    const float* Get(int y, int plane)
    {
        const float* const row =
            frame_.GetImageAdr(0, y, frame_.IsColor() ? std::min(plane, frame_.GetPlanes() - 1) : 0, 1);
        const int own = frame_.GetPixelCount() > 0 ? frame_.GetWidth() : 1;
        if (own >= width_) {
            return row;
        }
        extended_.assign(row, row + own);
        extended_.resize(static_cast<std::size_t>(width_), row[own - 1]);
        return extended_.data();
    }

private:
    const CStlImage& frame_;
    int width_;
    std::vector<float> extended_;
};

/// Copies samples as they are, or mapped from levels to levels. They may overlap.
void CopyRow(const float* in, const DisplayScale& from, float* out, const DisplayScale& to, int count, bool mapsLevels)
{
    if (!mapsLevels) {
        std::memmove(out, in, static_cast<std::size_t>(count) * sizeof(float));
        return;
    }
    for (int x = 0; x < count; ++x) {
        out[x] = static_cast<float>((in[x] - from.min) / from.range * 255.0 * to.range * kPer255 + to.min);
    }
}

/// Calls calibrate(samples, frameRow) for every row of an image, one step of the stage each.
template <class Calibrate>
void CalibrateRows(CStlImage& image, const CStlImage& frame, Stage& stage, Calibrate calibrate)
{
    const RowBlocks blocks(WorkingArea(image, nullptr), image.GetPlanes());
    WalkBlocks(blocks, image, {&frame}, stage, 1, [&](const RowBlock& block) {
        FrameRow frameRow(frame, image.GetWidth());
        for (int y = block.first; y < block.end; ++y) {
            calibrate(image.GetImageAdr(0, y, block.plane), frameRow.Get(y, block.plane));
        }
    });
}

} // namespace

void CStlImage::FlatClbrtn(CStlImage* flat, int showProgress)
{
    FlatClbrtn(*flat, WindowRun(*this, showProgress));
}

void CStlImage::FlatClbrtn(const CStlImage& flat, const Run& run)
{
    const BlankRule rule(flat, *this);
    const double mean = flat.GetAvrGrayRaw(0);
    Stage stage(run, IDS_FLAT, GetPlanes() * GetHeight());
    CalibrateRows(*this, flat, stage, [&](float* samples, const float* flatRow) {
        DivideFlatRow(samples, flatRow, GetWidth(), mean, rule);
    });
}

void CStlImage::DarkClbrtn(CStlImage* dark, int showProgress)
{
    DarkClbrtn(*dark, WindowRun(*this, showProgress));
}

void CStlImage::DarkClbrtn(const CStlImage& dark, const Run& run)
{
    const BlankRule rule(dark, *this);
    Stage stage(run, IDS_DARK, GetPlanes() * GetHeight());
    CalibrateRows(*this, dark, stage,
                  [&](float* samples, const float* darkRow) { SubtractDarkRow(samples, darkRow, GetWidth(), rule); });
}

int CStlImage::ToGray()
{
    if (!IsColor()) {
        return 1;
    }
    const double min = GetLevelMin(0);
    const double max = GetLevelMax(0);
    if (ChangePlanes(1, progressWindow_, FindString(IDS_CHANGE_PLANES)) == 0) {
        return 0;
    }
    SetLevel(0, min, max);
    return 1;
}

int CStlImage::ToColor()
{
    if (IsColor()) {
        return 1;
    }
    const double min = GetLevelMin(0);
    const double max = GetLevelMax(0);
    if (ChangePlanes(3, progressWindow_, FindString(IDS_CHANGE_PLANES)) == 0) {
        return 0;
    }
    for (int plane = 0; plane < 3; ++plane) {
        SetLevel(plane, min, max);
    }
    return 1;
}

int CStlImage::ToGray(CStlImage* source, int showProgress)
{
    return OrNothing([&] { return ToGray(*source, WindowRun(*this, showProgress)); });
}

int CStlImage::ToGray(const CStlImage& source, const Run& run)
{
    if (!IsColor()) {
        return 1;
    }
    // The samples still needed are the source's: it must be another image, with all three planes.
    if (&source == this || source.GetPlanes() < 3 || ToGray() == 0) {
        return 0;
    }
    const DisplayScale red(source, 0);
    const DisplayScale green(source, 1);
    const DisplayScale blue(source, 2);
    const DisplayScale grey(*this, 0);
    const int count = source.GetPixelCount() > 0 ? std::min(GetWidth(), source.GetWidth()) : 0;
    WalkLines(*this, {&source}, WorkingArea(*this, nullptr), run, IDS_TO_GRAY, [&](int y) {
        const float* const r = source.GetImageAdr(0, y, 0, 1);
        const float* const g = source.GetImageAdr(0, y, 1, 1);
        const float* const b = source.GetImageAdr(0, y, 2, 1);
        float* const out = GetImageAdr(0, y, 0);
        for (int x = 0; x < count; ++x) {
            const auto dr = static_cast<float>(red.To256(r[x]));
            const auto dg = static_cast<float>(green.To256(g[x]));
            const auto db = static_cast<float>(blue.To256(b[x]));
            out[x] = static_cast<float>((0.587 * dg + 0.299 * dr + 0.114 * db) * grey.range * kPer255 + grey.min);
        }
    });
    return 1;
}

int CStlImage::ToColor(CStlImage* source, int showProgress)
{
    return OrNothing([&] { return ToColor(*source, WindowRun(*this, showProgress)); });
}

int CStlImage::ToColor(const CStlImage& source, const Run& run)
{
    if (IsColor()) {
        return 1;
    }
    if (ToColor() == 0) {
        return 0;
    }
    const int count = source.GetPixelCount() > 0 ? std::min(GetWidth(), source.GetWidth()) : 0;
    WalkLines(*this, {&source}, WorkingArea(*this, nullptr), run, IDS_TO_COLOR, [&](int y) {
        for (int plane = 0; plane < 3; ++plane) {
            std::copy_n(source.GetImageAdr(0, y, source.GetPlanes() >= 3 ? plane : 0, 1), count,
                        GetImageAdr(0, y, plane));
        }
    });
    return 1;
}

int CStlImage::PixelBlt(int dx, int dy, int w, int h, CStlImage* source, int sx, int sy, int mapLevels)
{
    return PixelBlt(dx, dy, w, h, *source, sx, sy, mapLevels);
}

int CStlImage::PixelBlt(int dx, int dy, int w, int h, const CStlImage& source, int sx, int sy, int mapLevels)
{
    if (GetPlanes() != source.GetPlanes()) {
        return 0;
    }
    const auto clip = [](int v, int size) { return std::min(std::max(v, 0), size); };
    dx = clip(dx, GetWidth());
    dy = clip(dy, GetHeight());
    sx = clip(sx, source.GetWidth());
    sy = clip(sy, source.GetHeight());
    w = std::min(clip(w, GetWidth() - dx), source.GetWidth() - sx);
    h = std::min(clip(h, GetHeight() - dy), source.GetHeight() - sy);
    const RowBlocks blocks({0, 0, w, h}, w > 0 ? GetPlanes() : 0);
    const auto copyRows = [&](const RowBlock& block) {
        for (int i = block.first; i < block.end; ++i) {
            CopyRow(source.GetImageAdr(sx, sy + i, block.plane, 1), DisplayScale(source, block.plane),
                    GetImageAdr(dx, dy + i, block.plane), DisplayScale(*this, block.plane), w, mapLevels != 0);
        }
    };
    ForRowBlocks(blocks, ThreadsOn(*this, {&source}), copyRows);
    return 1;
}
