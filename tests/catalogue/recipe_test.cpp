#include "catalogue/recipe.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <numbers>
#include <sstream>
#include <utility>
#include <variant>
#include <vector>

#include "examples/night/night.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

class RecipeFile : public test::InFolder {};

Recipe RecipeIn(const std::string& text)
{
    std::istringstream stream(text);
    return ReadRecipe(stream, "my.recipe");
}

TEST(Recipe, IsAStepALine)
{
    const std::string text = "\n# sky\r\n  background:degree=1\r\n\tdraw-text:text=#1,, north,x=3,y=4\n\n";
    EXPECT_EQ(RecipeText(RecipeIn(text)), "background:degree=1\ndraw-text:text=#1,, north,x=3,y=4\n");
}

TEST_F(RecipeFile, ErrorsTellWhere)
{
    for (const auto& [text, reason] : {
             std::pair("", "has no step"),
             std::pair("# nothing\n\n", "has no step"),
             std::pair("invert\n\nmedain", "line 3: unknown step 'medain'; did you mean median?"),
             std::pair("clip:min=a\n", "line 1: clip: min = a: is not a number"),
             std::pair("invert # the sky\n", "line 1: unknown step 'invert # the sky'; `corvane ops` lists the steps"),
             std::pair("in\x01vert\n", "line 1: is no text; `corvane recipes FILE` prints the recipe of an image"),
         }) {
        EXPECT_EQ(test::ErrorOf([&] { RecipeIn(text); }), std::string("my.recipe: ") + reason);
    }
    EXPECT_EQ(test::ErrorOf([] { FindRecipe("nebual"); }),
              "recipe = nebual: must be galaxy, nebula, cluster or moon, or a file; did you mean nebula?");
    std::ofstream(Path("galaxy")) << "invert\n";
    EXPECT_EQ(RecipeText(FindRecipe(Path("galaxy"))), "invert\n"); // by its path it is a file
    EXPECT_EQ(test::ErrorOf([] {
                  RecipeText({Step("dark", {{"file", "a\nb"}})});
              }),
              "dark: a value has several lines; a recipe has a step a line");
}

TEST(Recipe, IsToldByTheHeaderOfAResult)
{
    io::Frame frame{test::Make(40, 30, 1, [](int x, int y, int) { return x + 40.0 * y; }), {}};
    EXPECT_EQ(RecipeOf(frame.header), "");
    frame.header.AddHistory("corvane stack a.fits b.fits");
    frame.header.AddHistory("by another program");
    EXPECT_EQ(RecipeOf(frame.header), "");
    const std::string text = "clip:min=5,max=900\ndraw-text:text=" + std::string(90, 'm') + ",x=1,y=9\n";
    RunRecipe(RecipeIn(text), frame, {});
    EXPECT_EQ(RecipeOf(frame.header), "# corvane stack a.fits b.fits\n" + text);
}

/// Stars on a sky that rises to the right; with planes of unequal skies, of which green shines brightest.
CStlImage FieldOfStars(int planes, bool hasStars)
{
    return test::Make(160, 120, planes, [=](int x, int y, int p) {
        const int noise = (x * 7919 + y * 104729 + p * 1299709) % 97;
        double v = 500.0 + 40.0 * (p == 1) + 0.5 * x + 0.2 * noise;
        for (int star = 0; star < 12 && hasStars; ++star) {
            const double dx = x - (20 + star % 4 * 40);
            const double dy = y - (20 + star / 4 * 40);
            v += (300.0 + 90.0 * star) * (1.0 + 0.2 * p) * std::exp(-(dx * dx + dy * dy) / 5.0);
        }
        return v;
    });
}

struct Developed {
    io::Frame frame;
    std::string leftOut; ///< the steps that were
};

Developed DevelopedBy(const std::string& recipe, CStlImage image)
{
    Developed developed{{std::move(image), {}}, ""};
    Run run;
    run.diagnostics = [&](const Diagnostic& diagnostic) {
        const Note* note = std::get_if<Note>(&diagnostic);
        if (note != nullptr && note->text.find(" is left out: the image ") != std::string::npos) {
            developed.leftOut += note->text.substr(0, note->text.find(' ')) + " ";
        }
    };
    RunRecipe(FindRecipe(recipe), developed.frame, run);
    return developed;
}

/// The place of a plane's mean between its display levels.
double MeanPlace(const CStlImage& image, int plane)
{
    double mean = 0.0;
    for (int i = 0; i < 160 * 120; ++i) {
        mean += image.GetPixelGrayRaw(i % 160, i / 160, plane) / (160.0 * 120.0);
    }
    return (mean - image.GetLevelMin(plane)) / image.GetLevelRange(plane);
}

