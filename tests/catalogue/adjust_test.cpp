#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "catalogue/error.h"
#include "catalogue/points.h"
#include "catalogue/step.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"

namespace corvane::catalogue {
namespace {

/// A row of the samples -10, 0, 51, 102 and 300 in each plane; black is 0 and white is 255.
io::Frame MakeFrame(int planes, int ownLevel)
{
    io::Frame frame;
    frame.image = test::Make(5, 1, planes, [](int x, int, int) {
        return std::array{-10.0, 0.0, 51.0, 102.0, 300.0}[static_cast<std::size_t>(x)];
    });
    for (int plane = 0; plane < planes; ++plane) {
        frame.image.CImage::SetLevel(plane, 0.0, 255.0);
    }
    frame.image.SetOwnLevel(ownLevel);
    return frame;
}

io::Frame After(const std::string& step, int planes, int ownLevel = 1)
{
    io::Frame frame = MakeFrame(planes, ownLevel);
    Run(ParseStep(step), frame, {});
    return frame;
}

std::string WriteFile(const std::string& text)
{
    const std::string path = (std::filesystem::path(testing::TempDir()) / "curve.txt").string();
    std::ofstream(path) << text;
    return path;
}

TEST(Adjust, ChangesTheSamplesThatItShould)
{
    const std::string rows = WriteFile("# lifted\n0, 0.2\n\n0.5 0.7 # half way\n1 1\r\n");
    const struct {
        std::string step;
        int planes;
        int plane;
        std::vector<float> samples;
    } cases[] = {
        {"brightness", 1, 0, {-8.5F, 4.0F, 67.75F, 131.5F, 379.0F}},
        {"contrast:contrast=-256,brightness=1,center=9", 3, 2, std::vector<float>(5, 10.0F)},
        {"balance:red=3,green=-1,blue=2.5", 3, 2, {-7.5F, 2.5F, 53.5F, 104.5F, 302.5F}},
        {"balance:red=3,green=-1,blue=2.5,rect=1:0:2:1", 1, 0, {-10.0F, 3.0F, 51.0F, 102.0F, 300.0F}},
        {"curve:points=0:0/1:1,entries=6", 1, 0, {0.0F, 0.0F, 51.0F, 102.0F, 300.0F}},
        {"curve:points=0:0.2/0.4:0.6/0.41:0.6,entries=6", 1, 0, {0.0F, 51.0F, 114.75F, 153.0F, 153.0F}},
        {"curve:red=0:1/1:0,entries=6", 3, 0, {0.0F, 255.0F, 204.0F, 153.0F, 0.0F}},
        {"curve:red=0:1/1:0,entries=6", 3, 1, {0.0F, 0.0F, 51.0F, 102.0F, 300.0F}},
        {"curve:entries=5,file=" + rows, 1, 0, {0.0F, 51.0F, 51.0F, 118.734375F, 280.3125F}},
        {"reduce-tone:levels=5", 1, 0, {0.0F, 0.0F, 0.0F, 51.0F, 204.0F}},
        {"false-color", 1, 2, {255.0F, 255.0F, 255.0F, 102.0F, 0.0F}},
        {"false-color:map=3,low=100,high=0", 1, 1, {255.0F, 255.0F, 119.85F, 0.0F, 0.0F}},
    };
    for (const auto& c : cases) {
        const io::Frame frame = After(c.step, c.planes);
        for (int x = 0; x < 5; ++x) {
            EXPECT_NEAR(frame.image.GetPixelGrayRaw(x, 0, c.plane), c.samples[static_cast<std::size_t>(x)], 1e-4F)
                << c.step << ", sample " << x;
        }
    }
}

TEST(Adjust, ChoosesLevelsForAFrameThatHasNone)
{
    for (const char* const step : {"brightness", "balance", "curve", "reduce-tone", "false-color"}) {
        for (const int ownLevel : {0, 1}) {
            EXPECT_EQ(After(step, 1, ownLevel).image.GetLevelMax(0) == 255.0, ownLevel == 1) << step;
        }
    }
}

TEST(Adjust, RefusesWhatDoesNotFitTheFrame)
{
    const struct {
        std::string step;
        int planes;
        std::string error;
    } cases[] = {
        {"curve:blue=0:0/1:1", 1, "curve: red, green and blue take a colour image of 3 planes; this one has 1"},
        {"false-color:high=0", 1, "false-color: low = 0, high = 0: they must differ"},
        {"false-color", 3, "false-color: takes an image of 1 plane; this one has 3"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(test::ErrorOf<Error>([&] { After(c.step, c.planes); }), c.error);
    }
}

TEST(Points, AreReadFromOneColumnOrTwo)
{
    const Points even = ReadPoints(WriteFile("0.1\n0.2\n0.9\n"));
    ASSERT_EQ(even.size(), 3U);
    EXPECT_EQ(even[1].x, 0.5);
    EXPECT_EQ(even[2].y, 0.9);
    const std::pair<const char*, const char*> faults[] = {
        {"", "a curve has two points or more"},
        {"0.5\n", "a curve has two points or more"},
        {"0 0\n0 1\n", "x must rise from point to point"},
        {"0 0\n1 1.5\n", "points must lie within 0 and 1"},
        {"0\n-\n", "line 2 is not one number or two"},
        {"0 0\n1 1 1\n", "line 2 is not one number or two"},
        {"0 0\n\n1\n", "line 3 has not as many numbers as those before"},
    };
    for (const auto& [text, fault] : faults) {
        const std::string file = WriteFile(text);
        test::ExpectError([&] { ReadPoints(file); }, file, fault);
    }
}

TEST(Points, MakeACurveThatGoesThroughThemWithoutSwinging)
{
    const Points points{{0.1, 0.3}, {0.2, 0.3}, {0.5, 0.9}, {0.6, 0.91}, {0.8, 0.4}};
    const std::vector<float> table = Tabulate(points, 1001);
    std::size_t next = 0;
    for (int i = 0; i <= 1000; ++i) {
        next += next < points.size() && i > points[next].x * 1000.0 ? 1 : 0;
        const Point& after = points[std::min(next, points.size() - 1)];
        const Point& before = points[next > 0 ? next - 1 : 0];
        EXPECT_GE(table[static_cast<std::size_t>(i)], std::min(before.y, after.y) - 1e-6) << i;
        EXPECT_LE(table[static_cast<std::size_t>(i)], std::max(before.y, after.y) + 1e-6) << i;
    }
    for (const Point& point : points) {
        EXPECT_NEAR(table[static_cast<std::size_t>(std::lround(point.x * 1000.0))], point.y, 1e-6);
    }
    // No kink at a point: the slopes on both sides of it are alike.
    EXPECT_NEAR(table[501] - table[500], table[500] - table[499], 2e-5);
}

} // namespace
} // namespace corvane::catalogue
