#include "stars/sky_model.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "stars/sky_cells.h"
#include "tests/support/images.h"

namespace corvane::stars {

namespace {

constexpr int kSkySide = 400;

/// A polynomial of a degree, -1 to 1 across the frame, in 870..1150.
double Gradient(double u, double v, int degree)
{
    return 1000.0 + 90.0 * u - 35.0 * v - (degree > 1 ? 30.0 * u * u + 20.0 * v * v - 25.0 * u * v : 0.0) +
           (degree > 2 ? 25.0 * u * u * u - 20.0 * u * v * v : 0.0) + (degree > 3 ? 20.0 * u * u * v * v : 0.0);
}

double Unit(int i)
{
    return 2.0 * i / (kSkySide - 1) - 1.0;
}

/// The brightness of a nebula at a place.
using NebulaLight = double (*)(int x, int y);

double NoNebula(int, int)
{
    return 0.0;
}

/// NebulaLight that fills half of the frame, of a brightness up to 80.
double Nebula(int x, int y)
{
    const double r = std::hypot(Unit(x) - 0.2, Unit(y) + 0.1) / 0.8;
    return r < 1.0 ? 40.0 * (1.0 + std::cos(3.14159265 * r)) : 0.0;
}

/// The same, even on one half and falling off exponentially on the other.
double HalfNebula(int x, int)
{
    return 100.0 * std::min(std::exp(-Unit(x) / 0.1), 1.0);
}

/// A galaxy, whose light fades slowly and reaches every corner.
double Galaxy(int x, int y)
{
    return 100.0 * std::exp(-std::hypot(Unit(x) - 0.1, (Unit(y) + 0.1) / 0.7) / 0.35);
}

/// The same, half of it beyond the edge.
double RimGalaxy(int x, int y)
{
    return Galaxy(x - kSkySide / 2, y);
}

/// A nebula that leaves nothing but the corners.
double WideNebula(int x, int y)
{
    return 100.0 * std::exp(-2.0 * (std::pow(Unit(x) - 0.2, 2) + std::pow(Unit(y) + 0.1, 2)));
}

/// The gradient with noise, stars from 1 in 150 square pixels on, and a nebula.
CStlImage Frame(int degree, double noise, NebulaLight nebula)
{
    std::mt19937 random(4);
    std::normal_distribution<double> normal;
    return test::Make(kSkySide, kSkySide, 1, [&](int x, int y, int) {
        const double square = std::pow(x % 31 - 14, 2) + std::pow(y % 29 - 11, 2);
        const double star = noise > 0.0 ? (x / 31 * 37 + y / 29 * 53) % 61 * 40.0 * std::exp(-square / 4.0) : 0.0;
        return Gradient(Unit(x), Unit(y), degree) + star + (noise > 0.0 ? noise * normal(random) : 0.0) + nebula(x, y);
    });
}

/// The largest difference of a model and a sky, both above their medians.
double WorstOf(const SkyModel& model, const SkyModel& sky)
{
    std::vector<double> row(kSkySide);
    std::vector<double> expected(kSkySide);
    double worst = 0.0;
    for (int y = 0; y < kSkySide; ++y) {
        model.FillRow(y, row.data());
        sky.FillRow(y, expected.data());
        for (int x = 0; x < kSkySide; ++x) {
            worst = std::max(worst, std::fabs(row[x] - model.Median() - expected[x] + sky.Median()));
        }
    }
    return worst;
}

} // namespace

TEST(SkyModel, RecoversPolynomialsIntoTheCorners)
{
    for (const int degree : {1, 2, 3, 4}) {
        SCOPED_TRACE(degree);
        const SkyModel clean = *FitSkyModel(Frame(degree, 0.0, NoNebula), 0, SkyForm::kPolynomial, degree);
        std::vector<double> row(kSkySide);
        for (int y = 0; y < kSkySide; ++y) {
            clean.FillRow(y, row.data());
            for (int x = 0; x < kSkySide; ++x) {
                ASSERT_NEAR(row[x], Gradient(Unit(x), Unit(y), degree), 2e-4) << x << ", " << y;
            }
        }
        const CStlImage starry = Frame(degree, 8.0, NoNebula);
        EXPECT_LT(WorstOf(*FitSkyModel(starry, 0, SkyForm::kPolynomial, degree), clean), degree > 2 ? 1.2 : 0.8);
        EXPECT_LT(WorstOf(*FitSkyModel(starry, 0, SkyForm::kSpline, degree), clean), 4.0);
        EXPECT_LT(WorstOf(*FitSkyModel(starry, 0, SkyForm::kMesh, degree), clean), 12.0);
        if (degree < 4) {
            EXPECT_LT(WorstOf(*FitSkyModel(starry, 0, SkyForm::kPolynomial, std::nullopt), clean), 1.2);
        }
    }
}

TEST(SkyModel, LeavesTheLightOfANebulaInHalfOfTheFrameAndMore)
{
    struct Case {
        int degree;
        double noise;
        NebulaLight nebula;
        std::optional<int> asked{};
    };
    for (const auto& [degree, noise, nebula, asked] : {Case{1, 8.0, Nebula},
                                                       {2, 8.0, Nebula},
                                                       {1, 8.0, HalfNebula},
                                                       {1, 8.0, Galaxy},
                                                       {2, 2.0, Galaxy},
                                                       {3, 1.0, Galaxy},
                                                       {2, 2.0, Galaxy, 2},
                                                       {1, 2.0, RimGalaxy},
                                                       {1, 8.0, WideNebula},
                                                       {2, 4.0, WideNebula},
                                                       {2, 4.0, WideNebula, 2}}) {
        const SkyModel with = *FitSkyModel(Frame(degree, noise, nebula), 0, SkyForm::kPolynomial, asked);
        const SkyModel without = *FitSkyModel(Frame(degree, noise, NoNebula), 0, SkyForm::kPolynomial, degree);
        double light = 0.0;
        double lost = 0.0;
        std::vector<double> row(kSkySide);
        std::vector<double> expected(kSkySide);
        for (int y = 0; y < kSkySide; ++y) {
            with.FillRow(y, row.data());
            without.FillRow(y, expected.data());
            for (int x = 0; x < kSkySide; ++x) {
                light += nebula(x, y);
                lost += row[x] - expected[x];
            }
        }
        EXPECT_LT(std::fabs(lost / light), 0.02) << degree << ' ' << noise;
    }
}

TEST(SkyModel, TellsTheHaloOfANebulaFromTheSky)
{
    struct Case {
        NebulaLight nebula;
        bool hasHalo;
        int defined = kSkySide; ///< columns
    };
    for (const auto& [nebula, hasHalo, defined] : {Case{NoNebula, false},
                                                   {Nebula, false},
                                                   {HalfNebula, false},
                                                   {Galaxy, true},
                                                   {Galaxy, true, 300},
                                                   {WideNebula, true}}) {
        CStlImage frame = Frame(1, 2.0, nebula);
        for (int i = 0; i < kSkySide * kSkySide; ++i) {
            if (i % kSkySide >= defined) {
                frame.SetPixelGrayRaw(i % kSkySide, i / kSkySide, NAN, 0);
            }
        }
        const SkyCells sky = FitSkyCells(frame, 0, std::nullopt, 32, {});
        double worst = 0.0;
        double brightest = 0.0;
        for (const SkyCell& cell : sky.cells) {
            const double light = nebula(static_cast<int>(cell.x), static_cast<int>(cell.y));
            brightest = std::max(brightest, cell.halo);
            worst = std::max(worst, cell.isSky ? std::fabs(cell.halo - light) : 0.0);
        }
        EXPECT_EQ(sky.degree, 1);
        EXPECT_EQ(brightest > 0.0, hasHalo);
        EXPECT_LT(worst, hasHalo ? 2.0 : 5.0); // a cell's noise is 0.2, and its light may bend within it
    }
}

TEST(SkyModel, KnowsNoSkyWithoutSamplesAndAnyOfOne)
{
    for (const SkyForm form : {SkyForm::kMesh, SkyForm::kPolynomial, SkyForm::kSpline}) {
        EXPECT_FALSE(FitSkyModel(test::Make(30, 20, 1, [](int, int, int) { return NAN; }), 0, form, 2));
        std::vector<double> row(1);
        FitSkyModel(test::Make(1, 1, 1, [](int, int, int) { return 7.0; }), 0, form, 2)->FillRow(0, row.data());
        EXPECT_NEAR(row[0], 7.0, 1e-12);
    }
}

} // namespace corvane::stars
