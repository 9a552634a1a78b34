#include "corvane/geometry/flip.h"

#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

enum Direction { kVertical = 0, kHorizontal = 1 };

} // namespace

void CImgFlip::Do(int direction, CStlImage* source, int showProgress)
{
    Do(direction, *source, WindowRun(*this, showProgress));
}

void CImgFlip::Do(int direction, const CStlImage& source, const Run& run)
{
    const SourceRows rows(source);
    const int width = GetWidth();
    if (direction == kVertical) {
        FillRows(*this, source, run, IDS_FLIP_VERTICAL,
                 [&](int plane, int y, float* row) { rows.Copy(0, GetHeight() - y - 1, plane, width, row); });
        FlipVertPhysicalCoords();
    } else if (direction == kHorizontal) {
        FillRows(*this, source, run, IDS_FLIP_HORIZONTAL,
                 [&](int plane, int y, float* row) { rows.CopyMirrored(width - 1, y, plane, width, row); });
        FlipHorzPhysicalCoords();
    } else {
        const Stage nothing(run, IDS_FLIP_HORIZONTAL, GetHeight() * GetPlanes());
    }
}
