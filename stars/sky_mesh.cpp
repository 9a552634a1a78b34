#include "stars/sky_mesh.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "corvane/core/defined.h"
#include "stars/cell_sky.h"
#include "stars/field_blocks.h"
#include "stars/sort_samples.h"

namespace corvane::stars {

namespace {

constexpr int kCell = 64; // pixels: many stars wide, and finer than most nebulae

/// Some of the samples of an area, those that are defined, and how many there could be.
std::size_t Collect(const CStlImage& image, int plane, const CRect& area, std::vector<float>& samples)
{
    const DefinedTest isDefined(image);
    samples.clear();
    return VisitRowsOfCell(image, plane, area, [&](int, const float* row) {
        std::copy_if(row + area.left, row + area.right, std::back_inserter(samples), isDefined);
    });
}

/// Gives every cell a level and a noise; none when no cell has.
SkyMesh Filled(SkyMesh mesh)
{
    for (CellGrid* grid : {&mesh.level, &mesh.noise}) {
        grid->FillGaps();
        grid->RemoveOutliers();
    }
    return mesh;
}

} // namespace

SkyMesh MeasureSkyMesh(const CStlImage& image, int plane, const Run& run)
{
    const CellGrid unknown(std::max(1, image.GetWidth()), std::max(1, image.GetHeight()), kCell);
    SkyMesh noisy{unknown, unknown};
    SkyMesh quiet{unknown, unknown}; // cells of one value: a border, or a sky without noise
    if (image.GetWidth() < 1 || image.GetHeight() < 1) {
        return noisy;
    }
    const auto measureRow = [&](int row) {
        std::vector<float> samples;
        for (int column = 0; column < unknown.Columns(); ++column) {
            const std::size_t places = Collect(image, plane, unknown.Area(column, row), samples);
            if (AreEnough(samples.size(), places)) {
                SortSamples(samples);
                const CellSky sky = ClippedSky(samples, StepOf(samples));
                SkyMesh& mesh = sky.noise > 0.0 ? noisy : quiet;
                mesh.level.Value(column, row) = static_cast<float>(sky.level);
                mesh.noise.Value(column, row) = static_cast<float>(sky.noise > 0.0 ? sky.noise : kStepNoise * sky.step);
            }
        }
    };
    const int threads = ReadersOf(image, static_cast<long long>(image.GetWidth()) * image.GetHeight(), run);
    platform::ForBlocks(unknown.Rows(), threads, measureRow, [](int) {});
    const SkyMesh filled = Filled(noisy);
    return filled.IsEmpty() ? Filled(quiet) : filled;
}

} // namespace corvane::stars
