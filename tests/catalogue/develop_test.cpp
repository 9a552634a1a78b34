#include <cmath>
#include <utility>

#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "corvane/filter/filter.h"
#include "io/frame.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

/// A frame whose levels, in the first plane from 10.25, come from its file or not.
io::Frame LevelledFrame(int planes, int ownLevel)
{
    io::Frame frame;
    frame.image = test::RandomImage({60, 50}, planes, 8);
    frame.image.SetOwnLevel(ownLevel);
    return frame;
}

// What came without levels has those of its extreme samples, which say nothing of its sky.
TEST(Develop, ChoosesLevelsForAFrameThatHasNone)
{
    for (const char* const step : {"ddp", "smooth-background", "posterize", "contour", "brightness", "balance", "curve",
                                   "reduce-tone", "false-color"}) {
        for (const int planes : step == std::string("false-color") ? std::vector{1} : std::vector{1, 3}) {
            io::Frame kept = LevelledFrame(planes, 1);
            catalogue::RunStep(ParseStep(step), kept, {});
            EXPECT_EQ(kept.image.GetLevelMin(0), 10.25) << step;
            EXPECT_EQ(kept.image.GetLevelMax(planes - 1), planes == 1 ? 211.5 : 185.5) << step;
            io::Frame given = LevelledFrame(planes, 0);
            catalogue::RunStep(ParseStep(step), given, {});
            EXPECT_NE(given.image.GetLevelMin(0), 10.25) << step;
            EXPECT_NE(given.image.HasOwnLevel(), 0) << step;
        }
    }
}

TEST(Develop, DividesByThePlaneThatIsNamed)
{
    for (const auto& [word, selector] : {std::pair("red", 0), {"green", 1}, {"blue", 2}, {"all", 3}}) {
        io::Frame frame = LevelledFrame(3, 1);
        CImgFilter expected(frame.image);
        int plane = selector;
        expected.DigitalDvlp(400.0, 0.5, &frame.image, &plane, nullptr, 0);
        catalogue::RunStep(ParseStep(std::string("ddp:offset=400,weight=0.5,plane=") + word), frame, {});
        EXPECT_EQ(test::Samples(frame.image), test::Samples(expected)) << word;
    }
}

TEST(Develop, LeavesBlownCoresTheBrightestAndWithoutOutlines)
{
    for (const int planes : {1, 3}) {
        io::Frame frame;
        frame.image = test::Make(60, 50, planes, [](int x, int y, int p) {
            const double away = std::hypot(x - 30, y - 25);
            return away < 6.0 ? 65000.0 : 1000.0 + (x * 7 + y * 5) % 11 + 400.0 * (1 + p) * std::exp(-away / 8.0);
        });
        catalogue::RunStep(ParseStep("ddp:rect=5:5:60:50"), frame, {});
        EXPECT_NEAR(frame.image.GetPixelGrayRaw(4, 25, 0), 1010.0 + 400.0 * std::exp(-26.0 / 8.0), 1e-3);
        for (int p = 0; p < planes; ++p) {
            const float halo = frame.image.GetPixelGrayRaw(42, 25, p);
            for (int i = 0; i < 55 * 45; ++i) {
                const int x = 5 + i % 55;
                const int y = 5 + i / 55;
                const double away = std::hypot(x - 30, y - 25);
                const float v = frame.image.GetPixelGrayRaw(x, y, p);
                if (away < 6.0) {
                    EXPECT_GE(v, frame.image.GetPixelGrayRaw(30, 25, p)) << x << ',' << y;
                } else if (away < 8.0) {
                    EXPECT_GE(v, halo) << x << ',' << y;
                    EXPECT_LT(v, frame.image.GetPixelGrayRaw(30, 25, p)) << x << ',' << y;
                }
            }
        }
    }
}

TEST(Develop, RefusesWhatWouldDivideByZeroOrSpreadNaN)
{
    const auto errorOf = [](io::Frame frame, const char* step) {
        return test::ErrorOf<Error>([&] { catalogue::RunStep(ParseStep(step), frame, {}); });
    };
    EXPECT_EQ(errorOf(LevelledFrame(1, 1), "ddp:offset=10"),
              "ddp: offset = 10: must be above the level min of the image, 10.25");
    io::Frame frame = LevelledFrame(3, 1);
    frame.image.SetPixelGrayRaw(3, 3, NAN, 0);
    EXPECT_EQ(errorOf(std::move(frame), "ddp"),
              "ddp: image: has undefined samples in its first plane; fill them with the step fill");
}

} // namespace
} // namespace corvane::catalogue
