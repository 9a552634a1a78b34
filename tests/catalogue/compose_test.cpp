// Frames of one field that lie anyhow: composed, mixed, and taken off each other, against what was drawn.

#include <cmath>
#include <limits>

#include "catalogue/apply.h"
#include "catalogue/onto_grid.h"
#include "catalogue/placement.h"
#include "corvane/core/kernel_sampler.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"
#include "tests/support/star_scene.h"
#include "tests/support/storage.h"

namespace corvane::catalogue {
namespace {

using test::Moved;
using test::StarScene;

io::Frame FrameOf(CStlImage image, const char* name)
{
    io::Frame frame{std::move(image), {}};
    frame.image.SetOrgFileName(name);
    return frame;
}

Inputs InputsOf(const std::vector<std::pair<const char*, CStlImage>>& images)
{
    Inputs inputs;
    for (const auto& [name, image] : images) {
        inputs[name].push_back(FrameOf(image, name));
    }
    return inputs;
}

const CStlImage& ImageIn(const Outputs& outputs)
{
    return std::get<io::Frame>(outputs.at("image")).image;
}

/// The largest difference from what was drawn of a plane that is `factor` times as bright plus `offset`, 60 pixels and
/// more from the border.
double MostOff(const CStlImage& image, int plane, const CStlImage& truth, double factor = 1.0, double offset = 0.0)
{
    double most = 0.0;
    for (int y = 60; y < truth.GetHeight() - 60; ++y) {
        for (int x = 60; x < truth.GetWidth() - 60; ++x) {
            const double off = image.GetPixelGrayRaw(x, y, plane) - factor * truth.GetPixelGrayRaw(x, y, 0) - offset;
            most = std::max(most, std::isnan(off) ? std::numeric_limits<double>::infinity() : std::fabs(off));
        }
    }
    return most;
}

const StarScene kBright{.noise = 0.5};
const StarScene kOther{.light = 0.3, .nebula = 40.0, .sky = 350.0, .noise = 0.5, .seed = 2};

/// How many samples are off by more than the noise makes them.
int SamplesOff(const CStlImage& image, const CStlImage& truth)
{
    int off = 0;
    for (int i = 0; i < truth.GetWidth() * truth.GetHeight(); ++i) {
        const int x = i % truth.GetWidth();
        const int y = i / truth.GetWidth();
        off += std::fabs(image.GetPixelGrayRaw(x, y, 0) - truth.GetPixelGrayRaw(x, y, 0)) > 8.0F ? 1 : 0;
    }
    return off;
}

TEST(Compose, MatchesStarsWhenNothingIsSaid)
{
    const CStlImage first = test::Shot(kBright);
    const CStlImage truth = test::Shot(kOther);
    const CStlImage turned = test::Shot(Moved(kOther, 17.3, -6.8, 184.6));
    const CStlImage small = test::Shot(Moved({.size = {300, 260}, .light = 0.7, .noise = 0.5}, 90.0, 50.0, -2.0, 0.7));
    for (const auto& [how, factor, offset, most] :
         {std::tuple("none", 1.0, 0.0, 60.0), {"stars", 1.0 / 0.3, 200.0 - 350.0 / 0.3, 200.0}}) {
        const Outputs outputs =
            Apply("rgb", InputsOf({{"r", first}, {"g", turned}, {"b", small}}), {{"balance", how}, {"outside", -9}});
        const CStlImage& image = ImageIn(outputs);
        EXPECT_EQ(MostOff(image, 0, first), 0.0);
        EXPECT_LT(MostOff(image, 1, truth, factor, offset), most) << how; // of 4000 and more, between samples
        const std::vector<Fit> fits = FitsOf(std::get<Table>(outputs.at("fits")));
        EXPECT_NEAR(fits[1].dx, 17.3, 0.03);
        EXPECT_NEAR(std::fabs(fits[1].angle), 175.4, 0.01);
        EXPECT_NEAR(fits[2].scale, 0.7, 0.0003);
        EXPECT_GT(fits[2].stars, 20);
        EXPECT_EQ(image.GetPixelGrayRaw(0, 0, 2), -9.0F);
    }
}

TEST(Compose, GivesColoursOfASmallFrameToTheLuminance)
{
    const CStlImage first = test::Shot({.nebula = 900.0, .noise = 0.5});
    const CStlImage small =
        test::Shot(Moved({.size = {200, 180}, .nebula = 900.0, .noise = 0.5}, 140.0, 90.0, 0.3, 0.5));
    const CStlImage colour = test::Make(200, 180, 3, [&](int x, int y, int p) { // all red
        return 200.0 + (small.GetPixelGrayRaw(x, y, 0) - 200.0) * (1.0 - 0.4 * p);
    });
    const Outputs outputs = Apply("lrgb", InputsOf({{"l", first}, {"rgb", colour}}), {});
    EXPECT_NEAR(FitsOf(std::get<Table>(outputs.at("fits")))[1].scale, 0.5, 0.0005);
    const auto redness = [&](int x, int y) {
        return ImageIn(outputs).GetPixelGrayRaw(x, y, 0) / ImageIn(outputs).GetPixelGrayRaw(x, y, 2);
    };
    EXPECT_GT(redness(240, 180), 1.2);
    EXPECT_NEAR(redness(2, 180), 1.0, 1e-3); // where there is no colour frame
}

TEST(Compose, KeepsSamplesOfFramesOnOneGrid)
{
    const CStlImage other = test::Shot(kOther);
    const Outputs outputs = Apply("rgb", InputsOf({{"r", test::Shot(kBright)}, {"g", other}, {"b", other}}),
                                  {{"align", "stars"}, {"shift3", "1,0"}});
    EXPECT_EQ(MostOff(ImageIn(outputs), 1, other), 0.0);
    EXPECT_EQ(ImageIn(outputs).GetPixelGrayRaw(101, 90, 2), other.GetPixelGrayRaw(100, 90, 0)); // by hand, on top
    EXPECT_GT(FitsOf(std::get<Table>(outputs.at("fits")))[2].stars, 30);
}

TEST(Compose, ReadsBetweenSamplesTheSameOnThreadsAndFromPages)
{
    const CStlImage image = test::RandomImage({700, 500}, 3, 6);
    Alignment turn = Alignment::Turned(14.3, -60.2, 33.0, CfPoint(350, 250));
    turn.scale = 1.3;
    const auto onto = [&](const CStlImage& of, const Mapping& mapping, int threads) {
        return test::Samples(OntoGrid(of, mapping, 620, 640, {-1.0, -2.0, -3.0}, {.threads = threads}));
    };
    const std::vector<float> plain = onto(image, turn, 1);
    EXPECT_TRUE(test::SameSamples(onto(image, turn, 5), plain));
    const PlaneRows rows{image.GetImageAdr(0, 0, 1, 1), 700, 500, 0, 0.0F};
    for (int i = 0; i < 620 * 640; i += 97) {
        const Position at = turn.Map(i % 620, i / 620);
        const bool isInside = at.x >= 0.0 && at.x <= 699.0 && at.y >= 0.0 && at.y < 500.0;
        double v = -2.0;
        if (isInside) {
            SampleByKernel(rows, Interpolation::kLanczos3, &at.x, &at.y, 1, &v);
        }
        EXPECT_EQ(plain[620 * 640 + i], static_cast<float>(v)) << i;
    }
    const test::TightMemory tight(1 << 20);
    EXPECT_TRUE(test::SameSamples(onto(CStlImage(image), turn, 5), plain));
}

TEST(Compose, SaysWhatToDoWithoutStars)
{
    const CStlImage stars = test::Shot(kBright);
    const CStlImage few = test::Shot({.stars = 0});
    EXPECT_EQ(test::ErrorOf([&] {
                  Apply("cmy", InputsOf({{"c", stars}, {"m", few}, {"y", stars}}), {});
              }),
              "m: shows 0 stars, and it takes 3 to align by; align = none takes frames as they lie");
    EXPECT_EQ(
        MostOff(ImageIn(Apply("rgb", InputsOf({{"r", stars}, {"g", few}, {"b", stars}}), {{"angle2", 1e-9}})), 1, few),
        0.0); // a turn by hand: none are matched
}

/// Three lines of a nebula, of which the second and the third are fainter and lie elsewhere.
Inputs Lines(double second, double third)
{
    Inputs inputs;
    const StarScene scenes[] = {
        {.light = 0.1, .nebula = 500.0, .noise = 3.0},
        Moved({.light = 0.1, .nebula = second, .sky = 90.0, .noise = 3.0, .seed = 2}, 5.2, 3.3, 0.4),
        Moved({.light = 0.1, .nebula = third, .sky = 70.0, .noise = 3.0, .seed = 3}, -8.7, 1.2, 180.0)};
    for (const StarScene& scene : scenes) {
        inputs["lines"].push_back(FrameOf(test::Shot(scene), "line.fits"));
    }
    return inputs;
}

class Palette : public test::InFolder {};

TEST_F(Palette, BringsLinesToOneLight)
{
    const CStlImage first = test::Shot({.light = 0.1, .nebula = 500.0, .noise = 3.0});
    const Outputs outputs = Apply("palette", Lines(90.0, 60.0), {{"palette", "sho"}});
    EXPECT_EQ(MostOff(ImageIn(outputs), 1, first), 0.0); // green is the first, as it is
    for (const int plane : {0, 2}) {
        double sum = 0.0;
        double truth = 0.0;
        for (int i = 0; i < 40 * 30; ++i) {
            sum += ImageIn(outputs).GetPixelGrayRaw(220 + i % 40, 165 + i / 40, plane) - 200.0;
            truth += first.GetPixelGrayRaw(220 + i % 40, 165 + i / 40, 0) - 200.0;
        }
        EXPECT_NEAR(sum / truth, 1.0, 0.05) << plane;
        EXPECT_NEAR(ImageIn(outputs).GetPixelGrayRaw(60, 300, plane), 200.0, 60.0);
    }
    const Outputs faint = Apply("palette", Lines(0.0, 500.0), {{"palette", "hos"}}); // noise stays below the nebula
    EXPECT_LT(std::fabs(ImageIn(faint).GetPixelGrayRaw(240, 180, 1) - 200.0), 500.0);
}

TEST_F(Palette, IsTheMixOfItsMatrix)
{
    const std::string file = Write("mix.txt", "# red, green, blue\n1, 0.5\n\n0 -2 # minus\n0.25 0\n");
    const CStlImage a = test::RandomImage({17, 13}, 1, 4);
    const CStlImage b = test::RandomImage({17, 13}, 1, 5);
    CStlImage lacking(b);
    lacking.SetPixelGrayRaw(3, 3, std::numeric_limits<float>::quiet_NaN(), 0);
    const auto mixedBy = [&](const std::string& palette) {
        Inputs inputs;
        inputs["lines"].push_back(FrameOf(a, "a.fits"));
        inputs["lines"].push_back(FrameOf(lacking, "b.fits"));
        return Apply("palette", std::move(inputs), {{"palette", palette}, {"align", "none"}, {"balance", "none"}});
    };
    const Outputs outputs = mixedBy(file);
    for (int i = 0; i < 17 * 13; ++i) {
        const auto of = [i](const CStlImage& image, int plane) { return image.GetPixelGrayRaw(i % 17, i / 17, plane); };
        const bool isThere = i != 3 * 17 + 3;
        EXPECT_EQ(of(ImageIn(outputs), 2), 0.25F * of(a, 0));
        EXPECT_TRUE(isThere ? of(ImageIn(outputs), 0) == static_cast<float>(of(a, 0) + 0.5 * of(b, 0)) &&
                                  of(ImageIn(outputs), 1) == -2.0F * of(b, 0)
                            : std::isnan(of(ImageIn(outputs), 0)))
            << i;
    }
    for (const auto& [text, reason] : {std::pair("1 2\n3 4\n", "has 2 lines of numbers; a palette has three"),
                                       {"1 2\n3\n4 5\n", "line 2 has not as many numbers as those before"},
                                       {"1\nx\n2\n", "line 2 is not 1 to 16 numbers"},
                                       {"1\n2\nnan\n", "has a number that is not -1e6 to 1e6"}}) {
        const std::string bad = Write("bad.txt", text);
        test::ExpectError([&] { mixedBy(bad); }, bad, reason);
    }
    test::ExpectError([&] { mixedBy("shoo"); }, "shoo", "no such file, nor a palette: those are sho, hoo or hos");
    EXPECT_EQ(test::ErrorOf([&] { mixedBy("sho"); }), "palette: lines: is one of 2 images; the palette sho mixes 3");
}

TEST(Continuum, TakesStarsOffAndLeavesTheNebula)
{
    const CStlImage nebula = test::Shot({.nebula = 150.0, .sky = 60.0, .noise = 0.0, .stars = 0});
    const Settings byHand{{"factor", 0.12}};
    for (const auto& [narrowWidth, broadWidth, settings] :
         {std::tuple(3.2, 3.2, Settings()), {3.2, 3.2, byHand}, {2.7, 3.6, Settings()}, {3.6, 2.7, byHand}}) {
        SCOPED_TRACE(testing::Message() << narrowWidth << ' ' << broadWidth);
        const StarScene scene{.light = 0.12, .nebula = 150.0, .sky = 60.0, .fwhm = narrowWidth};
        // As much light at another width.
        const double light = std::pow(narrowWidth / broadWidth, 2);
        const CStlImage broad = test::Shot(
            Moved({.light = light, .sky = 700.0, .noise = 4.0, .fwhm = broadWidth, .seed = 8}, 6.6, -4.7, 0.8));
        const auto lineOf = [&](Settings with, bool isMatched) {
            with.push_back({"match", isMatched ? "width" : "none"});
            const Outputs outputs =
                Apply("continuum", InputsOf({{"narrow", test::Shot(scene)}, {"broad", broad}}), with);
            return ImageIn(outputs);
        };
        const CStlImage line = lineOf(settings, true);
        double seen = 0.0;
        double truth = 0.0;
        int defined = 0;
        for (int i = 0; i < 480 * 360; ++i) {
            const double v = line.GetPixelGrayRaw(i % 480, i / 480, 0);
            const double t = nebula.GetPixelGrayRaw(i % 480, i / 480, 0);
            defined += std::isnan(v) ? 0 : 1;
            seen += std::isnan(v) || t < 61.0 ? 0.0 : v - 60.0;
            truth += std::isnan(v) || t < 61.0 ? 0.0 : t - 60.0;
        }
        EXPECT_NEAR(seen / truth, 1.0, 0.01);
        EXPECT_GT(defined, 460 * 340);
        EXPECT_LT(defined, 480 * 360);
        EXPECT_LT(SamplesOff(line, nebula), 40); // in the steep flanks of the brightest stars
        EXPECT_EQ(SamplesOff(lineOf(settings, false), nebula) > 400, narrowWidth != broadWidth);
    }
    EXPECT_EQ(
        test::ErrorOf([&] {
            Apply("continuum", InputsOf({{"narrow", nebula}, {"broad", nebula}}), {{"align", "none"}});
        }),
        "continuum: broad: has 0 bright stars in common with the narrow band, and it takes 3 to tell the factor by; "
        "give factor");
}

} // namespace
} // namespace corvane::catalogue
