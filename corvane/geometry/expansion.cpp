#include "corvane/geometry/expansion.h"

#include <algorithm>
#include <vector>

#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

void Repeat(const std::vector<float>& samples, int times, float* out)
{
    for (const float sample : samples) {
        out = std::fill_n(out, times, sample);
    }
}

} // namespace

int CImgExpansion::Do(int fx, int fy, CStlImage* source, int showProgress)
{
    InitStdPt();
    const int width = GetWidth();
    const long long newHeight = static_cast<long long>(GetHeight()) * fy;
    if (MakeCanvas(*this, *source, static_cast<long long>(width) * fx, newHeight, showProgress) == 0) {
        return 0;
    }
    const SourceRows from(*source);
    std::vector<float> samples(static_cast<std::size_t>(width));
    FillRows(*this, showProgress, IDS_EXPANSION, [&](int plane, int y, float* row) {
        if (y % fy == 0) {
            from.Copy(0, y / fy, plane, width, samples.data());
            Repeat(samples, fx, row);
        } else {
            std::copy_n(GetImageAdr(0, y - 1, plane, 1), GetWidth(), row);
        }
    });
    // Reference pixels are counted from 1 and lie in the middle of a block.
    ScalePhysicalCoords(fx, fy);
    TranslatePhysicalCoords((1.0 - fx) * 0.5, (1.0 - fy) * 0.5);
    return 1;
}
