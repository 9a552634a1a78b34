#include "corvane/geometry/expansion.h"

#include <algorithm>
#include <memory>

#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

void Repeat(const float* samples, int count, int times, float* out)
{
    for (int i = 0; i < count; ++i) {
        out = std::fill_n(out, times, samples[i]);
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
    auto samples = OrNothing([&] { return std::make_unique<float[]>(static_cast<std::size_t>(std::max(width, 1))); });
    if (samples == nullptr || MakeCanvas(*this, source, static_cast<long long>(width) * fx, newHeight, run) == 0) {
        return 0;
    }
    const SourceRows from(source);
    FillRows(*this, run, IDS_EXPANSION, [&](int plane, int y, float* row) {
        if (y % fy == 0) {
            from.Copy(0, y / fy, plane, width, samples.get());
            Repeat(samples.get(), width, fx, row);
        } else {
            std::copy_n(GetImageAdr(0, y - 1, plane, 1), GetWidth(), row);
        }
    });
    // Reference pixels are counted from 1 and lie in the middle of a block.
    ScalePhysicalCoords(fx, fy);
    TranslatePhysicalCoords((1.0 - fx) * 0.5, (1.0 - fy) * 0.5);
    return 1;
}
