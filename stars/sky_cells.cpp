#include "stars/sky_cells.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <utility>

#include "corvane/core/defined.h"
#include "stars/cell_grid.h"
#include "stars/cell_sky.h"
#include "stars/field_blocks.h"
#include "stars/robust.h"
#include "stars/sort_samples.h"

namespace corvane::stars {

namespace {

using Values = std::vector<SkyPolynomial::Value>;

constexpr int kLeastCell = 8;          // pixels: fewer would not tell stars from sky
constexpr int kMeasurements = 4;       // at most; each leaves less than a hundredth of what a cell bends within itself
constexpr int kClimbRounds = 30;       // of leaving out cells
constexpr int kGuessRounds = 10;       // of a fit by ranks
constexpr double kGuessRank = 0.15;    // of the cells lie below the first guess: the rest may be nebula
constexpr double kLeastDistance = 0.1; // deviations, in a fit by ranks
constexpr double kSkyReach = 3.0;      // deviations that a cell of the sky may lie off
constexpr int kMostAround = 4;         // cells
constexpr double kMostVariance = 3000.0; // of a cell, over their number, at any place: polynomials of the whole frame
                                         // have up to 155 in its corners; below a nebula that fills half of it they
                                         // are known less well, yet far better than the nebula would tell them
constexpr double kBetter = 2.5;          // by which a higher degree must be better to be chosen
constexpr int kHighestChoice = 4;        // degrees
constexpr double kNever = std::numeric_limits<double>::infinity();

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
        cell.above = sky.level;
        cell.noise = sky.noise / std::sqrt(static_cast<double>(samples.size()));
    }
}

bool IsKnown(const SkyCell& cell)
{
    return !std::isnan(cell.above);
}

/// The median deviation of cells that lie below the polynomial, as a standard deviation, but no less than noise makes
/// it: nothing that stands before the sky has a part in it.
double DeviationOf(const std::vector<SkyCell>& cells, const std::vector<double>& rest)
{
    std::vector<double> below;
    std::vector<double> noises;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (IsKnown(cells[i])) {
            noises.push_back(cells[i].noise);
            if (rest[i] < 0.0) {
                below.push_back(-rest[i]);
            }
        }
    }
    return std::max(kMedianToSigma * MedianOf(below), MedianOf(noises));
}

/// What the sky about a cell must be like for it to be sky: the median of the cells so far around lies at most so many
/// deviations above it, about three times its noise.
struct SkyAround {
    int around;   ///< cells either way
    double reach; ///< deviations
};

constexpr SkyAround kAnyAround{0, kNever};
constexpr SkyAround kNearAround{2, 0.75};
constexpr SkyAround kWideAround{kMostAround, 0.42};

/// The median of what is known about a cell.
double MedianAround(const SkyCells& sky, const std::vector<double>& rest, int i, int reach)
{
    const int column = i % sky.columns;
    const int row = i / sky.columns;
    std::array<double, (2 * kMostAround + 1) * (2 * kMostAround + 1)> around{};
    auto end = around.begin();
    for (int r = std::max(row - reach, 0); r <= std::min(row + reach, sky.rows - 1); ++r) {
        for (int c = std::max(column - reach, 0); c <= std::min(column + reach, sky.columns - 1); ++c) {
            const auto place = static_cast<std::size_t>(r) * sky.columns + c;
            if (IsKnown(sky.cells[place])) {
                *end++ = rest[place];
            }
        }
    }
    const auto middle = around.begin() + (end - around.begin()) / 2;
    std::nth_element(around.begin(), middle, end);
    return *middle;
}

/// What is left of each cell above a polynomial.
std::vector<double> RestOf(const std::vector<SkyCell>& cells, const SkyPolynomial& polynomial)
{
    std::vector<double> rest;
    std::transform(cells.begin(), cells.end(), std::back_inserter(rest),
                   [&](const SkyCell& cell) { return cell.above - polynomial.At(cell.x, cell.y); });
    return rest;
}

/// A polynomial fitted to cells of the sky, which cells those are, and how well that goes.
struct SkyCandidate {
    SkyCells sky;
    SkyPolynomial polynomial;
    double merit = 0.0;
};

/// Says anew which cells are sky; true when one has changed.
bool ChooseSky(SkyCandidate& candidate, const SkyAround& skyAround)
{
    SkyCells& sky = candidate.sky;
    const std::vector<double> rest = RestOf(sky.cells, candidate.polynomial);
    const double deviation = DeviationOf(sky.cells, rest);
    bool hasChanged = false;
    double count = 0.0;
    for (std::size_t i = 0; i < rest.size(); ++i) {
        bool isSky = std::fabs(rest[i]) <= kSkyReach * deviation;
        isSky = isSky && (skyAround.around == 0 || MedianAround(sky, rest, static_cast<int>(i), skyAround.around) <=
                                                       skyAround.reach * deviation);
        hasChanged = hasChanged || isSky != sky.cells[i].isSky;
        sky.cells[i].isSky = isSky;
        count += isSky ? 1.0 : (rest[i] < -kSkyReach * deviation ? -1.0 : 0.0); // nothing is darker than the sky
    }
    candidate.merit = count / deviation;
    return hasChanged;
}

