#include "corvane/geometry/scroll.h"

#include <algorithm>

#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// The same shift in 0..size - 1.
int Wrapped(int shift, int size)
{
    const int length = std::max(size, 1);
    const int rest = shift % length;
    return rest < 0 ? rest + length : rest;
}

/// How far the larger part of a side moves.
int Nearest(int wrapped, int size)
{
    return wrapped > size / 2 ? wrapped - size : wrapped;
}

} // namespace

void CImgScroll::Do(int dx, int dy, CStlImage* source, int showProgress)
{
    Do(dx, dy, *source, WindowRun(*this, showProgress));
}

void CImgScroll::Do(int dx, int dy, const CStlImage& source, const Run& run)
{
    InitStdPt();
    const int width = GetWidth();
    const int height = GetHeight();
    const int right = Wrapped(dx, width);
    const int down = Wrapped(dy, height);
    const SourceRows from(source);
    FillRows(*this, source, run, IDS_SCROLL, [&](int plane, int y, float* row) {
        const int sourceY = y < down ? y - down + height : y - down;
        from.Copy(width - right, sourceY, plane, right, row);
        from.Copy(0, sourceY, plane, width - right, row + right);
    });
    TranslatePhysicalCoords(Nearest(right, width), Nearest(down, height));
}
