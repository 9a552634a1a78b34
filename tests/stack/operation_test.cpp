#include "stack/operation.h"

#include <gtest/gtest.h>

#include "catalogue/names.h"
#include "catalogue/step.h"
#include "tests/support/error_of.h"

namespace corvane::stack {
namespace {

Options Asked(const char* operation, const catalogue::Settings& settings)
{
    static const std::vector<catalogue::Operation> operations = Operations();
    const catalogue::Operation& found = *catalogue::FindNamed(operations, operation);
    return OptionsOf({{"light", {"a.fits", "b.fits"}}, {"dark", {"d.fits"}}}, MakeArguments(found, settings));
}

TEST(StackOperation, AsksForWhatIsGivenAndForTheDefaultsOfOptions)
{
    const Options usual;
    const Options plain = Asked("register", {});
    EXPECT_EQ(plain.lights, (std::vector<std::string>{"a.fits", "b.fits"}));
    EXPECT_EQ(plain.darks, std::vector<std::string>{"d.fits"});
    EXPECT_EQ(plain.mosaic, usual.mosaic);
    EXPECT_EQ(Asked("stack", {}).normalise, usual.normalise);

    const Options asked = Asked("stack", {{"bayer", "GBRG"},
                                          {"align", "shift"},
                                          {"star", "245.6,62.1"},
                                          {"reference", "b.fits"},
                                          {"normalise", "none"},
                                          {"reject-stars", 3},
                                          {"cosmetic", true},
                                          {"cosmic", true}});
    EXPECT_EQ(asked.mosaic, MosaicUse::kPattern);
    EXPECT_EQ(asked.pattern, BayerPattern::kGbrg);
    EXPECT_EQ(asked.reference->x, 246);
    EXPECT_EQ(asked.reference->y, 62);
    EXPECT_EQ(asked.referenceFile, "b.fits");
    EXPECT_EQ(asked.normalise, NormaliseMethod::kNone);
    EXPECT_EQ(asked.rejectStars, 3.0);
    EXPECT_TRUE(asked.cosmetic && asked.cosmic);
    EXPECT_EQ(Asked("stack", {{"bayer", "none"}, {"align", "none"}}).mosaic, MosaicUse::kKeep);
    EXPECT_EQ(test::ErrorOf([] {
                  Asked("register", {{"method", "median"}});
              }).substr(0, 26),
              "unknown parameter 'method'");
}

} // namespace
} // namespace corvane::stack
