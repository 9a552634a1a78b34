#include "catalogue/step.h"

#include <algorithm>
#include <utility>

#include "catalogue/groups.h"
#include "catalogue/operations.h"
#include "corvane/core/error.h"
#include "corvane/platform/registry.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"

namespace corvane::catalogue {
namespace {

using test::ErrorOf;

TEST(Step, RefusesWhatIsWrongByNameValueAndRange)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "unknown step ''; `corvane ops` lists the steps"},
        {"Blur", "unknown step 'Blur'; did you mean gaussian, mean or median?"},
        {"inver", "unknown step 'inver'; did you mean invert?"},
        {"to", "unknown step 'to'; did you mean to-grey or to-color?"},
        {"auto-lveels", "unknown step 'auto-lveels'; did you mean auto-levels?"},
        {"to-grey:x=1", "to-grey: unknown parameter 'x'; it takes none"},
        {"invert:rect", "invert: 'rect' is not of the form key=value; a comma within a value is written twice"},
        {"invert:rct=0:0:1:1", "invert: unknown parameter 'rct'; did you mean rect?"},
        {"levels:low=1", "levels: unknown parameter 'low'; it takes min, max or plane"},
        {"levels:min=1,max=2,", "levels: '' is not of the form key=value; a comma within a value is written twice"},
        {"levels:max=1", "levels: min: must be given; it is any number"},
        {"levels:min=,max=1", "levels: min: has no value; it must be any number"},
        {"levels:min=1,min=2,max=3", "levels: min: is given twice"},
        {"levels:min=ten,max=1", "levels: min = ten: is not a number"},
        {"levels:min=nan,max=1", "levels: min = nan: is not a finite number"},
        {"levels:min=0,max=1e39", "levels: max = 1e39: must be any number that a sample can hold"},
        {"levels:min=2,max=2", "levels: max = 2: must be above min, 2"},
        {"levels:min=0,max=1,plane=1.5", "levels: plane = 1.5: is not a whole number"},
        {"levels:min=0,max=1,plane=3", "levels: plane = 3: must be 0 to 2"},
        {"auto-levels:low=100.5", "auto-levels: low = 100.5: must be -100 to 100"},
        {"auto-levels:per-plane=perhaps", "auto-levels: per-plane = perhaps: must be yes or no"},
        {"auto-levels:low=-2,high=2", "auto-levels: high = 2: must be above 2 with that low, or black would not lie "
                                      "below white"},
        {"invert:rect=1:2:3:4:5", "invert: rect = 1:2:3:4:5: must be left:top:right:bottom in whole pixels"},
        {"invert:rect=1:2:3:99999999999", "invert: rect = 1:2:3:99999999999: must be left:top:right:bottom in whole "
                                          "pixels"},
        {"invert:rect=5:2:5:9", "invert: rect = 5:2:5:9: is empty; right and bottom must lie beyond left and top"},
        {"dark", "dark: file: must be given; it is the name of a file"},
        {"composite:mode=sum", "'composite' is no step: it works on several images"},
        {"divide:value=0", "divide: value = 0: must not be 0"},
        {"vignette:k=0,base=0", "vignette: base = 0: must be 1e-06 to 1e+06"},
        {"curve:points=0:0/1", "curve: points = 0:0/1: must be x:y/x:y/..., points from 0:0 to 1:1"},
        {"curve:points=0:0", "curve: points = 0:0: a curve has two points or more"},
        {"curve:green=0:0/0:1", "curve: green = 0:0/0:1: x must rise from point to point"},
        {"curve:red=0:0/1:nan", "curve: red = 0:0/1:nan: points must lie within 0 and 1"},
        {"curve:points=0:0/1:1,file=x", "curve: file = x: points give the curve, too; one must go"},
        {"median:shape=3", "median: shape = 3: must be cross, square3, square5, 0, 1 or 2"},
        {"resize", "resize: factor: must be given, or else width, or height, or both of these"},
        {"resize:width=10,factor=2", "resize: factor = 2: width and height say the same; give one or the other"},
        {"rank:rank=9", "rank: rank = 9: must be 0 to 8 for a shape of 9 samples"},
        {"star-sharpen:shape=cross,rank=4.5", "star-sharpen: rank = 4.5: must be 0 to 4 for a shape of 5 samples"},
        {"lucy:sigma=0.29", "lucy: sigma = 0.29: must be 0.3 to 9"},
        {"lucy:gain=0", "lucy: gain = 0: must be 1e-06 to 1e+12"},
        {"wiener:sigma=9.1", "wiener: sigma = 9.1: must be 0.3 to 9"},
        {"maxent:fwhm=wide", "maxent: fwhm = wide: is not a number"},
        {"maxent:sigma=1,fwhm=auto", "maxent: fwhm = auto: sigma says the same; give one of them"},
        {"draw-text:text=\xC3\xA9,x=1,y=1", "draw-text: text = \xC3\xA9: must be printable ASCII characters"},
        {"draw-text:text=,x=1,y=1", "draw-text: text: has no value; it must be printable ASCII characters"},
        {"draw-line:x1=0,y1=0,x2=1,y2=1,thickness=0", "draw-line: thickness = 0: must be 0.1 to 10000"},
        {"invert:strength=1.1", "invert: strength = 1.1: must be 0 to 1"},
        {"flip:mask=a.fits", "flip: unknown parameter 'mask'; it takes direction"},
        {"star-mask:min=9,max=8", "star-mask: max = 8: must be at least min, 9"},
        {"hot-pixels:hot=no,cool=no", "hot-pixels: cool = no: must be yes with hot = no, or no pixel would change"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(ErrorOf<Error>([&] { ParseStep(text); }), error) << text;
    }
}

