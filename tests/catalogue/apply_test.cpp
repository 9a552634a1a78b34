#include "catalogue/apply.h"

#include <cmath>

#include "corvane/core/error.h"
#include "corvane/filter/filter.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

TEST(Apply, MakesNewImagesAndLeavesTheGivenAsItIs)
{
    const CStlImage image = test::RandomImage({20, 15}, 1, 3);
    const std::vector<float> before = test::Samples(image);
    CImgFilter expected(image);
    expected.MedianFilter(1, image, nullptr, {});
    EXPECT_EQ(test::Samples(Apply(image, "median", {{"type", 1}})), test::Samples(expected));
    // Steps that change an image in its place, first or later, and one that takes new levels alone.
    for (const std::vector<Step>& steps :
         std::vector<std::vector<Step>>{{}, {"clip:min=50,max=60"}, {"brightness", "clip"}, {"auto-levels", "clip"}}) {
        CStlImage made = Apply(image, steps);
        EXPECT_EQ(test::Samples(image), before);
        made.SetPixelGrayRaw(3, 3, -1.0F, 0);
        EXPECT_EQ(test::Samples(image), before);
    }
}

TEST(Apply, TakesValuesOfEveryKind)
{
    const CStlImage image = test::Make(5, 4, 1, [](int x, int y, int) { return 10 * y + x; });
    const CStlImage dark = test::Make(5, 4, 1, [](int, int, int) { return 2; });
    io::Frame frame;
    frame.image = CStlImage(image);
    frame = Apply(frame, {Step("dark", {{"frame", AsValue(dark)}}), "crop:rect=1:1:5:4"});
    EXPECT_EQ(frame.image.GetPixelGrayRaw(0, 0, 0), 9.0F);
    EXPECT_EQ(frame.header.History().size(), 2U);
    EXPECT_EQ(Apply(image, "crop", {{"rect", CRect(1, 2, 4, 4)}}).GetPixelGrayRaw(0, 0, 0), 21.0F);
    EXPECT_EQ(Apply(image, "add", {{"value", 1}}).GetPixelGrayRaw(0, 0, 0), 1.0F);
    EXPECT_EQ(Apply(image, "subtract", {{"value", 1.5}, {"clip-negative", true}}).GetPixelGrayRaw(0, 0, 0), 0.0F);
    const std::pair<Settings, const char*> wrong[] = {
        {{{"value", 1e39}}, "add: value = 1e+39: must be any number that a sample can hold"},
        {{{"value", "much"}}, "add: value = much: is not a number"},
        {{{"value", 1}, {"value", 2}}, "add: value: is given twice"},
        {{{"value", 1}, {"rect", CRect(0, 0, 9, 9)}}, "add: rect = 0:0:9:9: must lie within the image, 0:0:5:4"}};
    for (const auto& [settings, error] : wrong) {
        EXPECT_EQ(test::ErrorOf<Error>([&] { Apply(image, "add", settings); }), error);
    }
}

/// The table that an operation makes of an image.
Table Told(const char* operation, const CStlImage& image, const Settings& settings, const char* output)
{
    Inputs inputs;
    inputs["image"].emplace_back().image = CStlImage(image);
    return std::get<Table>(Apply(operation, std::move(inputs), settings).at(output));
}

TEST(Apply, TellsNumbersInTables)
{
    CStlImage image = test::Make(60, 50, 1, [](int x, int y, int) { return 100 + (7 * x + 3 * y) % 5; });
    const std::pair<int, int> stars[] = {{15, 20}, {40, 30}};
    for (const auto& [x, y] : stars) {
        for (int i = 0; i < 81; ++i) {
            const int dx = i % 9 - 4;
            const int dy = i / 9 - 4;
            const double light = 900.0 * std::exp(-(dx * dx + dy * dy) / 4.0);
            image.SetPixelGrayRaw(x + dx, y + dy, image.GetPixelGrayRaw(x + dx, y + dy, 0) + static_cast<float>(light),
                                  0);
        }
    }
    const Table stats = Told("stats", image, {{"rect", CRect(0, 0, 5, 1)}}, "planes");
    EXPECT_EQ(stats.rows, (std::vector<std::vector<Cell>>{{0.0, 104.0, 100.0, 102.0, 102.0, 5.0, 0.0, 0.0}}));
    EXPECT_EQ(Told("find-stars", image, {}, "stars").rows.size(), 2U);
    const Table measured = Told("stars", image, {{"at", std::vector{41.0, 30.0, 14.0, 20.0}}}, "stars");
    EXPECT_NEAR(std::get<double>(measured.rows.at(1).at(1)), 15.0, 0.1);
    EXPECT_EQ(test::ErrorOf<Error>([&] {
                  Told("stars", image, {{"at", std::vector{1.0, 2.0, 3.0}}}, "stars");
              }),
              "stars: at = 1,2,3: must be X,Y,...");
    EXPECT_EQ(test::ErrorOf<Error>([&] {
                  Told("stars", image, {{"at", std::vector{1.0, 50.0}}}, "stars");
              }),
              "stars: at = 1,50: must lie within the image, 0,0 to 59,49");
    EXPECT_EQ(test::ErrorOf<Error>([&] { Step("stats"); }), "'stats' is no step: it makes no image");
}

} // namespace
} // namespace corvane::catalogue
