#include <algorithm>

#include "examples/night/colour_filters.h"
#include "examples/night/night.h"
#include "tests/stack/test_night.h"
#include "tests/stars/star_at.h"

namespace corvane::stack {

namespace {

constexpr int kSide = 650;

/// A night of five lights whose field drifts and turns.
night::NightSettings Drifting(double fwhm = 3.0, const char* bayer = "")
{
    night::NightSettings settings;
    settings.width = settings.height = kSide;
    settings.lights = 5;
    settings.stars = 250;
    settings.faintest = 60.0;
    settings.fwhm = fwhm;
    settings.bayer = bayer;
    settings.driftX = 17.3;
    settings.driftY = -9.6;
    settings.turn = 0.35;
    return settings;
}

} // namespace

class AlignStarsTest : public Night {
protected:
    /// Saves a light of a night; "turned.fits" as a mount gives it that was turned over.
    std::string SaveLight(const std::string& name, const night::Night& night, int i, double exposure = 60.0)
    {
        CStlImage image = ToImage(night.Light(i).counts);
        std::string pattern = night.Settings().bayer;
        if (name == "turned.fits") {
            std::reverse(image.GetImageAdr(0, 0, 0), image.GetImageAdr(0, 0, 0) + kSide * kSide);
            std::reverse(pattern.begin(), pattern.end());
        }
        return Save(name, image, exposure, [&](io::Header& header) { header.Set("BAYERPAT", pattern); });
    }
};

TEST_F(AlignStarsTest, PlacesLightsWhereTheyLie)
{
    for (const auto& [fwhm, bayer] :
         {std::pair(2.0, ""), {3.0, ""}, {4.5, ""}, {6.0, ""}, {2.5, "RGGB"}, {4.0, "GBRG"}}) {
        SCOPED_TRACE(testing::Message() << "FWHM " << fwhm << ' ' << bayer);
        const night::Night night(Drifting(fwhm, bayer));
        Options options;
        for (int i = 0; i < 5; ++i) {
            options.lights.push_back(SaveLight(i == 4 ? "turned.fits" : std::to_string(i) + ".fits", night, i));
        }
        const Registration lights = stack::Register(options);
        const int reference = lights.referenceLight;
        const auto turned = [](int i, const night::Point& p) {
            return i == 4 ? night::Point{kSide - 1 - p.x, kSide - 1 - p.y} : p;
        };
        for (int i = 0; i < 5; ++i) {
            const FrameReport& light = lights.frames[static_cast<std::size_t>(i)];
            ASSERT_EQ(light.reason, "");
            const night::Placement truth = night.PlacementOf(i);
            const night::Point inFirst = truth.ToFirst(turned(i, {truth.centreX, truth.centreY}));
            const night::Point at = turned(reference, night.PlacementOf(reference).ToLight(inFirst));
            EXPECT_NEAR(light.dx, at.x - truth.centreX, 0.1) << i;
            EXPECT_NEAR(light.dy, at.y - truth.centreY, 0.1) << i;
            const double turn = truth.degrees - night.PlacementOf(reference).degrees;
            EXPECT_NEAR(std::remainder(light.angle - turn - ((i == 4) == (reference == 4) ? 0 : 180), 360), 0, 0.01);
            EXPECT_NEAR(light.fwhm, std::hypot(fwhm, 0.68), 0.12 * fwhm); // the blur of a pixel is part of it
            EXPECT_NEAR(light.fluxRatio.value_or(0.0), 1.0, 0.03);
            EXPECT_LE(light.matched, light.stars);
        }
    }
}

TEST_F(AlignStarsTest, TakesNoStrayLightForReference)
{
    night::NightSettings settings = Drifting(2.5);
    settings.strayLights = {2};
    const night::Night night(Drifting());
    Options options;
    options.lights = {SaveLight("0.fits", night, 0), SaveLight("1.fits", night, 1), SaveLight("3.fits", night, 3),
                      SaveLight("sharpest.fits", night::Night(settings), 2)};
    const Registration lights = stack::Register(options);
    EXPECT_LT(lights.frames[3].fwhm, lights.frames[lights.referenceLight].fwhm);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(lights.frames[i].used, i < 3);
    }
}

