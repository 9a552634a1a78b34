#include "stars/psf.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

#include "corvane/core/run.h"
#include "tests/support/images.h"

namespace corvane::stars {

namespace {

constexpr double kSkyOfPsf = 1000.0;
constexpr int kPsfFieldSide = 600;

/// What stars of a field look like.
struct TrueStar {
    double fwhm = 3.4;
    double ratio = 1.25; ///< of the longest width over the shortest
    double angle = 30.0; ///< degrees
    double beta = 0.0;   ///< 0: a Gaussian
    double lean = 0.0;   ///< share of light in a second star beside it

    double At(double dx, double dy) const
    {
        const double turn = angle * std::numbers::pi / 180.0;
        const double along = (std::cos(turn) * dx + std::sin(turn) * dy) / std::sqrt(ratio);
        const double across = (std::cos(turn) * dy - std::sin(turn) * dx) * std::sqrt(ratio);
        const double half = 4.0 * (along * along + across * across) / (fwhm * fwhm);
        const double value =
            beta == 0.0 ? std::exp2(-half) : std::pow(1.0 + (std::exp2(1.0 / beta) - 1.0) * half, -beta);
        return lean == 0.0 ? value : value + lean * TrueStar{fwhm, ratio, angle, beta}.At(dx - 3.0, dy - 1.5);
    }
};

/// A field of 80 stars with photon noise, whose looks starAt(x, y) tells; those are drawn that isWanted(x, y) holds
/// for.
template <class StarAt, class IsWanted>
CStlImage DrawnField(std::uint32_t seed, StarAt starAt, IsWanted isWanted)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit;
    std::normal_distribution<double> normal;
    std::vector<double> light(kPsfFieldSide * kPsfFieldSide, kSkyOfPsf);
    for (int star = 0; star < 80; ++star) {
        const double x = 20.0 + unit(random) * (kPsfFieldSide - 40);
        const double y = 20.0 + unit(random) * (kPsfFieldSide - 40);
        const double peak = std::min(1200.0 / unit(random), 50000.0);
        const TrueStar looks = starAt(x, y);
        for (int i = 0; i < 81 * 81 && isWanted(x, y); ++i) {
            const int column = static_cast<int>(x) - 40 + i % 81;
            const int row = static_cast<int>(y) - 40 + i / 81;
            if (column >= 0 && row >= 0 && column < kPsfFieldSide && row < kPsfFieldSide) {
                light[row * kPsfFieldSide + column] += peak * looks.At(column - x, row - y);
            }
        }
    }
    return test::Make(kPsfFieldSide, kPsfFieldSide, 1, [&](int x, int y, int) {
        const double v = light[y * kPsfFieldSide + x];
        return v + std::sqrt(v) * normal(random);
    });
}

CStlImage DrawnField(std::uint32_t seed, const TrueStar& star)
{
    return DrawnField(
        seed, [&](double, double) { return star; }, [](double, double) { return true; });
}

double SumOf(const PsfSamples& samples)
{
    double sum = 0.0;
    for (const float v : samples) {
        sum += v;
    }
    return sum;
}

/// Root mean square of what a function misses of stars whose middle lies off its own, over the peak.
double MissOf(const ZonePsf& zone, int size, const TrueStar& star, double dx, double dy)
{
    std::vector<double> truth;
    double sum = 0.0;
    for (int i = 0; i < size * size; ++i) {
        truth.push_back(star.At(i % size - size / 2 + dx, i / size - size / 2 + dy));
        sum += truth.back();
    }
    double squares = 0.0;
    for (int i = 0; i < size * size; ++i) {
        squares += std::pow(zone.samples[i] - truth[i] / sum, 2);
    }
    return std::sqrt(squares) / (*std::max_element(truth.begin(), truth.end()) / sum);
}

/// The least of these, wherever the middle is.
double LeastMiss(const ZonePsf& zone, int size, const TrueStar& star)
{
    double least = 1.0;
    for (int i = 0; i < 61 * 61; ++i) {
        least = std::min(least, MissOf(zone, size, star, (i % 61 - 30) * 0.05, (i / 61 - 30) * 0.05));
    }
    return least;
}

} // namespace

