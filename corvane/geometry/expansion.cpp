#include "corvane/geometry/expansion.h"

#include <algorithm>
#include <cstddef>

#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Repeats each of the first `count` samples of a row, from the last one on, so that none is lost.
void Repeat(int count, int times, float* row)
{
    for (int i = count - 1; i >= 0; --i) {
        std::fill_n(row + static_cast<std::ptrdiff_t>(i) * times, times, static_cast<float>(row[i]));
    }
}

} // namespace

int CImgExpansion::Do(int fx, int fy, CStlImage* source, int showProgress)
{
    return Do(fx, fy, *source, WindowRun(*this, showProgress));
}

int CImgExpansion::Do(int fx, int fy, const CStlImage& source, const Run& run)
{
    InitStdPt();
    const int width = GetWidth();
    const long long newHeight = static_cast<long long>(GetHeight()) * fy;
    if (MakeCanvas(*this, source, static_cast<long long>(width) * fx, newHeight, run) == 0) {
        return 0;
    }
    const SourceRows from(source);
    FillBands(*this, source, run, IDS_EXPANSION, fy, [&](int plane, int y, int rows) {
        float* const first = GetImageAdr(0, y, plane);
        from.Copy(0, y / fy, plane, width, first);
        Repeat(width, fx, first);
        for (int i = 1; i < rows; ++i) {
            std::copy_n(first, GetWidth(), GetImageAdr(0, y + i, plane));
        }
    });
    // Reference pixels are counted from 1 and lie in the middle of a block.
    ScalePhysicalCoords(fx, fy);
    TranslatePhysicalCoords((1.0 - fx) * 0.5, (1.0 - fy) * 0.5);
    return 1;
}