TEST(Step, WritesItselfSoThatItCanBeReadAgain)
{
    const std::pair<const char*, const char*> cases[] = {
        {"to-gray", "to-grey"},
        {"invert:rect=10:20:200:300", "invert:rect=10:20:200:300"},
        {"clip:max=+65535.0,min=0.10", "clip:min=0.1,max=65535"},
        {"levels:max=1e20,min=-1e-7", "levels:min=-1e-07,max=1e+20"},
        {"auto-levels:per-plane=on,high=2,low=0.1", "auto-levels:low=0.1,high=2,per-plane=yes"},
        {"dark:file=a,,b:c=d.fits", "dark:file=a,,b:c=d.fits"},
        {"draw-text:y=2,x=1,text= M31,, NGC 224 = a&b:c", "draw-text:text= M31,, NGC 224 = a&b:c,x=1,y=2"},
        {"curves:red=0:1/1:0,points=+0.0:.25/1:1e-3", "curve:points=0:0.25/1:0.001,red=0:1/1:0"},
    };
    for (const auto& [text, canonical] : cases) {
        EXPECT_EQ(ToText(ParseStep(text)), canonical);
        EXPECT_EQ(ToText(ParseStep(canonical)), canonical);
    }
}

TEST(Step, OpensItsFilesBeforeItWorks)
{
    for (const char* const step : {"dark:file=a,,b:c=d.fits", "curve:file=a,,b:c=d.fits"}) {
        test::ExpectError([&] { CheckFiles(ParseStep(step).arguments); }, "a,b:c=d.fits", "");
    }
}

// Another user's settings may differ: the text of a step holds those that it ran with.
TEST(Step, TakesDefaultsFromSettingsAndWritesThemDown)
{
    EXPECT_EQ(ToText(ParseStep("auto-levels:high=3")), "auto-levels:low=0.2,high=3,per-plane=no");
    CRegistry::Write("PrcAutoLevel", "Min", 0.75);
    CRegistry::Write("PrcAutoLevel", "Plane", 1);
    EXPECT_EQ(ToText(ParseStep("auto-levels")), "auto-levels:low=0.75,high=1,per-plane=yes");
    CRegistry::Write("PrcAutoLevel", "Min", 1000.0);
    EXPECT_EQ(ErrorOf<Error>([] { ParseStep("auto-levels"); }), "auto-levels: low = 1000: must be -100 to 100");
    CRegistry::Write("PrcAutoLevel", "Min", 0.2);
    CRegistry::Write("PrcAutoLevel", "Plane", 0);
}

template <class Work>
bool IsNull(const Work& work)
{
    return std::visit([](auto function) { return function == nullptr; }, work);
}

// Nothing in the list can be reached only by reading the source.
TEST(Operations, AreDescribedInFullAndFoundByEveryName)
{
    for (const Operation& operation : Operations()) {
        EXPECT_FALSE(operation.summary.empty() || operation.help.empty() || IsNull(operation.run)) << operation.name;
        EXPECT_LE(operation.summary.size(), 60U) << operation.name; // or the list would not have one line a step
        EXPECT_EQ(&FindOperation(operation.name), &operation);
        for (const std::string& alias : operation.aliases) {
            EXPECT_EQ(&FindOperation(alias), &operation) << alias;
        }
        for (const Parameter& parameter : operation.parameters) {
            EXPECT_FALSE(parameter.summary.empty()) << operation.name << " " << parameter.name;
            if (const std::optional<Value> value = DefaultValue(parameter)) {
                EXPECT_EQ(ToText(ParseValue(parameter, ToText(*value))), ToText(*value)) << parameter.name;
            }
        }
    }
}

TEST(Operations, AreFoundByWordsThatPeopleTry)
{
    const std::pair<const char*, const char*> cases[] = {
        {"ASINH", "curve"}, {"blur", "gaussian"}, {"cosmic", "hot-pixels"}, {"isophote", "contour"}, {"pixel", "bin"}};
    for (const auto& [word, name] : cases) {
        const std::vector<const Operation*> found = OperationsFor(word);
        EXPECT_EQ(std::count(found.begin(), found.end(), &FindOperation(name)), 1) << word;
    }
    EXPECT_TRUE(OperationsFor("to").empty());
}

} // namespace
} // namespace corvane::catalogue