/// Fits the polynomial of a degree to what is sky; false when that does not tell it.
bool FitToSky(SkyCandidate& candidate, int degree)
{
    Values values;
    std::ptrdiff_t known = 0;
    for (const SkyCell& cell : candidate.sky.cells) {
        known += IsKnown(cell) ? 1 : 0;
        if (cell.isSky) {
            values.push_back({cell.x, cell.y, cell.above});
        }
    }
    candidate.sky.degree = degree;
    return candidate.polynomial.Fit(values, degree, kMostVariance / static_cast<double>(known));
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

/// The polynomial with so small a part below it of the cells that `counts` holds for, by weights that make distances of
/// their squares.
template <class Counts>
SkyPolynomial FitByRank(const SkyCells& sky, int degree, Counts counts)
{
    SkyPolynomial polynomial = sky.polynomial.None();
    std::vector<double> weights(sky.cells.size(), 1.0);
    for (int round = 0; round < kGuessRounds; ++round) {
        Values values;
        for (std::size_t i = 0; i < sky.cells.size(); ++i) {
            if (IsKnown(sky.cells[i]) && counts(sky.cells[i])) {
                values.push_back({sky.cells[i].x, sky.cells[i].y, sky.cells[i].above, weights[i]});
            }
        }
        polynomial.Fit(values, degree, kNever);
        const std::vector<double> rest = RestOf(sky.cells, polynomial);
        const double least =
            std::max(kLeastDistance * DeviationOf(sky.cells, rest), std::numeric_limits<double>::min());
        for (std::size_t i = 0; i < rest.size(); ++i) {
            weights[i] = (rest[i] > 0.0 ? kGuessRank : 1.0 - kGuessRank) / std::max(std::fabs(rest[i]), least);
        }
    }
    return polynomial;
}

/// Goes from a guess to a candidate; nothing when there is none of that degree.
template <class Counts>
std::optional<SkyCandidate> CandidateFrom(const SkyCells& sky, int degree, Counts counts)
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

/// Takes another candidate for the best one when it is so many times better.
void KeepBetter(std::optional<SkyCandidate>& best, std::optional<SkyCandidate> other, double factor)
{
    if (other && (!best || other->merit > factor * best->merit)) {
        best = std::move(other);
    }
}

/// The best candidate of a degree, from guesses by the whole frame and by each half of it.
std::optional<SkyCandidate> BestOfDegree(const SkyCells& sky, int degree)
{
    const double x = 0.5 * (sky.cells.front().x + sky.cells.back().x);
    const double y = 0.5 * (sky.cells.front().y + sky.cells.back().y);
    std::optional<SkyCandidate> best = CandidateFrom(sky, degree, [](const SkyCell&) { return true; });
    const auto tryHalf = [&](auto counts) { KeepBetter(best, CandidateFrom(sky, degree, counts), 1.0); };
    tryHalf([=](const SkyCell& cell) { return cell.x <= x; });
    tryHalf([=](const SkyCell& cell) { return cell.x >= x; });
    tryHalf([=](const SkyCell& cell) { return cell.y <= y; });
    tryHalf([=](const SkyCell& cell) { return cell.y >= y; });
    return best;
}

/// That of the degree that is asked for, or the highest below it that the sky tells.
std::optional<SkyCandidate> BestUpTo(const SkyCells& sky, int degree)
{
    std::optional<SkyCandidate> best;
    for (; degree >= 0 && !best; --degree) {
        best = BestOfDegree(sky, degree);
    }
    return best;
}

/// That of the lowest degree that a higher one is not much better than.
std::optional<SkyCandidate> BestOfAll(const SkyCells& sky)
{
    std::optional<SkyCandidate> best = BestUpTo(sky, 1);
    for (int degree = 2; degree <= kHighestChoice; ++degree) {
        KeepBetter(best, BestOfDegree(sky, degree), kBetter);
    }
    return best;
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
    MeasureCells(image, plane, grid, run, sky);
    std::optional<SkyCandidate> best = degree ? BestUpTo(sky, *degree) : BestOfAll(sky);
    LeaveOutFaintest(best);
    for (int i = 1; best; ++i) {
        const SkyPolynomial sum = sky.polynomial + best->polynomial;
        const bool isLast = i == kMeasurements || IsSettled(*best);
        sky = std::move(best->sky);
        sky.polynomial = sum;
        MeasureCells(image, plane, grid, run, sky);
        run.ThrowIfCancelled();
        best = isLast ? std::nullopt : CandidateFrom(sky, sky.degree, [](const SkyCell& cell) { return cell.isSky; });
        LeaveOutFaintest(best);
    }
    return sky;
}

} // namespace corvane::stars