TEST_F(AlignStarsTest, MosaicsBecomeStarsInTheirColours)
{
    const night::Night night(Drifting(3.5, "RGGB"));
    Options options;
    options.lights = {SaveLight("0.fits", night, 0), SaveLight("turned.fits", night, 4)};
    options.referenceFile = options.lights[0];
    options.method = CombineMethod::kClippedMean;
    const Result result = stack::Stack(options);
    ASSERT_EQ(result.image.GetPlanes(), 3);
    EXPECT_EQ(result.header.Text("BAYERPAT"), std::nullopt);
    EXPECT_FALSE(Holds(result.header.History().at(0), "--bayer")) << "the lights have two patterns";
    int count = 0;
    for (int plane : {0, 2}) {
        const stars::StarField green = stars::FindFieldStars(result.image, 1);
        const stars::StarField field = stars::FindFieldStars(result.image, plane);
        for (const night::Star& truth : night.StarsOf(0)) {
            const stars::FieldStar* const star = stars::StarAt(field, truth.x, truth.y);
            const stars::FieldStar* const other = stars::StarAt(green, truth.x, truth.y);
            if (truth.flux > 60000.0 && star && other && star->IsUsable() && other->IsUsable()) {
                const auto share = [&](char filter) { return night::StarShare(filter, truth.redness); };
                EXPECT_NEAR(star->flux / other->flux * share('G') / share("RGB"[plane]), 1.0, 0.1);
                EXPECT_NEAR(std::hypot(star->x - other->x, star->y - other->y), 0.0, 0.15);
                ++count;
            }
        }
    }
    EXPECT_GT(count, 30);
}

TEST_F(AlignStarsTest, LeavesOutByNameWhatDoesNotShowTheField)
{
    night::NightSettings settings = Drifting();
    settings.strayLights = {2};
    settings.cloudyLights = {3};
    const night::Night night(settings);
    const CStlImage light = ToImage(night.Light(1).counts);
    const auto mirror = [&](int x, int y, int) { return light.GetPixelGrayRaw(kSide - 1 - x, y, 0); };
    const std::pair<std::string, const char*> bad[] = {
        {Save("starless.fits", Sky(kSide, kSide, 1, {})), "0 usable stars"},
        {SaveLight("other.fits", night, 2), "stars"},
        {SaveLight("longer.fits", night, 2, 600.0), "stars"},
        {Save("mirrored.fits", Make(kSide, kSide, 1, mirror)), "mirror"},
        {SaveLight("cloudy.fits", night, 3), "times the light of the reference's"},
    };
    Options options;
    options.lights = {SaveLight("good.fits", night, 0)};
    for (const auto& [file, reason] : bad) {
        options.lights.push_back(file);
    }
    options.referenceFile = options.lights[0];
    const Registration lights = stack::Register(options);
    const std::string error = ErrorOf([&] { stack::Stack(options); });
    EXPECT_PRED2(Holds, error, "good.fits: no other light can be stacked with it: ");
    for (std::size_t i = 0; i < std::size(bad); ++i) {
        const FrameReport& left = lights.frames[i + 1];
        EXPECT_PRED2(Holds, left.reason, bad[i].second) << left.file;
        EXPECT_PRED2(Holds, error, left.file + ": " + left.reason);
        EXPECT_EQ(left.weight, 0.0);
    }
    EXPECT_EQ(lights.frames[2].reason, lights.frames[3].reason) << "its exposure does not matter";
}

TEST_F(AlignStarsTest, BringsLightsToTheReferenceAndCoversWhatTheyHave)
{
    night::NightSettings settings = Drifting();
    settings.vignetting = settings.pixelResponseSpread = settings.hotPixels = settings.cosmicHits = 0.0;
    settings.dustShadows = settings.trails = 0;
    const night::Night night(settings);
    const CStlImage light = ToImage(night.Light(1).counts);
    const auto hazy = [&](int x, int y, int) { return 400.0 + 0.6 * light.GetPixelGrayRaw(x, y, 0); };
    Options options;
    options.lights = {Save("hazy.fits", Make(kSide, kSide, 1, hazy)), SaveLight("clear.fits", night, 0)};
    options.referenceFile = options.lights[1];
    options.method = CombineMethod::kClippedMean;
    options.wantsCoverage = true;
    const Result result = stack::Stack(options);
    const Alignment placed = result.frames[0].PlacedAbout(CfPoint(kSide / 2, kSide / 2));
    for (int i = 0; i < kSide * kSide; ++i) {
        const Position at = placed.Map(i % kSide, i / kSide);
        const bool isInside = at.x >= 0.0 && at.y >= 0.0 && at.x <= kSide - 1 && at.y < kSide;
        ASSERT_EQ(result.coverage.GetPixelGrayRaw(i % kSide, i / kSide, 0), isInside ? 2.0 : 1.0) << i;
    }
    const stars::StarField field = stars::FindFieldStars(result.image, 0);
    EXPECT_NEAR(field.sky, 500.0 + 60.0 * (settings.sky + settings.darkCurrent) / settings.gain, 1.0);
    double seen = 0.0;
    double drawn = 0.0;
    for (const night::Star& truth : night.StarsOf(0)) {
        const stars::FieldStar* const star = stars::StarAt(field, truth.x, truth.y);
        if (truth.flux > 60000.0 && star && star->IsUsable()) {
            seen += star->flux * settings.gain;
            drawn += truth.flux;
        }
    }
    EXPECT_NEAR(seen / drawn, 0.985, 0.015); // the rest falls beside the aperture
}

} // namespace corvane::stack
