#include "stars/sky_halo.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <numeric>
#include <utility>

#include "corvane/core/exponential.h"
#include "corvane/core/power.h"
#include "stars/normal_equations.h"

namespace corvane::stars {

namespace {

constexpr std::array kPartsLeftOut{0.1, 0.2, 0.35}; // of the frame
constexpr int kHaloRounds = 8;                      // of leaving out what shines most
constexpr int kMostHaloSteps = 12;                  // from one round to the next
constexpr double kSettledHalo = 1e-5;               // of the squares
constexpr double kFirstHaloDamping = 1e-3;
constexpr double kMostHaloDamping = 1e4;
constexpr double kPolynomialAlone = 1e12; // damping
constexpr double kLeastAtEdge = 6.0;      // deviations: fainter light is no halo, and tells none
constexpr double kMostOfNoise = 1.75;     // the noise of cells: what deviates more has other structure
constexpr double kHopeless = 0.5;         // of the merit that is to be had, after a round
constexpr double kBetterHaloDegree = 1.5; // by which a higher degree must be better to be chosen

/// Light about a middle: e^(top - r), or e^(top - r^2) like a Gaussian, r^2 = xx dx^2 + 2 xy dx dy + yy dy^2. Places
/// are those of a polynomial, -1 to 1 across the frame.
enum HaloUnknown : std::size_t { kTop, kMiddleX, kMiddleY, kXX, kXY, kYY, kHaloUnknowns };

struct HaloPlace {
    double x;
    double y;
};

/// Sets how the light at a place changes with each of the unknowns, and returns it.
template <class Row>
double HaloAt(const Row& at, bool isGaussian, const HaloPlace& place, Row& slopes)
{
    constexpr double kMiddle = 1e-6; // where exponential light has a tip, and no slope
    const double dx = place.x - at[kMiddleX];
    const double dy = place.y - at[kMiddleY];
    const double alongX = at[kXX] * dx + at[kXY] * dy;
    const double alongY = at[kXY] * dx + at[kYY] * dy;
    const double square = std::max(dx * alongX + dy * alongY, kMiddle);
    const double root = std::sqrt(square);
    const double light = Exp(at[kTop] - (isGaussian ? square : root));
    const double bySquare = -light * (isGaussian ? 1.0 : 0.5 / root);
    slopes[kTop] = light;
    slopes[kMiddleX] = -2.0 * bySquare * alongX;
    slopes[kMiddleY] = -2.0 * bySquare * alongY;
    slopes[kXX] = bySquare * dx * dx;
    slopes[kXY] = bySquare * 2.0 * dx * dy;
    slopes[kYY] = bySquare * dy * dy;
    return light;
}

/// A polynomial and a halo, on the way to those that fit the sky best.
template <int kDegree>
class HaloFit {
public:
    HaloFit(const SkyCells& sky, bool isGaussian, double part);

    /// The polynomial, from a guess at it on; nothing when there is no halo above it, or a merit is far off.
    std::optional<SkyCandidate> From(const SkyPolynomial& guess, double merit);

private:
    using Equations = NormalEquations<kHaloUnknowns + (kDegree + 1) * (kDegree + 2) / 2>;
    using Row = typename Equations::Row;

    void LeaveOutBrightest(const std::vector<double>& light);
    void BeginAboutLeftOut();
    Equations EquationsAt(const Row& at) const;
    Row Stepped(Equations equations, double damping) const;
    void Settle();
    std::vector<double> TakeOffHalo();
    bool IsTold() const;

