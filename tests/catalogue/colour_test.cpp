#include <array>
#include <cmath>

#include "catalogue/colour_composite.h"
#include "corvane/geometry/flip.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

using Numbers = std::vector<double>;

/// What a frame shows: two stars of sigma 2 on a noisy sky, moved by (dx, dy).
struct Scene {
    double dx = 0.0;
    double dy = 0.0;
    double sky = 100.0;
    double star = 1000.0;
    int planes = 1;
};

std::vector<io::Frame> Shots(const std::vector<Scene>& scenes)
{
    const char* const names[] = {"r.fits", "g.fits", "b.fits"};
    std::vector<io::Frame> frames(scenes.size());
    test::Random noise(3);
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        const auto& [dx, dy, sky, star, planes] = scenes[i];
        const auto light = [&](int x, int y, double atX, double atY) {
            return std::exp(-(std::pow(x - dx - atX, 2) + std::pow(y - dy - atY, 2)) / 8.0);
        };
        frames[i].image = test::Make(160, 120, planes, [&](int x, int y, int) {
            return sky + star * (light(x, y, 60.3, 50.8) + 0.5 * light(x, y, 110.0, 70.0)) + noise.Between(-5, 5);
        });
        frames[i].image.SetOrgFileName(names[i]);
        frames[i].header.Set("FILTER", names[i]);
        frames[i].header.Set("EXPTIME", sky);
    }
    return frames;
}

ColourOptions Options(std::size_t frames, Registration registration = {})
{
    registration.frames.resize(frames);
    ColourOptions options;
    options.registration = registration;
    return options;
}

TEST(ColourComposite, BringsStarsTogetherThroughOtherSkiesAndFilters)
{
    for (const double sky : {100.0, -100.0, 5000.0}) { // one about zero must not upset the match
        for (const bool byPoints : {false, true}) {
            auto frames = Shots({{.sky = sky},
                                 {.dx = 7.4, .dy = -3.6, .sky = sky - 99.0, .star = 300.0},
                                 {.dx = -20.2, .dy = 11.7, .sky = 30.0, .star = 4000.0}});
            ColourOptions options = Options(3, {.align = byPoints ? "points" : "shift"});
            options.registration.at = byPoints ? Numbers() : Numbers{58.0, 52.0};
            for (int i = 0; byPoints && i < 3; ++i) {
                options.registration.frames[i].points = std::array<Numbers, 3>{{{58, 52}, {68, 47}, {40, 57}}}[i];
            }
            CImgFlip turned(frames[2].image); // the points are those of the file
            turned.Do(0, &frames[2].image, 0);
            frames[2].image.Swap(&turned);
            frames[0].header.Set("ROWORDER", "BOTTOM-UP");
            frames[2].header.Set("ROWORDER", "TOP-DOWN");
            options.registration.frames[2].shift = {1.0, 2.0};
            const std::vector<Fit> fits = RunRgb(frames, options, {});
            EXPECT_LT(std::hypot(fits[1].dx + 7.4, fits[1].dy - 3.6), 0.15) << byPoints << sky;
            EXPECT_LT(std::hypot(fits[2].dx - 21.2, fits[2].dy + 9.7), 0.15) << byPoints << sky;
            EXPECT_FALSE(frames[0].header.Has("FILTER") || frames[0].header.Has("EXPTIME"));
        }
    }
}

TEST(ColourComposite, KeepsUndefinedSamplesAndMovesTheFirstFramesCoordinates)
{
    auto frames = Shots({{}, {}, {}});
    frames[1].image.SetPixelGrayRaw(10, 10, -7.0F, 0);
    frames[1].image.SetBlank(-7);
    frames[1].image.SetBlankUsed(1);
    frames[0].image.SetCRPix(0, 61.0);
    frames[0].image.SetCRPix(1, 52.0);
    const float star = frames[0].image.GetPixelGrayRaw(60, 51, 0);
    ColourOptions options = Options(3);
    options.registration.frames[0] = {.shift = {20.0, -20.0}, .angle = 90.0};
    options.registration.frames[1].shift = {0.5, 0.0};
    RunRgb(frames, options, {});
    const CStlImage& image = frames[0].image;
    EXPECT_TRUE(std::isnan(image.GetPixelGrayRaw(10, 10, 1)) && std::isnan(image.GetPixelGrayRaw(11, 10, 1)));
    double x = 0.0;
    double y = 0.0;
    image.GetCRPix(0, &x);
    image.GetCRPix(1, &y);
    EXPECT_NEAR(image.GetPixelGrayRaw(static_cast<int>(x + 0.5) - 1, static_cast<int>(y + 0.5) - 1, 0), star, 0.01);
}

TEST(ColourComposite, GivesTheColourOfAScaledFrameToTheLuminance)
{
    auto frames = Shots({{.star = 1000.0}, {}});
    frames[0].image.SetLevel(0, 0.0, 1100.0);
    frames[1].image = test::Make(80, 60, 3, [](int x, int, int p) { // red on the left, blue on the right
        return p == (x < 40 ? 0 : 2) ? 200 : 50;
    });
    for (const int plane : {0, 1, 2}) {
        frames[1].image.SetLevel(plane, 0.0, 255.0);
    }
    ColourOptions options = Options(2);
    options.scale = 0.5;
    RunLrgb(frames, options, {});
    const CStlImage& image = frames[0].image;
    for (const int x : {3, 78, 81, 156}) { // up to the seam
        EXPECT_EQ(image.GetPixelGrayRaw(x, 51, 0) > image.GetPixelGrayRaw(x, 51, 2), x < 80) << x;
    }
    EXPECT_NEAR(image.GetLevelMin(0), 100.0 - 3.0 * 10.0 / std::sqrt(12.0), 0.5); // below the sky
}

} // namespace
} // namespace corvane::catalogue
