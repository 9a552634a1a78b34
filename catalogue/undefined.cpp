#include "catalogue/undefined.h"

#include <cmath>
#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/error.h"
#include "corvane/core/fold.h"

namespace corvane::catalogue {
namespace {

/// Returns how many samples are defined.
long long MarkRow(const BlankTest& isBlank, float* row, int count)
{
    long long defined = 0;
    for (int x = 0; x < count; ++x) {
        row[x] = isBlank(row[x]) ? std::numeric_limits<float>::quiet_NaN() : row[x];
        defined += std::isnan(row[x]) ? 0 : 1;
    }
    return defined;
}

} // namespace

void MarkUndefined(io::Frame& frame)
{
    CStlImage& image = frame.image;
    const BlankTest isBlank(image);
    long long defined = 0;
    const auto markBlock = [&](const RowBlock& block) {
        long long marked = 0;
        for (int y = block.first; y < block.end; ++y) {
            marked += MarkRow(isBlank, image.GetImageAdr(0, y, block.plane), image.GetWidth());
        }
        return marked;
    };
    FoldBlocks(RowBlocks(WorkingArea(image, nullptr), image.GetPlanes()), ThreadsOn(image, {}), markBlock,
               [&](long long part) { defined += part; });
    if (defined == 0) {
        throw FileError(image.GetOrgFileName(), "has no sample that is defined");
    }
    image.SetBlankUsed(0);
}

} // namespace corvane::catalogue
