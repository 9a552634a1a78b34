#include "corvane/core/gaps.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/fold.h"

namespace corvane {
namespace {

constexpr float kGap = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

bool IsUndefined(float v, const BlankTest& isBlank)
{
    return !((v > -kInfinity) & (v < kInfinity)) | isBlank(v);
}

long long CountUndefined(const CStlImage& image, const BlankTest& isBlank)
{
    long long count = 0;
    const auto countIn = [&](const RowBlock& block) {
        int undefined = 0;
        for (int y = block.first; y < block.end; ++y) {
            const float* const row = image.GetImageAdr(0, y, block.plane, 1);
            for (int x = 0; x < image.GetWidth(); ++x) {
                undefined += IsUndefined(row[x], isBlank) ? 1 : 0;
            }
        }
        return undefined;
    };
    FoldBlocks(RowBlocks(WorkingArea(image, nullptr), image.GetPlanes()), Threads(), countIn,
               [&](int part) { count += part; });
    return count;
}

} // namespace

bool HoldsDefined(const float* row, std::ptrdiff_t count, const BlankTest& isBlank)
{
    return std::any_of(row, row + count, [&](float v) { return !IsUndefined(v, isBlank); });
}

long long MarkGaps(CStlImage& image)
{
    const BlankTest isBlank(image);
    const long long count = CountUndefined(image, isBlank);
    if (count == 0) {
        return 0;
    }
    WriteRows(image, image.GetPlanes(), [&](float* row, int) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            row[x] = IsUndefined(row[x], isBlank) ? kGap : row[x];
        }
    });
    image.SetBlankUsed(0);
    return count;
}

double MeanBesideGaps(const CStlImage& image, int plane)
{
    double sum = 0.0;
    long long count = 0;
    ForEachRow(image, plane, [&](const float* row) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            const bool counts = !std::isnan(row[x]);
            sum += counts ? row[x] : 0.0;
            count += counts ? 1 : 0;
        }
    });
    return sum / static_cast<double>(count);
}

void CopyGaps(const float* from, float* to, int count)
{
    for (int x = 0; x < count; ++x) {
        to[x] = std::isnan(from[x]) ? kGap : to[x];
    }
}

} // namespace corvane
