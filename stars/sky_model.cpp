#include "stars/sky_model.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "corvane/platform/workers.h"
#include "stars/robust.h"
#include "stars/sky_cells.h"
#include "stars/sky_mesh.h"
#include "stars/thin_plate.h"

namespace corvane::stars {

namespace {

constexpr int kCellsAcrossPolynomial = 32; // of a square frame
constexpr int kCellsAcrossSpline = 19;     // not quite 400
constexpr std::size_t kMostSites = 400;
constexpr int kMeshesOfLattice = 64; // across a square frame: three or so to a cell

/// The mesh, prolonged by two cells on each side along lines through the outer ones.
Lattice LatticeOf(const CellGrid& mesh)
{
    constexpr int kBeyond = 2;
    Lattice lattice(mesh.XOf(-kBeyond), mesh.YOf(-kBeyond), mesh.XOf(1) - mesh.XOf(0), mesh.YOf(1) - mesh.YOf(0),
                    mesh.Columns() + 2 * kBeyond, mesh.Rows() + 2 * kBeyond);
    const auto prolonged = [](int i, int count, auto at) {
        const int last = count - 1;
        return i < 0      ? at(0) - i * (at(0) - at(std::min(1, last)))
               : i > last ? at(last) + (i - last) * (at(last) - at(std::max(last - 1, 0)))
                          : at(i);
    };
    for (int row = 0; row < lattice.Rows(); ++row) {
        for (int column = 0; column < lattice.Columns(); ++column) {
            lattice.Value(column, row) = prolonged(column - kBeyond, mesh.Columns(), [&](int c) {
                return prolonged(row - kBeyond, mesh.Rows(),
                                 [&](int r) { return static_cast<double>(mesh.Value(c, r)); });
            });
        }
    }
    return lattice;
}

/// A thin plate near the cells of the sky, above their polynomial.
Lattice PlateOver(const SkyCells& sky, int width, int height)
{
    const double side = std::sqrt(1.0 * width * height);
    const auto isSky = [](const SkyCell& cell) { return cell.isSky; };
    const auto count = static_cast<std::size_t>(std::count_if(sky.cells.begin(), sky.cells.end(), isSky));
    std::vector<PlateSite> sites;
    std::size_t share = 0;
    for (const SkyCell& cell : sky.cells) {
        share += isSky(cell) ? std::min(count, kMostSites) : 0; // of too many, some are passed over evenly
        if (isSky(cell) && share >= count) {
            sites.push_back({cell.x / side, cell.y / side, cell.above});
            share -= count;
        }
    }
    const ThinPlate plate(std::move(sites));
    const double step = std::max(side / kMeshesOfLattice, 1.0);
    Lattice lattice(-step, -step, step, step, static_cast<int>(width / step) + 4, static_cast<int>(height / step) + 4);
    for (int row = 0; row < lattice.Rows(); ++row) {
        for (int column = 0; column < lattice.Columns(); ++column) {
            lattice.Value(column, row) = plate.At((column - 1) * step / side, (row - 1) * step / side);
        }
    }
    return lattice;
}

} // namespace

SkyModel::SkyModel(int width, int height, const SkyPolynomial& polynomial, std::optional<Lattice> rest)
    : width_(width), polynomial_(polynomial), rest_(std::move(rest))
{
    constexpr static int kMostPlaces = 256;
    const auto places = [](int size) { return std::min(size, kMostPlaces); };
    const auto place = [&](int i, int size) {
        return static_cast<int>(static_cast<long long>(i) * (size - 1) / std::max(places(size) - 1, 1));
    };
    std::vector<double> row(static_cast<std::size_t>(width));
    std::vector<double> values;
    for (int j = 0; j < places(height); ++j) {
        FillRow(place(j, height), row.data());
        for (int i = 0; i < places(width); ++i) {
            values.push_back(row[static_cast<std::size_t>(place(i, width))]);
        }
    }
    least_ = *std::min_element(values.begin(), values.end());
    median_ = MedianOf(values);
}

void SkyModel::FillRow(int y, double* values) const
{
    const SkyPolynomial::Row row = polynomial_.RowAt(y);
    for (int x = 0; x < width_; ++x) {
        values[x] = row.At(x);
    }
    if (rest_) {
        rest_->AddRow(y, width_, values);
    }
}

std::optional<SkyModel> FitSkyModel(const CStlImage& image, int plane, SkyForm form, std::optional<int> degree,
                                    const Run& run)
{
    const platform::KeptThreads threads(run.Threads());
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    if (form == SkyForm::kMesh) {
        const SkyMesh mesh = MeasureSkyMesh(image, plane, run);
        return mesh.IsEmpty() ? std::nullopt
                              : std::optional<SkyModel>(std::in_place, width, height, SkyPolynomial(width, height),
                                                        LatticeOf(mesh.level));
    }
    const bool isSpline = form == SkyForm::kSpline;
    const SkyCells sky = FitSkyCells(image, plane, degree, isSpline ? kCellsAcrossSpline : kCellsAcrossPolynomial, run);
    if (sky.degree < 0) {
        return std::nullopt;
    }
    return SkyModel(width, height, sky.polynomial,
                    isSpline ? std::optional(PlateOver(sky, width, height)) : std::nullopt);
}

} // namespace corvane::stars
