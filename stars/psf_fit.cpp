#include "stars/psf_fit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

#include "corvane/platform/workers.h"
#include "stars/normal_equations.h"
#include "stars/robust.h"

namespace corvane::stars {

namespace {

constexpr std::size_t kOwn = 4;    // of a star: peak, x, y and sky
constexpr std::size_t kCommon = 4; // of all: xx, xy, yy and 1 / beta
constexpr int kMostPsfSteps = 100;
constexpr double kSettled = 1e-9; // of the squares
constexpr double kFirstPsfDamping = 1e-3;
constexpr double kMostDamping = 1e8;
constexpr double kEasePsf = 0.1;
constexpr double kTightenPsf = 10.0;
constexpr double kFlattestPerBeta = 0.9;  // light without end beyond 1
constexpr double kSteepestPerBeta = 0.01; // hardly to be told from a Gaussian
constexpr double kNarrowest = 0.4;        // pixels, full width
constexpr double kProfileError = 0.01;    // of the peak, by which stars of a field differ
constexpr int kRejections = 3;
constexpr std::size_t kFewPsfStars = 8; // whose scatter tells little
constexpr double kFarSample = 5.0;      // deviations
constexpr double kSampleError = 0.02;   // of the peak, that a profile may leave of a sample beside noise
constexpr double kUsualMisfits = 9.0;   // that a sample may miss: what the profile lacks is in few of them
constexpr double kFarStar = 2.5;        // times what the profile leaves of most stars

using StarEquations = NormalEquations<kOwn + kCommon>;
using CommonEquations = NormalEquations<kCommon>;

/// Calls visit(dx, dy) for the samples of a star that count.
template <class Visit>
void ForSamples(const PsfStar& star, double radius, Visit visit)
{
    for (int dy = -star.reach; dy <= star.reach; ++dy) {
        for (int dx = -star.reach; dx <= star.reach; ++dx) {
            if (dx * dx + dy * dy <= radius * radius && !std::isnan(star.At(dx, dy))) {
                visit(dx, dy);
            }
        }
    }
}

StarEquations StarEquationsOf(const PsfStar& star, const PsfProfile& profile, double radius)
{
    StarEquations sums;
    const PsfCurve curve(profile.perBeta);
    const double weight = 1.0 / star.variance;
    ForSamples(star, radius, [&](int column, int row) {
        const double dx = column - star.x;
        const double dy = row - star.y;
        const double alongX = profile.xx * dx + profile.xy * dy;
        const double alongY = profile.xy * dx + profile.yy * dy;
        const PsfSlopes slopes = curve.At(dx * alongX + dy * alongY);
        const double byHalf = star.peak * slopes.byHalf;
        sums.Add({slopes.value, -2.0 * byHalf * alongX, -2.0 * byHalf * alongY, 1.0, byHalf * dx * dx,
                  2.0 * byHalf * dx * dy, byHalf * dy * dy, star.peak * slopes.byPerBeta},
                 star.At(column, row) - star.sky - star.peak * slopes.value, weight);
    });
    return sums;
}

/// All stars and their profile, and the equations of a step from there.
struct PsfState {
    PsfProfile profile;
    std::vector<PsfStar> stars;
    std::vector<StarEquations> equations{};
    double squares = 0.0;

