#include "catalogue/onto_grid.h"

#include "corvane/core/aligned_row.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::catalogue {
namespace {

/// Rows of one plane, with what a row is read into.
class GridRows {
public:
    GridRows(const CStlImage& image, const Mapping& mapping, int width)
        : image_(image), mapping_(mapping), values_(static_cast<std::size_t>(width)), inside_(values_.size())
    {}

    void Read(int plane, int y, double outside, float* row)
    {
        const int width = static_cast<int>(values_.size());
        SampleAlignedStretch(image_, plane, mapping_, 0, y, width, outside, values_.data(), inside_.data(),
                             Interpolation::kLanczos3);
        LeaveOutWrapped(mapping_, image_.GetWidth(), 0, y, width, inside_.data());
        for (std::size_t x = 0; x < values_.size(); ++x) {
            row[x] = static_cast<float>(inside_[x] != 0 ? values_[x] : outside);
        }
    }

private:
    const CStlImage& image_;
    const Mapping& mapping_;
    std::vector<double> values_;
    std::vector<int> inside_;
};

} // namespace

CStlImage OntoGrid(const CStlImage& image, const Mapping& mapping, int width, int height,
                   const std::vector<double>& outside, const Run& run)
{
    CStlImage placed;
    if (placed.CreateCanvas(image, width, height) == 0) {
        AfxThrowMemoryException();
    }
    Stage stage(run, "Bringing frames onto one grid...", height * placed.GetPlanes());
    const RowBlocks blocks(WorkingArea(placed, nullptr), placed.GetPlanes());
    WalkBlocks(blocks, placed, {&image}, stage, 1, [&](const RowBlock& block) {
        GridRows rows(image, mapping, width);
        for (int y = block.first; y < block.end; ++y) {
            rows.Read(block.plane, y, outside[static_cast<std::size_t>(block.plane)],
                      placed.GetImageAdr(0, y, block.plane));
        }
    });
    placed.SetDefaultCenter();
    return placed;
}

} // namespace corvane::catalogue
