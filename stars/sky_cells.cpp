#include "stars/sky_cells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "corvane/core/defined.h"
#include "stars/cell_grid.h"
#include "stars/cell_sky.h"
#include "stars/field_blocks.h"
#include "stars/sky_candidate.h"
#include "stars/sky_halo.h"
#include "stars/sort_samples.h"

namespace corvane::stars {

namespace {

constexpr int kLeastCell = 8;     // pixels: fewer would not tell stars from sky
constexpr int kMeasurements = 4;  // at most; each leaves less than a hundredth of what a cell bends within itself
constexpr int kClimbRounds = 30;  // of leaving out cells
constexpr double kBetter = 2.5;   // by which a higher degree must be better to be chosen
constexpr int kHighestChoice = 4; // degrees

/// Measures a cell above a polynomial; it is unknown when too few of its samples are defined.
void Measure(const CStlImage& image, int plane, const CRect& area, const SkyPolynomial& polynomial,
             std::vector<float>& samples, SkyCell& cell)
{
    const DefinedTest isDefined(image);
    samples.clear();
    const std::size_t places = VisitRowsOfCell(image, plane, area, [&](int y, const float* row) {
        const SkyPolynomial::Row sky = polynomial.RowAt(y);
        for (int x = static_cast<int>(area.left); x < area.right; ++x) {
            if (isDefined(row[x])) {
                samples.push_back(static_cast<float>(row[x] - sky.At(x)));
            }
        }
    });
    if (AreEnough(samples.size(), places)) {
        SortSamples(samples);
        cell.step = cell.step < 0.0 ? StepOf(samples) : cell.step;
        const CellSky sky = ClippedSky(samples, cell.step);
        cell.above = sky.level - cell.halo;
        cell.noise = sky.noise / std::sqrt(static_cast<double>(samples.size()));
    }
}

/// Fits a polynomial to the sky, and finds out what is sky, in turns; false when the sky does not tell it.
bool Climb(SkyCandidate& candidate, int degree, const SkyAround& skyAround)
{
    bool hasChanged = true;
    for (int round = 0; round < kClimbRounds && hasChanged; ++round) {
        hasChanged = ChooseSky(candidate, skyAround);
        if (!FitToSky(candidate, degree)) {
            return false;
        }
    }
    return true;
}

/// Goes from a guess to a candidate; nothing when there is none of that degree.
std::optional<SkyCandidate> CandidateFrom(const SkyCells& sky, int degree, const CellTest& counts)
{
    SkyCandidate rough{sky, FitByRank(sky, degree, counts)};
    if (!Climb(rough, degree, kAnyAround)) {
        return std::nullopt;
    }
    SkyCandidate fine = rough;
    return Climb(fine, degree, kNearAround) ? fine : rough; // a sky that is no polynomial bears no more
}

/// Leaves out the faintest light about nebulae, too, as far as what is left of the sky bears it.
void LeaveOutFaintest(std::optional<SkyCandidate>& best)
{
    if (best) {
        SkyCandidate finest = *best;
        if (Climb(finest, finest.sky.degree, kWideAround)) {
            best = std::move(finest);
        }
    }
}

/// The best candidate of a degree, from guesses by the whole frame and by each half of it, which threads share.
std::optional<SkyCandidate> BestOfDegree(const SkyCells& sky, int degree, int threads)
{
    const double x = 0.5 * (sky.cells.front().x + sky.cells.back().x);
    const double y = 0.5 * (sky.cells.front().y + sky.cells.back().y);
    const std::array<CellTest, 5> parts{
        [](const SkyCell&) { return true; }, [=](const SkyCell& cell) { return cell.x <= x; },
        [=](const SkyCell& cell) { return cell.x >= x; }, [=](const SkyCell& cell) { return cell.y <= y; },
        [=](const SkyCell& cell) { return cell.y >= y; }};
    std::array<std::optional<SkyCandidate>, parts.size()> found;
    std::optional<SkyCandidate> best;
    platform::ForBlocks(
        static_cast<int>(parts.size()), threads,
        [&](std::size_t i) { found[i] = CandidateFrom(sky, degree, parts[i]); },
        [&](std::size_t i) { KeepBetter(best, std::move(found[i]), 1.0); });
    return best;
}

/// That of the degree that is asked for, or the highest below it that the sky tells.
std::optional<SkyCandidate> BestUpTo(const SkyCells& sky, int degree, int threads)
{
    std::optional<SkyCandidate> best;
    for (; degree >= 0 && !best; --degree) {
        best = BestOfDegree(sky, degree, threads);
    }
    return best;
}

/// That of the lowest degree that a higher one is not much better than.
std::optional<SkyCandidate> BestOfAll(const SkyCells& sky, int threads)
{
    std::optional<SkyCandidate> best = BestUpTo(sky, 1, threads);
    for (int degree = 2; degree <= kHighestChoice; ++degree) {
        KeepBetter(best, BestOfDegree(sky, degree, threads), kBetter);
    }
    return best;
}

/// A polynomial below a halo, where it is much better than that of the sky by itself.
std::optional<SkyCandidate> WithHalo(SkyCells sky, std::optional<int> degree)
{
    constexpr double kBetterWithHalo = 1.2;
    SkyCandidate alone{sky, sky.polynomial.None()};
    ChooseSky(alone, kAnyAround);
    for (SkyCell& cell : sky.cells) {
        cell.above += sky.polynomial.At(cell.x, cell.y);
    }
    sky.polynomial = sky.polynomial.None();
    return BestWithHalo(sky, degree.value_or(1), degree.value_or(kHighestChoice), kBetterWithHalo * alone.merit);
}

/// Makes cells of one value, borders for one, unknown where they are the fewer ones.
void ForgetQuiet(std::vector<SkyCell>& cells)
{
    const auto known = std::count_if(cells.begin(), cells.end(), IsKnown);
    const auto isQuiet = [](const SkyCell& cell) { return cell.step == 0.0; };
    if (2 * std::count_if(cells.begin(), cells.end(), isQuiet) < known) {
        for (SkyCell& cell : cells) {
            cell.above = isQuiet(cell) ? std::numeric_limits<double>::quiet_NaN() : cell.above;
        }
    }
}

/// Whether a polynomial is so small all over the sky that measuring the cells above it would change nothing.
bool IsSettled(const SkyCandidate& last)
{
    constexpr double kSmall = 0.01; // of the noise of a cell
    const std::vector<SkyCell>& cells = last.sky.cells;
    return std::all_of(cells.begin(), cells.end(), [&](const SkyCell& cell) {
        return !cell.isSky || std::fabs(last.polynomial.At(cell.x, cell.y)) < kSmall * cell.noise;
    });
}

/// Measures all cells above the polynomial.
void MeasureCells(const CStlImage& image, int plane, const CellGrid& grid, const Run& run, SkyCells& sky)
{
    const auto measureRow = [&](int row) {
        std::vector<float> samples;
        for (int column = 0; column < sky.columns; ++column) {
            Measure(image, plane, grid.Area(column, row), sky.polynomial, samples,
                    sky.cells[static_cast<std::size_t>(row) * sky.columns + column]);
        }
    };
    const int threads = ReadersOf(image, static_cast<long long>(image.GetWidth()) * image.GetHeight(), run);
    platform::ForBlocks(sky.rows, threads, measureRow, [](int) {});
    ForgetQuiet(sky.cells);
}

} // namespace

SkyCells FitSkyCells(const CStlImage& image, int plane, std::optional<int> degree, int across, const Run& run)
{
    const double side = std::sqrt(1.0 * image.GetWidth() * image.GetHeight());
    const CellGrid grid(image.GetWidth(), image.GetHeight(), std::max(kLeastCell, static_cast<int>(side / across)));
    SkyCells sky{SkyPolynomial(image.GetWidth(), image.GetHeight()), -1, grid.Columns(), grid.Rows()};
    for (int i = 0; i < sky.columns * sky.rows; ++i) {
        sky.cells.push_back({grid.XOf(i % sky.columns), grid.YOf(i / sky.columns)});
    }
    const auto measureAbove = [&](const SkyCandidate& candidate) {
        sky = candidate.sky;
        sky.polynomial = sky.polynomial + candidate.polynomial;
        MeasureCells(image, plane, grid, run, sky);
        run.ThrowIfCancelled();
    };
    MeasureCells(image, plane, grid, run, sky);
    const int threads = run.Threads();
    std::optional<SkyCandidate> best = degree ? BestUpTo(sky, *degree, threads) : BestOfAll(sky, threads);
    LeaveOutFaintest(best);
    for (int i = 1; best; ++i) {
        const bool isLast = i == kMeasurements || IsSettled(*best);
        measureAbove(*best);
        best = isLast ? std::nullopt : CandidateFrom(sky, sky.degree, [](const SkyCell& cell) { return cell.isSky; });
        LeaveOutFaintest(best);
    }
    best = sky.degree >= 0 ? WithHalo(sky, degree) : std::nullopt;
    if (best) {
        measureAbove(*best);
    }
    return sky;
}

} // namespace corvane::stars
