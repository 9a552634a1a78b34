#include "catalogue/apply.h"

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
    frame = Apply(std::move(frame), {Step("dark", {{"frame", AsValue(dark)}}), "crop:rect=1:1:5:4"});
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

} // namespace
} // namespace corvane::catalogue
