#include "stars/find_stars.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "examples/night/night.h"
#include "stars/measure_stars.h"
#include "tests/io/files.h"
#include "tests/stars/star_at.h"

namespace corvane::stars {

namespace {

constexpr int kSize = 400;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kBlank = 65535.0F;
constexpr float kFull = 20000.0F; ///< what saturated samples hold

/// One light of stars in a lattice of 40 pixels, each at another part of a pixel, on a sky of 702 with noise 11.8.
/// Peaks in units of that noise go from the faintest up by a factor over all the stars.
night::NightSettings LatticeNight(night::Profile profile, double fwhm, double faintest, double factor)
{
    night::NightSettings settings;
    settings.width = settings.height = kSize;
    settings.profile = profile;
    settings.biasPattern = settings.hotPixels = settings.cosmicHits = 0.0;
    settings.pixelResponseSpread = settings.vignetting = 0.0;
    settings.lights = 1;
    settings.dustShadows = settings.trails = 0;
    const double area = profile == night::Profile::kGaussian ? 1.133 : 1.321; // of the profile for FWHM and peak 1
    for (int i = 0; i < 100; ++i) {
        const double peak = faintest * std::pow(factor, i / 99.0) * 11.8 * settings.gain;
        settings.ownStars.push_back({20.0 + 40 * (i % 10) + 0.37 * (i % 7), 20.0 + 40 * (i / 10) + 0.29 * (i % 11),
                                     peak * area * fwhm * fwhm, fwhm});
    }
    return settings;
}

CStlImage LightOf(const night::NightSettings& settings)
{
    return ToImage(night::Night(settings).Light(0).counts);
}

/// Light around a place: peak exp(-(u / a)^2 / 2 - (v / b)^2 / 2), where u is along the diagonal.
struct Glow {
    double x;
    double y;
    double peak;
    double a = 1.4;
    double b = 1.4;
};

void AddGlow(const Glow& glow, CStlImage& image)
{
    for (int i = 0; i < kSize * kSize; ++i) {
        const double dx = i % kSize - glow.x;
        const double dy = i / kSize - glow.y;
        const double u = (dx + dy) * std::sqrt(0.5) / glow.a;
        const double v = (dx - dy) * std::sqrt(0.5) / glow.b;
        if (u * u + v * v < 100.0) {
            const double light = glow.peak * std::exp(-0.5 * (u * u + v * v));
            *image.GetImageAdr(i % kSize, i / kSize, 0) += static_cast<float>(light);
        }
    }
}

/// Width of the Gaussian about a place, on a level sky, that leaves the least squares: the plain way, width by width.
double FittedFwhm(const CStlImage& image, double x, double y, double fwhm)
{
    const int reach = static_cast<int>(2.0 * fwhm) + 1;
    double best = 0.0;
    double least = std::numeric_limits<double>::infinity();
    for (double width = 0.6 * fwhm; width < 1.6 * fwhm; width += 0.005 * fwhm) {
        double n = 0, g = 0, gg = 0, v = 0, gv = 0, vv = 0;
        for (int dy = -reach; dy <= reach; ++dy) {
            for (int dx = -reach; dx <= reach; ++dx) {
                const int px = static_cast<int>(x) + dx;
                const int py = static_cast<int>(y) + dy;
                const double square = std::pow(px - x, 2) + std::pow(py - y, 2);
                if (square <= 4.0 * fwhm * fwhm) {
                    const double shape = std::exp(-4.0 * std::log(2.0) * square / (width * width));
                    const double sample = image.GetPixelGrayRaw(px, py, 0);
                    n += 1, g += shape, gg += shape * shape, v += sample, gv += shape * sample, vv += sample * sample;
                }
            }
        }
        const double squares = vv - v * v / n - std::pow(gv - g * v / n, 2) / (gg - g * g / n);
        if (squares < least) {
            least = squares;
            best = width;
        }
    }
    return best;
}

/// The middle one of the widths that fits give to drawn stars, those that count.
template <class Counts>
double FittedFwhm(const CStlImage& image, const night::NightSettings& settings, Counts counts)
{
    std::vector<double> widths;
    for (const night::Star& truth : settings.ownStars) {
        if (counts(truth)) {
            widths.push_back(FittedFwhm(image, truth.x, truth.y, truth.fwhm));
        }
    }
    std::nth_element(widths.begin(), widths.begin() + widths.size() / 2, widths.end());
    return widths[widths.size() / 2];
}

void Fill(const CRect& area, float value, CStlImage& image)
{
    for (LONG y = area.top; y < area.bottom; ++y) {
        std::fill_n(image.GetImageAdr(area.left, y, 0), area.right - area.left, value);
    }
}

} // namespace

TEST(FindStars, MeasuresWhatWasDrawn)
{
    for (const auto profile : {night::Profile::kGaussian, night::Profile::kMoffat}) {
        for (const auto& [fwhm, faintest, factor, position, scatter] : {std::tuple(2.0, 200.0, 5.0, 0.02, 0.03),
                                                                        {3.3, 200.0, 5.0, 0.02, 0.03},
                                                                        {6.0, 200.0, 5.0, 0.03, 0.03},
                                                                        {3.3, 20.0, 2.5, 0.05, 0.1},
                                                                        {6.0, 20.0, 2.0, 0.06, 0.06},
                                                                        {8.0, 8.0, 1.0, 0.2, 0.2}}) {
            SCOPED_TRACE(testing::Message() << "FWHM " << fwhm << ", peak " << faintest);
            const night::NightSettings settings = LatticeNight(profile, fwhm, faintest, factor);
            const CStlImage light = LightOf(settings);
            const StarField field = FindFieldStars(light, 0);
            EXPECT_EQ(field.stars.size(), 100u);
            EXPECT_NEAR(field.fwhm / FittedFwhm(light, settings, [](const auto&) { return true; }), 1.0, 0.04);
            double square = 0.0;
            double flux = 0.0;
            for (const night::Star& truth : settings.ownStars) {
                const FieldStar* star = StarAt(field, truth.x, truth.y);
                ASSERT_NE(star, nullptr) << truth.x << ", " << truth.y;
                EXPECT_EQ(FlagWords(*star), std::vector<std::string>()) << truth.x << ", " << truth.y;
                EXPECT_NEAR(star->flux * settings.gain / truth.flux, 1.0, 4.0 * scatter);
                square += std::pow(star->x - truth.x, 2) + std::pow(star->y - truth.y, 2);
                flux += star->flux * settings.gain / truth.flux / 100.0;
            }
            EXPECT_LT(std::sqrt(square / 200.0), position);
            EXPECT_NEAR(flux, 1.0, std::max(0.03, scatter)); // wide wings lift the sky
        }
    }
}

TEST(FindStars, TakesTheWidthOfStarsAndNotOfKnotsOrHits)
{
    const auto isClear = [](const night::Star& star) { return std::hypot(star.x - 200, star.y - 200) > 140.0; };
    for (const auto& [profile, fwhm, glow, knots, hits] : {std::tuple(night::Profile::kGaussian, 1.8, 0.0, 300, 0),
                                                           {night::Profile::kMoffat, 2.5, 3000.0, 300, 0},
                                                           {night::Profile::kGaussian, 4.0, 20000.0, 200, 0},
                                                           {night::Profile::kMoffat, 6.0, 1000.0, 150, 0},
                                                           {night::Profile::kGaussian, 1.0, 0.0, 0, 600},
                                                           {night::Profile::kMoffat, 2.5, 0.0, 0, 1000}}) {
        SCOPED_TRACE(testing::Message() << "FWHM " << fwhm << ", hits " << hits);
        night::NightSettings settings = LatticeNight(profile, fwhm, 30.0, 20.0);
        settings.cosmicHits = hits;
        settings.hotPixels = 1e-5 * hits;
        CStlImage light = LightOf(settings);
        AddGlow(Glow{200, 200, glow, 40, 40}, light);
        test::Random random(5);
        for (int i = 0; i < knots; ++i) {
            const double away = random.Between(0.0, 110.0);
            const double turn = random.Between(0.0, 6.28);
            const double wide = fwhm / 2.355 * random.Between(1.3, 3.3);
            AddGlow(Glow{200 + away * std::cos(turn), 200 + away * std::sin(turn), random.Between(500.0, 5000.0), wide,
                         wide * random.Between(1.0, 1.3)},
                    light);
        }
        const double expected = FittedFwhm(light, settings, isClear);
        EXPECT_NEAR(FindFieldStars(light, 0).fwhm / expected, 1.0, 0.05);
        EXPECT_NEAR(FindFieldStars(light, 0, {.sigmas = 40.0}).fwhm / expected, 1.0, 0.05);
    }
}

TEST(FindStars, FindsFaintStarsAndLittleElse)
{
    const night::NightSettings settings = LatticeNight(night::Profile::kGaussian, 4.0, 4.0, 1.0);
    const StarField field = FindFieldStars(LightOf(settings), 0);
    const auto isFound = [&](const night::Star& truth) { return StarAt(field, truth.x, truth.y) != nullptr; };
    EXPECT_GE(std::count_if(settings.ownStars.begin(), settings.ownStars.end(), isFound), 97);
    EXPECT_LE(field.stars.size(), 103u);
}

TEST(FindStars, MarksWhatIsNoStarToMeasureWith)
{
    CStlImage light = LightOf(LatticeNight(night::Profile::kMoffat, 3.3, 30.0, 20.0));
    light.SetBlank(static_cast<int>(kBlank));
    light.SetBlankUsed(1);
    light.SetLevel(0, 0.0, kFull);
    const std::vector<CRect> branches = {
        {206, 180, 211, 202}, {196, 200, 205, 201}, {203, 201, 211, 202}, {196, 201, 197, 207}};
    const struct {
        std::vector<std::string> flags; ///< none where nothing is to be found
        double x;
        double y;
        std::vector<Glow> glows;
        float value = 0.0F;
        std::vector<CRect> areas{}; ///< of that value
    } cases[] = {
        {{"hot"}, 200, 200, {}, 9000, {{200, 200, 201, 201}}},
        {{"hot", "elongated"}, 201, 200, {}, 9000, {{200, 200, 203, 201}}},
        {{"elongated"}, 200, 200, {{200, 200, 3000, 4.0, 1.6}}},
        {{"elongated"}, 200, 200, {{200, 200, 3000, 4.0, 4.0}}},
        {{"edge"}, 1, 201, {{1, 201, 3000}}},
        {{"edge"}, 200, 200, {{200, 200, 3000}}, kNaN, {{201, 195, 206, 206}}},
        {{"crowded"}, 200, 200, {{200, 200, 3000}, {204, 203, 1500}}},
        {{"saturated", "elongated"}, 200, 200, {{200, 200, 9e5}}, kFull, {{200, 180, 201, 221}}}, // a column run over
        {{"saturated", "elongated"}, 207, 192, {}, kFull, branches}, // meets the large part of it by its second one
        {{}, 60, 60, {}, kNaN, {{45, 45, 75, 75}}},
        {{}, 60, 60, {}, kBlank, {{45, 45, 75, 75}}},
    };
    for (const auto& c : cases) {
        CStlImage image(light);
        for (const Glow& glow : c.glows) {
            AddGlow(glow, image);
        }
        image.CutOutOfLevel();
        for (const CRect& area : c.areas) {
            Fill(area, c.value, image);
        }
        const StarField field = FindFieldStars(image, 0);
        const FieldStar* const star = StarAt(field, c.x, c.y);
        EXPECT_EQ(star != nullptr ? FlagWords(*star) : std::vector<std::string>(), c.flags) << &c - cases;
        EXPECT_NEAR(static_cast<double>(field.stars.size()), 100.5, 2.5) << &c - cases;
        const auto isSaturated = [](const FieldStar& s) { return s.isSaturated; };
        EXPECT_LE(std::count_if(field.stars.begin(), field.stars.end(), isSaturated), 1) << &c - cases;
    }
}

TEST(FindStars, IsNotFloodedByATrail)
{
    CStlImage image = LightOf(LatticeNight(night::Profile::kMoffat, 3.3, 30.0, 20.0));
    AddGlow(Glow{200, 220, 900, 1e6}, image);
    const StarField field = FindFieldStars(image, 0);
    const auto isLong = [](const FieldStar& star) {
        return star.isElongated && std::fabs(star.y - star.x - 20.0) < 3.0;
    };
    EXPECT_EQ(std::count_if(field.stars.begin(), field.stars.end(), isLong), 1);
    EXPECT_LE(field.stars.size(), 103u);
}

TEST(FindStars, KnowsTheCeilingOfWholeNumbers)
{
    for (const auto& [bits, ceiling, isSaturated] :
         {std::tuple(16, 65535.0F, true), {16, 60000.0F, false}, {-32, 65535.0F, false}}) {
        CStlImage image = LightOf(LatticeNight(night::Profile::kGaussian, 3.3, 20.0, 10.0));
        AddGlow(Glow{200, 200, 40000}, image);
        image.SetPixelGrayRaw(200, 200, ceiling, 0);
        image.SetOrgBitsPixel(bits);
        EXPECT_EQ(StarAt(FindFieldStars(image, 0), 200, 200)->isSaturated, isSaturated) << bits << " bits, " << ceiling;
        EXPECT_TRUE(StarAt(FindFieldStars(image, 0, {.fullWell = 30000.0}), 200, 200)->isSaturated);
    }
}

TEST(FindStars, KeepsUsableStarsFirst)
{
    CStlImage image = LightOf(LatticeNight(night::Profile::kGaussian, 3.3, 20.0, 10.0));
    for (int i = 0; i < 50; ++i) { // brighter than any star
        image.SetPixelGrayRaw(40 + 7 * i, 40 + 80 * (i % 5), 60000, 0);
    }
    const StarField field = FindFieldStars(image, 0, {.limit = 30});
    ASSERT_EQ(field.stars.size(), 30u);
    for (std::size_t i = 0; i < 30; ++i) {
        EXPECT_TRUE(field.stars[i].IsUsable());
        EXPECT_GE(field.stars[i == 0 ? 0 : i - 1].flux, field.stars[i].flux);
    }
}

TEST(FindStars, FindsNothingWhereNothingIs)
{
    EXPECT_TRUE(FindFieldStars(CStlImage(), 0).stars.empty());
    for (const float value : {0.0F, 700.0F, kNaN, std::numeric_limits<float>::infinity(), -3e38F}) {
        for (const int size : {1, 3, 130}) {
            const CStlImage image = test::Make(size, size, 1, [=](int, int, int) { return value; });
            EXPECT_TRUE(FindFieldStars(image, 0).stars.empty()) << value << ", size " << size;
        }
    }
    night::NightSettings dark = LatticeNight(night::Profile::kGaussian, 3.0, 1e-6, 1.0);
    dark.hotPixels = 0.002;
    const StarField hot = FindFieldStars(LightOf(dark), 0);
    EXPECT_GT(hot.stars.size(), 50u);
    EXPECT_LE(std::count_if(hot.stars.begin(), hot.stars.end(), [](const auto& s) { return s.IsUsable(); }), 1);
}

TEST(FindStars, StaysInsideAwkwardImages)
{
    test::ForEachImage([](CStlImage& image) {
        for (const double sigmas : {1.0, 5.0}) {
            for (const FieldStar& star : FindFieldStars(image, image.GetPlanes() - 1, {.sigmas = sigmas}).stars) {
                EXPECT_LT(std::fabs(star.x), image.GetWidth() + 8.0);
                EXPECT_TRUE(std::isfinite(star.flux) && star.fwhm >= 0.0 && star.elongation >= 1.0);
            }
        }
    });
}

} // namespace corvane::stars