TEST(ShippedRecipe, ShowsFramesOfOnePlaneAndInColour)
{
    for (const std::string name : {"galaxy", "nebula", "cluster"}) {
        SCOPED_TRACE(name);
        const Developed mono = DevelopedBy(name, FieldOfStars(1, true));
        EXPECT_EQ(mono.leftOut, "white-balance neutral-sky saturate ");
        const Developed colour = DevelopedBy(name, FieldOfStars(3, true));
        EXPECT_EQ(colour.leftOut, "");
        EXPECT_EQ(DevelopedBy(name, FieldOfStars(3, false)).leftOut, "white-balance ");
        for (const Developed* developed : {&mono, &colour}) {
            const CStlImage& image = developed->frame.image;
            EXPECT_NE(image.HasOwnLevel(), 0) << "a picture would be stretched again";
            for (int plane = 0; plane < image.GetPlanes(); ++plane) { // a dark sky, not cut off, as grey as it can be
                EXPECT_GT(MeanPlace(image, plane), 0.08);
                EXPECT_LT(MeanPlace(image, plane), 0.4);
                EXPECT_NEAR(MeanPlace(image, plane), MeanPlace(image, 0), 0.06);
            }
        }
    }
    CStlImage disk =
        test::Make(160, 120, 1, [](int x, int y, int) { return 40.0 + 9000.0 * (std::hypot(x - 80, y - 60) < 40.0); });
    disk.SetLevel(0, 40.0, 9040.0); // as those of a file that has none
    const Developed moon = DevelopedBy("moon", std::move(disk));
    EXPECT_EQ(moon.leftOut, "saturate ");
    EXPECT_NEAR(MeanPlace(moon.frame.image, 0), std::numbers::pi * 1600.0 / (160 * 120),
                0.01); // white on black, nothing else
}

/// The median brightness of a part of a plane, black 0 and white 1.
double Brightness(const CStlImage& image, const CRect& part, int plane)
{
    std::vector<double> samples;
    for (int y = part.top; y < part.bottom; ++y) {
        for (int x = part.left; x < part.right; ++x) {
            samples.push_back((image.GetPixelGrayRaw(x, y, plane) - image.GetLevelMin(plane)) /
                              image.GetLevelRange(plane));
        }
    }
    const auto middle = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() / 2);
    std::nth_element(samples.begin(), middle, samples.end());
    return *middle;
}

/// A raw light of a galaxy in a sky with a gradient and the colour of a town, made colour.
CStlImage Galaxy()
{
    night::NightSettings settings;
    settings.width = 320;
    settings.height = 240;
    settings.stars = 80;
    settings.exposure = 300.0;
    settings.skyGradient = 0.6;
    settings.vignetting = settings.hotPixels = settings.cosmicHits = settings.trails = 0;
    settings.bayer = "RGGB";
    settings.galaxy = 60.0;
    const night::Frame light = night::Night(settings).Light(0);
    io::Frame frame{night::ToImage(light.counts), light.header};
    RunStep("debayer", frame, {});
    return frame.image;
}

TEST(ShippedRecipe, ShowsAGalaxyOnAnEvenGreySky)
{
    const CRect left(5, 5, 45, 235);
    const CRect right(275, 5, 315, 235);
    const CRect core(158, 118, 163, 123);
    const CRect arms(140, 100, 180, 140);
    const CStlImage raw = Galaxy();
    ASSERT_GT(Brightness(raw, right, 0) - Brightness(raw, left, 0), 0.04); // before any stretch
    for (const std::string name : {"galaxy", "nebula", "cluster"}) {
        SCOPED_TRACE(name);
        const CStlImage shown = DevelopedBy(name, raw).frame.image;
        for (int plane = 0; plane < 3; ++plane) {
            const double sky = Brightness(shown, left, plane);
            EXPECT_NEAR(Brightness(shown, right, plane), sky, 0.03);
            EXPECT_NEAR(Brightness(shown, left, 1), sky, 0.03) << "the sky has a colour";
            EXPECT_LT(sky, 0.2);
            EXPECT_GT(Brightness(shown, arms, plane), sky + 0.15) << "the arms are lost";
            EXPECT_GT(Brightness(shown, core, plane), Brightness(shown, arms, plane) + 0.1) << "the core is burnt out";
        }
        const auto redness = [&](const CRect& part) { return Brightness(shown, part, 0) - Brightness(shown, part, 2); };
        EXPECT_GT(redness(core), redness(arms) + 0.03);
    }
}

} // namespace
} // namespace corvane::catalogue