    const SkyCells& sky_;
    bool isGaussian_;
    double part_;
    std::vector<HaloPlace> places_;
    SkyCandidate candidate_;
    Row at_{};          ///< the halo, and the factors of the polynomial
    double edge_ = 0.0; ///< brightness about what is left out
};

template <int kDegree>
HaloFit<kDegree>::HaloFit(const SkyCells& sky, bool isGaussian, double part)
    : sky_(sky), isGaussian_(isGaussian), part_(part), candidate_{sky, sky.polynomial}
{
    for (SkyCell& cell : candidate_.sky.cells) {
        places_.push_back({sky.polynomial.Across(cell.x), sky.polynomial.Down(cell.y)});
    }
}

template <int kDegree>
std::optional<SkyCandidate> HaloFit<kDegree>::From(const SkyPolynomial& guess, double merit)
{
    LeaveOutBrightest(RestOf(sky_.cells, guess));
    if (edge_ <= kLeastAtEdge * NoiseOf(sky_.cells)) {
        return std::nullopt;
    }
    BeginAboutLeftOut();
    bool hasChanged = true;
    for (int round = 0; round < kHaloRounds && hasChanged; ++round) {
        Settle();
        const std::vector<double> light = TakeOffHalo();
        if (!FitToSky(candidate_, kDegree)) {
            return std::nullopt;
        }
        LeaveOutBrightest(light);
        hasChanged = ChooseSky(candidate_, kAnyAround);
        if (candidate_.merit < kHopeless * merit) {
            return std::nullopt;
        }
    }
    const bool isHalo = candidate_.deviation <= kMostOfNoise * NoiseOf(sky_.cells) &&
                        edge_ >= kLeastAtEdge * candidate_.deviation && IsTold();
    return isHalo ? std::optional(std::move(candidate_)) : std::nullopt;
}

/// Makes the cells unknown where so much light is brightest.
template <int kDegree>
void HaloFit<kDegree>::LeaveOutBrightest(const std::vector<double>& light)
{
    std::vector<double> known;
    for (std::size_t i = 0; i < light.size(); ++i) {
        if (IsKnown(sky_.cells[i])) {
            known.push_back(light[i]);
        }
    }
    const auto place =
        known.begin() + static_cast<std::ptrdiff_t>((1.0 - part_) * static_cast<double>(known.size() - 1));
    std::nth_element(known.begin(), place, known.end());
    edge_ = *place;
    for (std::size_t i = 0; i < light.size(); ++i) {
        SkyCell& cell = candidate_.sky.cells[i];
        cell.above = light[i] < edge_ ? cell.above : std::numeric_limits<double>::quiet_NaN();
    }
}

/// A halo about what is left out, as long and wide by its second moments.
template <int kDegree>
void HaloFit<kDegree>::BeginAboutLeftOut()
{
    constexpr double kThinnest = 1e-3; // variance, of a line of cells
    NormalEquations<3> sums;           // of 1, x and y
    for (std::size_t i = 0; i < places_.size(); ++i) {
        SkyCell& cell = candidate_.sky.cells[i];
        cell.isSky = IsKnown(cell);
        if (IsKnown(sky_.cells[i]) && !cell.isSky) {
            sums.Add({1.0, places_[i].x, places_[i].y}, 0.0);
        }
    }
    const double x = sums.matrix[0][1] / sums.matrix[0][0];
    const double y = sums.matrix[0][2] / sums.matrix[0][0];
    const double xx = sums.matrix[1][1] / sums.matrix[0][0] - x * x + kThinnest;
    const double xy = sums.matrix[1][2] / sums.matrix[0][0] - x * y;
    const double yy = sums.matrix[2][2] / sums.matrix[0][0] - y * y + kThinnest;
    // The edge of an even ellipse is two deviations from its middle: the light there e^-2, of a Gaussian e^-1.
    const double scale = (isGaussian_ ? 0.25 : 1.0) / (xx * yy - xy * xy);
    at_ = {Log1p(edge_ - 1.0) + (isGaussian_ ? 1.0 : 2.0), x, y, scale * yy, -scale * xy, scale * xx};
    at_ = Stepped(EquationsAt(at_), kPolynomialAlone);
}

template <int kDegree>
typename HaloFit<kDegree>::Equations HaloFit<kDegree>::EquationsAt(const Row& at) const
{
    Equations sums;
    Row slopes{};
    for (std::size_t i = 0; i < places_.size(); ++i) {
        if (candidate_.sky.cells[i].isSky) {
            SkyPolynomial::PowersAt(places_[i].x, places_[i].y, kDegree, &slopes[kHaloUnknowns]);
            const double light = HaloAt(at, isGaussian_, places_[i], slopes);
            const double sky =
                std::inner_product(at.begin() + kHaloUnknowns, at.end(), slopes.begin() + kHaloUnknowns, 0.0);
            sums.Add(slopes, sky_.cells[i].above - sky - light);
        }
    }
    return sums;
}

/// A step towards less squares; damping shortens it for the halo.
template <int kDegree>
typename HaloFit<kDegree>::Row HaloFit<kDegree>::Stepped(Equations equations, double damping) const
{
    for (std::size_t i = 0; i < kHaloUnknowns; ++i) {
        equations.matrix[i][i] *= 1.0 + damping;
    }
    equations.Eliminate();
    equations.Substitute();
    Row next = at_;
    std::transform(next.begin(), next.end(), equations.right.begin(), next.begin(), std::plus<>());
    return next;
}

/// Steps on until the squares settle.
template <int kDegree>
void HaloFit<kDegree>::Settle()
{
    double damping = kFirstHaloDamping;
    Equations here = EquationsAt(at_);
    for (int step = 0; step < kMostHaloSteps && damping < kMostHaloDamping; ++step) {
        const Row next = Stepped(here, damping);
        const bool isEllipse = next[kXX] > 0.0 && next[kXX] * next[kYY] > next[kXY] * next[kXY]; // NaN is none
        const Equations there = isEllipse ? EquationsAt(next) : here;
        if (!isEllipse || !(there.squares <= here.squares)) {
            damping *= 10.0;
            continue;
        }
        const bool isSettled = here.squares - there.squares <= kSettledHalo * here.squares;
        at_ = next;
        here = there;
        damping *= 0.1;
        if (isSettled) {
            return;
        }
    }
}

/// Takes the halo off the cells, and returns it.
template <int kDegree>
std::vector<double> HaloFit<kDegree>::TakeOffHalo()
{
    std::vector<double> light;
    Row slopes{};
    for (std::size_t i = 0; i < places_.size(); ++i) {
        SkyCell& cell = candidate_.sky.cells[i];
        cell.halo = HaloAt(at_, isGaussian_, places_[i], slopes);
        cell.above = sky_.cells[i].above - cell.halo;
        light.push_back(cell.halo);
    }
    return light;
}

/// Whether the cells tell the polynomial from the halo at every place of the frame.
template <int kDegree>
bool HaloFit<kDegree>::IsTold() const
{
    constexpr int kPlaces = 9; // along each side
    Equations equations = EquationsAt(at_);
    equations.Eliminate();
    const double most = MostVarianceOf(sky_.cells);
    bool isTold = true;
    for (int i = 0; isTold && i < kPlaces * kPlaces; ++i) {
        const int column = i % kPlaces;
        const int row = i / kPlaces;
        Row powers{};
        SkyPolynomial::PowersAt(2.0 * column / (kPlaces - 1) - 1.0, 2.0 * row / (kPlaces - 1) - 1.0, kDegree,
                                &powers[kHaloUnknowns]);
        isTold = equations.Variance(powers) <= most; // NaN is not
    }
    return isTold;
}

/// The best of a degree that has more than a merit.
template <int kDegree>
std::optional<SkyCandidate> BestHaloOf(const SkyCells& sky, const std::vector<SkyPolynomial>& guesses, double merit)
{
    const auto known = std::count_if(sky.cells.begin(), sky.cells.end(), IsKnown);
    const double most = static_cast<double>(known) / NoiseOf(sky.cells); // all cells sky, with no more than their noise
    std::optional<SkyCandidate> best;
    for (const double part : kPartsLeftOut) {
        for (const SkyPolynomial& guess : guesses) {
            for (const bool isGaussian : {false, true}) {
                if ((1.0 - part) * most > merit) {
                    KeepBetter(best, HaloFit<kDegree>(sky, isGaussian, part).From(guess, merit), 1.0);
                    merit = best ? std::max(merit, best->merit) : merit;
                }
            }
        }
    }
    return best;
}

} // namespace

std::optional<SkyCandidate> BestWithHalo(const SkyCells& sky, int least, int most, double merit)
{
    constexpr std::array kBestOf{BestHaloOf<1>, BestHaloOf<2>, BestHaloOf<3>};
    const auto any = [](const SkyCell&) { return true; };
    const std::vector<SkyPolynomial> guesses{FitByRank(sky, 1, any), FitByRank(sky, 0, any)};
    std::optional<SkyCandidate> best;
    for (int degree = least; degree <= std::min(most, static_cast<int>(kBestOf.size())); ++degree) {
        std::optional<SkyCandidate> other = kBestOf[static_cast<std::size_t>(degree - 1)](sky, guesses, merit);
        if (other && other->merit > merit) {
            merit = kBetterHaloDegree * other->merit;
            best = std::move(other);
        }
    }
    return best;
}

} // namespace corvane::stars