    void Measure(const PsfFitting& fitting)
    {
        equations.resize(stars.size());
        squares = 0.0;
        platform::ForBlocks(
            static_cast<int>(stars.size()), fitting.threads,
            [&](std::size_t i) { equations[i] = StarEquationsOf(stars[i], profile, fitting.radius); },
            [&](std::size_t i) { squares += equations[i].squares; });
    }
};

/// What is left of the stars' equations for the profile, the unknowns of the stars taken out.
CommonEquations CommonOf(const std::vector<StarEquations>& eliminated, bool isMoffat)
{
    CommonEquations sums;
    for (const StarEquations& star : eliminated) {
        for (std::size_t i = 0; i < kCommon; ++i) {
            sums.right[i] += star.right[kOwn + i];
            for (std::size_t j = 0; j < kCommon; ++j) {
                sums.matrix[i][j] += star.matrix[kOwn + i][kOwn + j];
            }
        }
    }
    if (!isMoffat) {
        sums.matrix[kCommon - 1][kCommon - 1] = 1.0; // nothing depends on beta: its step is 0
    }
    return sums;
}

bool IsProfile(const PsfProfile& p, double radius)
{
    const double most = 4.0 / (kNarrowest * kNarrowest);
    return p.xx * p.yy - p.xy * p.xy > 0.0 && p.xx + p.yy < 2.0 * most && p.xx + p.yy > 2.0 / (radius * radius);
}

/// The state a damped step away; nothing when that leads away from stars.
std::optional<PsfState> Stepped(const PsfState& from, double damping, const PsfFitting& fitting)
{
    std::vector<StarEquations> equations = from.equations;
    for (StarEquations& star : equations) {
        star.Damp(damping);
        star.Eliminate(kOwn);
    }
    CommonEquations common = CommonOf(equations, fitting.isMoffat);
    common.Eliminate();
    common.Substitute();
    const auto& step = common.right;
    PsfState next{from.profile, from.stars};
    next.profile.xx += step[0];
    next.profile.xy += step[1];
    next.profile.yy += step[2];
    next.profile.perBeta =
        fitting.isMoffat ? std::clamp(next.profile.perBeta + step[3], kSteepestPerBeta, kFlattestPerBeta) : 0.0;
    for (std::size_t i = 0; i < equations.size(); ++i) {
        std::copy(step.begin(), step.end(), equations[i].right.begin() + kOwn);
        equations[i].Substitute(kOwn);
        PsfStar& star = next.stars[i];
        star.peak += equations[i].right[0];
        star.x += equations[i].right[1];
        star.y += equations[i].right[2];
        star.sky += equations[i].right[3];
    }
    next.Measure(fitting);
    const bool isGood = IsProfile(next.profile, fitting.radius) && std::isfinite(next.squares); // NaN is none
    return isGood ? std::optional(std::move(next)) : std::nullopt;
}

/// Steps on until the squares settle.
void Settle(PsfState& state, const PsfFitting& fitting)
{
    double damping = kFirstPsfDamping;
    for (PsfStar& star : state.stars) {
        const double error = kProfileError * star.peak;
        star.variance = star.noise * star.noise + error * error;
    }
    state.Measure(fitting);
    for (int round = 0; round < kMostPsfSteps && damping < kMostDamping; ++round) {
        std::optional<PsfState> next = Stepped(state, damping, fitting);
        if (!next || next->squares > state.squares) {
            damping *= kTightenPsf;
            continue;
        }
        const bool isSettled = state.squares - next->squares <= kSettled * state.squares;
        state = std::move(*next);
        damping *= kEasePsf;
        if (isSettled) {
            return;
        }
    }
}

/// The mean square of what the profile leaves of a star, over the peak squared.
double MisfitOf(const PsfStar& star, const PsfProfile& profile, double radius)
{
    double sum = 0.0;
    int count = 0;
    ForSamples(star, radius, [&](int dx, int dy) {
        const double rest = star.RestAt(dx, dy, profile);
        sum += rest * rest;
        ++count;
    });
    return count > 0 ? sum / count / (star.peak * star.peak) : std::numeric_limits<double>::infinity();
}

/// Leaves out samples that stand out of a star, as hits and faint neighbours do. Returns how many.
int DropSamples(PsfStar& star, const PsfProfile& profile, double usual, double radius)
{
    const double square = kSampleError * kSampleError + kUsualMisfits * usual;
    const double most = kFarSample * std::sqrt(star.noise * star.noise + square * star.peak * star.peak);
    int dropped = 0;
    ForSamples(star, radius, [&](int dx, int dy) {
        if (std::fabs(star.RestAt(dx, dy, profile)) > most) {
            star.LeaveOut(dx, dy);
            ++dropped;
        }
    });
    return dropped;
}

/// Mean square of the sky's noise, over the peak squared.
double NoiseOver(const PsfStar& star)
{
    return star.noise * star.noise / (star.peak * star.peak);
}

/// The misfit of most stars, the sky's noise apart.
double UsualMisfit(const PsfState& state, double radius)
{
    std::vector<double> misfits;
    for (const PsfStar& star : state.stars) {
        misfits.push_back(std::max(MisfitOf(star, state.profile, radius) - NoiseOver(star), 0.0));
    }
    return MedianOf(misfits);
}

/// Leaves out stars that the profile does not suit as it does most. Returns how many.
std::size_t DropStars(PsfState& state, double usual, double radius)
{
    return std::erase_if(state.stars, [&](const PsfStar& star) {
        const bool isStar = star.peak > 0.0 && std::hypot(star.x, star.y) < 0.5 * radius &&
                            MisfitOf(star, state.profile, radius) <= kFarStar * kFarStar * (usual + NoiseOver(star));
        return !isStar;
    });
}

/// What is left, over what was expected of the sky's noise.
double ExcessOf(const PsfState& state, double radius)
{
    std::size_t samples = 0;
    for (const PsfStar& star : state.stars) {
        ForSamples(star, radius, [&](int, int) { ++samples; });
    }
    const double unknowns = static_cast<double>(kOwn * state.stars.size() + kCommon);
    return state.squares / std::max(static_cast<double>(samples) - unknowns, 1.0);
}

/// How the right sides scatter: from star to star, which takes no model of their noise, or where they are few by what
/// is left of their samples.
PsfCovariance ScatterOf(const PsfState& state, const std::vector<StarEquations>& eliminated, double radius)
{
    PsfCovariance scatter{};
    if (eliminated.size() < kFewPsfStars) {
        scatter = CommonOf(eliminated, true).matrix;
        const double excess = ExcessOf(state, radius);
        std::for_each(scatter.begin(), scatter.end(), [=](auto& row) {
            std::transform(row.begin(), row.end(), row.begin(), [=](double v) { return v * excess; });
        });
        return scatter;
    }
    for (const StarEquations& star : eliminated) {
        for (std::size_t i = 0; i < kCommon; ++i) {
            for (std::size_t j = 0; j < kCommon; ++j) {
                scatter[i][j] += star.right[kOwn + i] * star.right[kOwn + j];
            }
        }
    }
    return scatter;
}

/// Solves the equations of all stars for each column of a matrix, and turns the rows of the result into columns.
PsfCovariance SolvedTurned(const CommonEquations& equations, const PsfCovariance& columns)
{
    PsfCovariance solved{};
    for (std::size_t i = 0; i < kCommon; ++i) {
        CommonEquations ofColumn = equations;
        ofColumn.right = columns[i];
        ofColumn.Eliminate();
        ofColumn.Substitute();
        for (std::size_t j = 0; j < kCommon; ++j) {
            solved[j][i] = ofColumn.right[j];
        }
    }
    return solved;
}

/// The inverse of the equations on both sides of the scatter, which is symmetric.
PsfCovariance CovarianceOf(const PsfState& state, bool isMoffat, double radius)
{
    std::vector<StarEquations> equations = state.equations;
    std::for_each(equations.begin(), equations.end(), [](StarEquations& star) { star.Eliminate(kOwn); });
    const CommonEquations common = CommonOf(equations, isMoffat);
    return SolvedTurned(common, SolvedTurned(common, ScatterOf(state, equations, radius)));
}

double ResidualOf(const PsfState& state, double radius)
{
    std::vector<double> rests;
    for (const PsfStar& star : state.stars) {
        rests.push_back(std::sqrt(MisfitOf(star, state.profile, radius)));
    }
    return MedianOf(rests);
}

} // namespace

std::optional<PsfFit> FitPsf(std::vector<PsfStar>& stars, const PsfProfile& guess, const PsfFitting& fitting)
{
    const platform::KeptThreads threads(fitting.threads);
    const double radius = fitting.radius;
    PsfState state{guess, stars};
    for (int round = 0; round < kRejections; ++round) {
        Settle(state, fitting);
        const double usual = UsualMisfit(state, radius);
        std::size_t dropped = DropStars(state, usual, radius);
        for (PsfStar& star : state.stars) {
            dropped += static_cast<std::size_t>(DropSamples(star, state.profile, usual, radius));
        }
        if (dropped == 0 || state.stars.empty()) {
            break;
        }
    }
    if (state.stars.empty()) {
        return std::nullopt;
    }
    Settle(state, fitting);
    stars = state.stars;
    return PsfFit{state.profile, CovarianceOf(state, fitting.isMoffat, radius), ResidualOf(state, radius)};
}

} // namespace corvane::stars
