#include "stars/sky_blocks.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <numeric>

#include "corvane/core/defined.h"
#include "stars/field_blocks.h"
#include "stars/sort_samples.h"

namespace corvane::stars {

namespace {

constexpr int kBlockSide = 16; // pixels: finer than nebulae, and with samples enough to tell stars from them

/// What of a length whole blocks take: their middles are where a grid of cells has them.
int InBlocks(int length)
{
    return std::max(length / kBlockSide * kBlockSide, std::min(length, kBlockSide));
}

/// The value of a block; NaN when it is not known.
float ValueOf(const CStlImage& image, int plane, const CRect& area, std::vector<float>& samples)
{
    const DefinedTest isDefined(image);
    samples.clear();
    for (int y = static_cast<int>(area.top); y < area.bottom; ++y) {
        const float* const row = image.GetImageAdr(0, y, plane, 1);
        std::copy_if(row + area.left, row + area.right, std::back_inserter(samples), isDefined);
    }
    const int places = area.Width() * area.Height();
    return samples.empty() || 8 * static_cast<int>(samples.size()) < 7 * places
               ? std::numeric_limits<float>::quiet_NaN()
               : static_cast<float>(MiddleMean(samples));
}

} // namespace

double MiddleMean(std::vector<float>& values)
{
    if (values.empty()) {
        return 0.0;
    }
    SortSamples(values);
    const auto quarter = static_cast<std::ptrdiff_t>(values.size() / 4);
    const double sum = std::accumulate(values.begin() + quarter, values.end() - quarter, 0.0);
    return sum / static_cast<double>(values.size() - 2 * static_cast<std::size_t>(quarter));
}

CellGrid UnknownSkyBlocks(int width, int height)
{
    return {InBlocks(width), InBlocks(height), kBlockSide};
}

CellGrid MeasureSkyBlocks(const CStlImage& image, int plane, const Run& run)
{
    CellGrid blocks(UnknownSkyBlocks(image.GetWidth(), image.GetHeight()));
    const auto measureRow = [&](int row) {
        std::vector<float> samples;
        for (int column = 0; column < blocks.Columns(); ++column) {
            blocks.Value(column, row) = ValueOf(image, plane, blocks.Area(column, row), samples);
        }
    };
    const int threads = ReadersOf(image, static_cast<long long>(image.GetWidth()) * image.GetHeight(), run);
    platform::ForBlocks(blocks.Rows(), threads, measureRow, [](int) {});
    return blocks;
}

} // namespace corvane::stars
