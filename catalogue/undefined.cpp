#include "catalogue/undefined.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "catalogue/own_samples.h"
#include "corvane/core/blank.h"
#include "corvane/core/error.h"
#include "corvane/core/fold.h"

namespace corvane::catalogue {
namespace {

void MarkBlanks(CStlImage& image)
{
    const BlankTest isBlank(image);
    const int width = image.GetWidth();
    OwnSamples(image);
    WriteRows(image, image.GetPlanes(), [&](float* row, int) {
        for (int x = 0; x < width; ++x) {
            row[x] = isBlank(row[x]) ? std::numeric_limits<float>::quiet_NaN() : row[x];
        }
    });
    image.SetBlankUsed(0);
}

/// How many samples are numbers.
long long CountDefined(const CStlImage& image)
{
    const auto inBlock = [&](const RowBlock& block) {
        long long count = 0;
        for (int y = block.first; y < block.end; ++y) {
            const float* const row = image.GetImageAdr(0, y, block.plane, 1);
            count += std::count_if(row, row + image.GetWidth(), [](float v) { return !std::isnan(v); });
        }
        return count;
    };
    long long defined = 0;
    FoldBlocks(RowBlocks(WorkingArea(image, nullptr), image.GetPlanes()), ThreadsOn(image, {}), inBlock,
               [&](long long part) { defined += part; });
    return defined;
}

} // namespace

void MarkUndefined(io::Frame& frame)
{
    if (frame.image.IsBlankUsed() != 0) {
        MarkBlanks(frame.image);
    }
    if (CountDefined(frame.image) == 0) {
        throw FileError(frame.image.GetOrgFileName(), "has no sample that is defined");
    }
}

} // namespace corvane::catalogue
