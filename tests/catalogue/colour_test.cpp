#include <cmath>

#include "catalogue/apply.h"
#include "catalogue/placement.h"
#include "corvane/geometry/flip.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

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

Outputs Compose(const char* operation, std::vector<io::Frame> frames, const Settings& settings)
{
    Inputs inputs;
    const auto names = frames.size() == 3 ? std::vector{"r", "g", "b"} : std::vector{"l", "rgb"};
    for (std::size_t i = 0; i < frames.size(); ++i) {
        inputs[names[i]].push_back(std::move(frames[i]));
    }
    return Apply(operation, std::move(inputs), settings);
}

TEST(ColourComposite, BringsStarsTogetherThroughOtherSkiesAndFilters)
{
    for (const double sky : {100.0, -100.0, 5000.0}) { // one about zero must not upset the match
        for (const bool byPoints : {false, true}) {
            auto frames = Shots({{.sky = sky},
                                 {.dx = 7.4, .dy = -3.6, .sky = sky - 99.0, .star = 300.0},
                                 {.dx = -20.2, .dy = 11.7, .sky = 30.0, .star = 4000.0}});
            Settings settings = {{"align", "shift"}, {"at", "58,52"}, {"shift3", "1,2"}};
            if (byPoints) { // those of the file
                settings = {{"align", "points"},
                            {"points", "58,52"},
                            {"points2", "68,47"},
                            {"points3", "40,57"},
                            {"shift3", "1,2"}};
            }
            CImgFlip turned(frames[2].image);
            turned.Do(0, &frames[2].image, 0);
            frames[2].image.Swap(&turned);
            frames[0].header.Set("ROWORDER", "BOTTOM-UP");
            frames[2].header.Set("ROWORDER", "TOP-DOWN");
            const Outputs outputs = Compose("rgb", std::move(frames), settings);
            const std::vector<Fit> fits = FitsOf(std::get<Table>(outputs.at("fits")));
            const io::Header& header = std::get<io::Frame>(outputs.at("image")).header;
            EXPECT_LT(std::hypot(fits[1].dx + 7.4, fits[1].dy - 3.6), 0.15) << byPoints << sky;
            EXPECT_LT(std::hypot(fits[2].dx - 21.2, fits[2].dy + 9.7), 0.15) << byPoints << sky;
            EXPECT_FALSE(header.Has("FILTER") || header.Has("EXPTIME"));
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
    const Outputs outputs =
        Compose("rgb", std::move(frames), {{"shift1", "20,-20"}, {"angle1", 90}, {"shift2", "0.5,0"}});
    const CStlImage& image = std::get<io::Frame>(outputs.at("image")).image;
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
    const Outputs outputs = Compose("lrgb", std::move(frames), {{"scale", 0.5}});
    const CStlImage& image = std::get<io::Frame>(outputs.at("image")).image;
    for (const int x : {3, 78, 81, 156}) { // up to the seam
        EXPECT_EQ(image.GetPixelGrayRaw(x, 51, 0) > image.GetPixelGrayRaw(x, 51, 2), x < 80) << x;
    }
    EXPECT_NEAR(image.GetLevelMin(0), 100.0 - 3.0 * 10.0 / std::sqrt(12.0), 0.5); // below the sky
}

} // namespace
} // namespace corvane::catalogue
