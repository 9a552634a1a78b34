#include "stars/sky_candidate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "stars/robust.h"

namespace corvane::stars {

namespace {

using SkyValues = std::vector<SkyPolynomial::Value>;

constexpr int kGuessRounds = 10;       // of a fit by ranks
constexpr double kGuessRank = 0.15;    // of the cells lie below the first guess: the rest may be nebula
constexpr double kLeastDistance = 0.1; // deviations, in a fit by ranks
constexpr double kAnyVariance = std::numeric_limits<double>::infinity();

/// The median deviation of cells that lie below the polynomial, as a standard deviation, but no less than noise makes
/// it: nothing that stands before the sky has a part in it.
double DeviationOf(const std::vector<SkyCell>& cells, const std::vector<double>& rest)
{
    std::vector<double> below;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (IsKnown(cells[i]) && rest[i] < 0.0) {
            below.push_back(-rest[i]);
        }
    }
    return std::max(kMedianToSigma * MedianOf(below), NoiseOf(cells));
}

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

} // namespace

bool IsKnown(const SkyCell& cell)
{
    return !std::isnan(cell.above);
}

double NoiseOf(const std::vector<SkyCell>& cells)
{
    std::vector<double> noises;
    for (const SkyCell& cell : cells) {
        if (IsKnown(cell)) {
            noises.push_back(cell.noise);
        }
    }
    return MedianOf(noises);
}

double MostVarianceOf(const std::vector<SkyCell>& cells)
{
    constexpr double kMostVariance = 3000.0;
    return kMostVariance / static_cast<double>(std::count_if(cells.begin(), cells.end(), IsKnown));
}

std::vector<double> RestOf(const std::vector<SkyCell>& cells, const SkyPolynomial& polynomial)
{
    std::vector<double> rest;
    std::transform(cells.begin(), cells.end(), std::back_inserter(rest),
                   [&](const SkyCell& cell) { return cell.above - polynomial.At(cell.x, cell.y); });
    return rest;
}

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
    candidate.deviation = deviation;
    candidate.merit = count / deviation;
    return hasChanged;
}

bool FitToSky(SkyCandidate& candidate, int degree)
{
    SkyValues values;
    for (const SkyCell& cell : candidate.sky.cells) {
        if (cell.isSky) {
            values.push_back({cell.x, cell.y, cell.above});
        }
    }
    candidate.sky.degree = degree;
    return candidate.polynomial.Fit(values, degree, MostVarianceOf(candidate.sky.cells));
}

SkyPolynomial FitByRank(const SkyCells& sky, int degree, const CellTest& counts)
{
    SkyPolynomial polynomial = sky.polynomial.None();
    std::vector<double> weights(sky.cells.size(), 1.0);
    for (int round = 0; round < kGuessRounds; ++round) {
        SkyValues values;
        for (std::size_t i = 0; i < sky.cells.size(); ++i) {
            if (IsKnown(sky.cells[i]) && counts(sky.cells[i])) {
                values.push_back({sky.cells[i].x, sky.cells[i].y, sky.cells[i].above, weights[i]});
            }
        }
        polynomial.Fit(values, degree, kAnyVariance);
        const std::vector<double> rest = RestOf(sky.cells, polynomial);
        const double least =
            std::max(kLeastDistance * DeviationOf(sky.cells, rest), std::numeric_limits<double>::min());
        for (std::size_t i = 0; i < rest.size(); ++i) {
            weights[i] = (rest[i] > 0.0 ? kGuessRank : 1.0 - kGuessRank) / std::max(std::fabs(rest[i]), least);
        }
    }
    return polynomial;
}

void KeepBetter(std::optional<SkyCandidate>& best, std::optional<SkyCandidate> other, double factor)
{
    if (other && (!best || other->merit > factor * best->merit)) {
        best = std::move(other);
    }
}

} // namespace corvane::stars
