#include "corvane/geometry/resize.h"

#include <algorithm>

#include "corvane/core/display_scale.h"
#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

constexpr int kAnchors = 9;

/// Where a picture lies along one side of a canvas: pixels `first` to before `end`, from source pixel `from` on.
struct Placement {
    int first = 0;
    int end = 0;
    int from = 0;

    /// `part` is 0 for the near end, 1 for the middle, 2 for the far end.
    Placement(int canvas, int picture, int part)
    {
        const int offset = (canvas - picture) / 2 * (part == 1) + (canvas - picture) * (part == 2);
        first = std::max(offset, 0);
        from = std::max(-offset, 0);
        end = std::min(canvas, picture - from + first);
    }
};

/// Fills what the picture leaves free of a row of the canvas.
void FillAround(const Placement& columns, bool isPictureRow, int width, float value, float* row)
{
    std::fill(row, row + (isPictureRow ? columns.first : width), value);
    std::fill(row + (isPictureRow ? columns.end : width), row + width, value);
}

} // namespace

int CImgResize::Do(int newWidth, int newHeight, int anchor, float* background, CStlImage* source, int showProgress)
{
    return Do(newWidth, newHeight, anchor, background, *source, WindowRun(*this, showProgress));
}

int CImgResize::Do(int newWidth, int newHeight, int anchor, const float* background, const CStlImage& source,
                   const Run& run)
{
    InitStdPt();
    if (MakeCanvas(*this, source, newWidth, newHeight, run) == 0) {
        return 0;
    }
    const int place = anchor >= 0 && anchor < kAnchors ? anchor : 0;
    const Placement columns(newWidth, source.GetWidth(), place % 3);
    const Placement rows(newHeight, source.GetHeight(), place / 3);
    const DisplayScale scale(*this, 0); // for every plane: the background is one colour of the screen
    const SourceRows from(source);
    Stage stage(run, IDS_CANVAS_SIZE, (newHeight + rows.end - rows.first) * GetPlanes());
    WalkBlocks(RowBlocks({0, 0, newWidth, newHeight}, GetPlanes()), *this, {&source}, stage, 1, [&](RowBlock block) {
        const double shown = background == nullptr ? 0.0 : background[block.plane];
        for (int y = block.first; y < block.end; ++y) {
            FillAround(columns, y >= rows.first && y < rows.end, newWidth, static_cast<float>(scale.ToRaw(shown)),
                       GetImageAdr(0, y, block.plane));
        }
    });
    const RowBlocks picture({columns.first, rows.first, columns.end, rows.end}, GetPlanes());
    WalkBlocks(picture, *this, {&source}, stage, 1, [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            from.Copy(columns.from, y - rows.first + rows.from, block.plane, columns.end - columns.first,
                      GetImageAdr(columns.first, y, block.plane));
        }
    });
    TranslatePhysicalCoords(columns.from, rows.from);
    return 1;
}