TEST(FieldPsfTest, FindsTheWidthsOfGeneratedFields)
{
    struct {
        TrueStar star;
        PsfModel model;
    } const cases[]{{{.angle = -70.0}, PsfModel::kGaussian},
                    {{.fwhm = 2.2, .ratio = 1.1}, PsfModel::kGaussian},
                    {{.beta = 2.5}, PsfModel::kMoffat},
                    {{.fwhm = 5.5, .angle = 100.0, .beta = 4.0}, PsfModel::kMoffat},
                    {{.beta = 3.0}, PsfModel::kStars}};
    for (const auto& [star, model] : cases) {
        SCOPED_TRACE(testing::Message() << star.fwhm << ", angle " << star.angle << ", beta " << star.beta);
        const FieldPsf psf = MeasurePsf(DrawnField(3, star), 0, {.model = model});
        ASSERT_EQ(psf.zones.size(), 1U);
        const ZonePsf& zone = psf.zones.front();
        const auto& [major, minor, angle, beta] = zone.widths;
        const double root = std::sqrt(star.ratio);
        EXPECT_GT(zone.stars, 40);
        EXPECT_NEAR(major.value, star.fwhm * root, 0.01 * star.fwhm);
        EXPECT_NEAR(minor.value, star.fwhm / root, 0.01 * star.fwhm);
        EXPECT_NEAR(std::remainder(angle.value - star.angle, 180.0), 0.0, 2.0);
        EXPECT_NEAR(beta.value, star.beta, 0.03 * star.beta);
        for (const auto& [measured, is] : {std::pair{major, star.fwhm * root}, {minor, star.fwhm / root}}) {
            EXPECT_LT(std::fabs(measured.value - is), 5.0 * measured.error);
            EXPECT_LT(measured.error, 0.01 * star.fwhm);
        }
        EXPECT_NEAR(SumOf(zone.samples), 1.0, 1e-6);
        EXPECT_LT(MissOf(zone, psf.size, star, 0.0, 0.0), 0.05);
        EXPECT_LT(zone.residual, 0.1);
    }
}

TEST(FieldPsfTest, FollowsWhatNoProfileHas)
{
    const TrueStar star{.fwhm = 3.2, .ratio = 1.1, .beta = 3.0, .lean = 0.25};
    const CStlImage image = DrawnField(5, star);
    const FieldPsf profile = MeasurePsf(image, 0, {.size = 30});
    const FieldPsf stars = MeasurePsf(image, 0, {.model = PsfModel::kStars, .size = 30});
    EXPECT_LT(LeastMiss(stars.zones.front(), 30, star), 0.08);
    EXPECT_GT(LeastMiss(profile.zones.front(), 30, star), 3.0 * LeastMiss(stars.zones.front(), 30, star));
    EXPECT_NEAR(SumOf(stars.zones.front().samples), 1.0, 1e-6);
}

TEST(FieldPsfTest, TellsZonesApart)
{
    const auto looks = [](double x, double y) {
        return TrueStar{.fwhm = 3.0, .ratio = x < 300.0 ? 1.0 : 1.3, .angle = y < 300.0 ? 0.0 : 90.0, .beta = 3.0};
    };
    const auto isWanted = [](double x, double y) { return x > 310.0 || y < 290.0; };
    const FieldPsf psf = MeasurePsf(DrawnField(7, looks, isWanted), 0, {.zones = 2});
    ASSERT_EQ(psf.zones.size(), 4U);
    for (const int zone : {0, 1, 3}) {
        const PsfWidths& widths = psf.zones[zone].widths;
        EXPECT_NEAR(widths.major.value / widths.minor.value, zone == 0 ? 1.0 : 1.3, 0.03) << zone;
        EXPECT_TRUE(zone == 0 || std::fabs(std::remainder(widths.angle.value - (zone == 1 ? 0.0 : 90.0), 180.0)) < 3.0);
    }
    EXPECT_EQ(psf.zones[2].stars, 0);
    EXPECT_TRUE(psf.zones[2].samples.empty());
}

TEST(FieldPsfTest, LeavesOutWhatIsNoSingleStar)
{
    const TrueStar star{.beta = 3.0};
    CStlImage image = DrawnField(9, star);
    std::mt19937 random(2);
    for (int i = 0; i < 4000; ++i) { // hits, and stars that are cut off
        const int x = static_cast<int>(random() % kPsfFieldSide);
        const int y = static_cast<int>(random() % kPsfFieldSide);
        image.SetPixelGrayRaw(x, y, 3000.0F, 0);
    }
    for (int i = 0; i < kPsfFieldSide * kPsfFieldSide; ++i) {
        float& sample = *image.GetImageAdr(i % kPsfFieldSide, i / kPsfFieldSide, 0);
        sample = std::min(sample, 15000.0F);
    }
    const FieldPsf psf = MeasurePsf(image, 0, {});
    ASSERT_EQ(psf.zones.size(), 1U);
    EXPECT_GT(psf.zones.front().stars, 10);
    // Hits in the flanks of stars, three or four to each, widen it a little.
    EXPECT_NEAR(psf.zones.front().widths.major.value, star.fwhm * std::sqrt(star.ratio), 0.03 * star.fwhm);
    EXPECT_TRUE(MeasurePsf(test::Make(80, 80, 1, [](int, int, int) { return 5.0; }), 0, {}).zones.empty());
    EXPECT_THROW(MeasurePsf(image, 0, {}, {.cancelled = [] { return true; }}), Cancelled);
}

} // namespace corvane::stars
