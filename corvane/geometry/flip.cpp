#include "corvane/geometry/flip.h"

#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

enum Direction { kVertical = 0, kHorizontal = 1 };

} // namespace

void CImgFlip::Do(int direction, CStlImage* source, int showProgress)
{
    const SourceRows rows(*source);
    const int width = GetWidth();
    if (direction == kVertical) {
        FillRows(*this, showProgress, IDS_FLIP_VERTICAL,
                 [&](int plane, int y, float* row) { rows.Copy(0, GetHeight() - y - 1, plane, width, row); });
        FlipVertPhysicalCoords();
    } else if (direction == kHorizontal) {
        FillRows(*this, showProgress, IDS_FLIP_HORIZONTAL,
                 [&](int plane, int y, float* row) { rows.CopyMirrored(width - 1, y, plane, width, row); });
        FlipHorzPhysicalCoords();
    } else {
        ShowProgressInit(showProgress, IDS_FLIP_HORIZONTAL, GetHeight() * GetPlanes());
        ShowProgressEnd(nullptr);
    }
}
