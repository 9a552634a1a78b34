#include "corvane/geometry/soft_binning.h"

#include <algorithm>
#include <cmath>

#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// How many blocks of `block` samples a side holds; 0 for a block that is none.
long long Blocks(int side, int block, bool keepPartial)
{
    if (block < 1) {
        return 0;
    }
    return (static_cast<long long>(side) + (keepPartial ? block - 1 : 0)) / block;
}

/// Adds `block` neighbours of the row to each of `count` sums. A block of a constant size becomes vector code.
template <class Block>
void AddBlocks(const float* row, Block block, int count, float* sums)
{
    for (int i = 0; i < count; ++i) {
        const float* const first = row + static_cast<std::ptrdiff_t>(i) * block;
        float sum = sums[i];
        for (int k = 0; k < block; ++k) {
            sum += first[k];
        }
        sums[i] = sum;
    }
}

void AddRow(const float* row, int block, int count, float* sums)
{
    switch (block) {
    case 2:
        return AddBlocks(row, std::integral_constant<int, 2>(), count, sums);
    case 3:
        return AddBlocks(row, std::integral_constant<int, 3>(), count, sums);
    case 4:
        return AddBlocks(row, std::integral_constant<int, 4>(), count, sums);
    default:
        return AddBlocks(row, block, count, sums);
    }
}

/// Sums of 2 x 2 samples, most often asked for, in the same order and in one go.
void AddSquares(const float* upper, const float* lower, int count, float* __restrict sums)
{
    for (int i = 0; i < count; ++i) {
        const int x = 2 * i;
        sums[i] = (((0.0F + upper[x]) + upper[x + 1]) + lower[x]) + lower[x + 1];
    }
}

/// Adds what is left of the row behind its whole blocks to one sum.
void AddRest(const float* row, int first, int end, float& sum)
{
    for (int x = first; x < end; ++x) {
        sum += row[x];
    }
}

} // namespace

int CImgSoftBinning::Do(int bx, int by, int keepPartial, int scaleLevels, CStlImage* source, int showProgress)
{
    return Do(bx, by, keepPartial, scaleLevels, *source, WindowRun(*this, showProgress));
}

int CImgSoftBinning::Do(int bx, int by, int keepPartial, int scaleLevels, const CStlImage& source, const Run& run)
{
    InitStdPt();
    const long long columns = Blocks(GetWidth(), bx, keepPartial != 0);
    const long long rows = Blocks(GetHeight(), by, keepPartial != 0);
    if (MakeCanvas(*this, source, columns, rows, run) == 0) {
        return 0;
    }
    const SourceRows from(source);
    const int whole = std::min(GetWidth(), source.GetWidth() / bx);
    FillRows(*this, source, run, IDS_SOFT_BINNING, [&](int plane, int y, float* sums) {
        const long long first = static_cast<long long>(y) * by;
        const long long end = std::min<long long>(first + by, source.GetHeight());
        if (bx == 2 && end - first == 2 && whole == GetWidth()) {
            const int upper = static_cast<int>(first);
            AddSquares(from.Row(upper, plane), from.Row(upper + 1, plane), whole, sums);
            return;
        }
        std::fill_n(sums, GetWidth(), 0.0F);
        for (long long row = first; row < end; ++row) {
            const float* const samples = from.Row(static_cast<int>(row), plane);
            AddRow(samples, bx, whole, sums);
            if (whole < GetWidth()) {
                AddRest(samples, whole * bx, source.GetWidth(), sums[whole]);
            }
        }
    });
    for (int plane = 0; scaleLevels != 0 && plane < GetPlanes(); ++plane) {
        const double factor = static_cast<double>(bx) * by;
        SetLevel(plane, factor * GetLevelMin(plane), factor * GetLevelMax(plane));
    }
    return 1;
}
