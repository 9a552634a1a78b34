#include "stack/parts/saved_plan.h"

#include <bit>
#include <limits>

#include "stack/parts/option_fields.h"
#include "stars/sky_blocks.h"
#include "tests/stack/test_night.h"

namespace corvane::stack {

namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();
constexpr double kEndless = std::numeric_limits<double>::infinity();

/// Options of which none is as usual.
Options UnusualOptions()
{
    Options options;
    options.bias = {"b 1.fits", "b \"2\".fits"};
    options.darks = {"d.fits"};
    options.flats = {"f\xc3\xa9.fits"};
    options.flatDarks = {"fd.fits"};
    options.flatsAreCalibrated = true;
    options.lights = {"a.fits", "b.fits[1]"};
    options.sets = {{.bias = {"own.fits"}}, {.flats = {"other.fits"}}};
    options.setOfLight = {1, 0};
    options.method = CombineMethod::kClippedMedian;
    options.combine = CombineBy::kMax;
    options.reject = {RejectMethod::kMad, 0.1, 1.0 / 3.0, 7};
    options.filter = "Ha";
    options.allowMixed = true;
    options.mastersFolder = "masters";
    options.align = AlignMethod::kShift;
    options.referenceFile = "a.fits";
    options.alignsScale = true;
    options.onto = "onto.fits";
    options.follow = {{1e-9, 2.5, "a.fits"}, {3.25, 1e300, "b.fits[1]"}};
    options.wantsBoth = true;
    options.canvas = Canvas::kUnion;
    options.registered = "placed";
    options.transform = stars::MapModel::kHomography;
    options.reference = PixelPlace{3, 4};
    options.size = 9;
    options.search = 10;
    options.rejectFwhm = 1.1;
    options.rejectStars = 2.2;
    options.rejectBackground = 3.3;
    options.mosaic = MosaicUse::kPattern;
    options.pattern = BayerPattern::kGbrg;
    options.demosaic = DemosaicMethod::kBilinear;
    options.normalise = NormaliseMethod::kLocal;
    options.weight = WeightMethod::kStars;
    options.coverage = Coverage::kAll;
    options.interpolation = Interpolation::kBicubic;
    options.drizzle = 1.7;
    options.drop = 0.3;
    options.dropShape = DropKernel::kPoint;
    options.wantsWeights = options.cosmetic = options.cosmic = options.wantsCoverage = true;
    options.wantsRejected = options.wantsNoise = options.wantsReport = true;
    options.pedestal = 100.1;
    return options;
}

LightRecord UnusualLight()
{
    LightRecord light{{"a.fits"}, {}, {}};
    FrameReport& report = light.report;
    report.used = false;
    report.reason = "it is \\ \"odd\"\n";
    report.dx = 0.1;
    report.dy = -0.0;
    report.angle = 1e-17;
    report.scale = 1.0 + 1e-15;
    report.residual = kNoNumber;
    report.fwhm = kEndless;
    report.noise = -kEndless;
    report.model = stars::MapModel::kDistortion;
    report.map = FieldMap{{0.1, 0.2, 0.3}, {1.0 / 3.0}, 0.0, 0.0, 5.0, 6.0, 7.7};
    report.fluxRatio = 0.7;
    report.cosmicHits = 3;
    report.weight = 0.123456789012345678;
    light.seen.levels = {{1.1, 2.2, 3.3}, {4.4, 5.5, kNoNumber}};
    light.seen.stars = {{1.1, 2.2, 3.3, 4.4, 5.5, 6.6, 7.7, 8.8, true, false, true, false, true}, {}};
    light.seen.sky = {stars::UnknownSkyBlocks(50, 34), stars::UnknownSkyBlocks(7, 90)};
    light.seen.sky[0].Value(2, 1) = 0.1F;
    light.seen.thumbnail = test::Make(5, 3, 1, [](int x, int y, int) { return 0.1 * x - y; });
    light.hits = {{{3, 1, 0.1F}, {2, 5, -1e30F}}, {}};
    return light;
}

/// The same text, with one part in place of another.
std::string With(std::string text, const std::string& part, const std::string& other)
{
    const std::size_t at = text.find(part);
    EXPECT_NE(at, std::string::npos) << part;
    return text.replace(at, part.size(), other);
}

} // namespace

TEST(SavedPlan, KeepsEveryOption)
{
    const Options unusual = UnusualOptions();
    const Json changed = JsonOf(unusual);
    const Json usual = JsonOf(Options());
    for (const auto& [name, value] : changed.items()) {
        EXPECT_NE(value, usual.at(name)) << name << " is as usual: nothing would show that it was lost";
    }
    EXPECT_EQ(JsonOf(OptionsOfText(ToText(unusual), "o.json")), changed);
    EXPECT_EQ(JsonOf(OptionsOfText(ToText(Options()), "o.json")), usual);
}

TEST(SavedPlan, KeepsTheBitsOfALight)
{
    const LightRecord light = UnusualLight();
    const LightRecord read = LightOfText(ToText(light), "l.json");
    EXPECT_EQ(ToText(read), ToText(light));
    EXPECT_TRUE(std::signbit(read.report.dy));
    EXPECT_TRUE(std::isnan(read.report.residual));
    EXPECT_EQ(read.report.noise, -kEndless);
    EXPECT_EQ(read.report.scale, light.report.scale);
    EXPECT_EQ(read.report.map->y[0], 1.0 / 3.0);
    EXPECT_EQ(read.seen.stars[0].elongation, 8.8);
    EXPECT_TRUE(read.seen.stars[0].isCrowded && !read.seen.stars[0].isAtEdge && read.seen.stars[0].isElongated);
    EXPECT_EQ(read.seen.sky[0].Columns(), 3);
    EXPECT_EQ(read.seen.sky[0].Value(2, 1), 0.1F);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(read.seen.sky[1].Value(0, 4)),
              std::bit_cast<std::uint32_t>(light.seen.sky[1].Value(0, 4)));
    EXPECT_EQ(test::Samples(read.seen.thumbnail), test::Samples(light.seen.thumbnail));
    EXPECT_EQ(read.hits[0][1].mended, -1e30F);
}

TEST(SavedPlan, RefusesWhatIsDamaged)
{
    SavedPlan plan;
    plan.options.lights = {"a.fits"};
    plan.lights.push_back(UnusualLight());
    const std::string text = ToText(plan);
    EXPECT_EQ(ToText(PlanOfText(text, "p.json")), text);
    EXPECT_NE(PlanOfText(text, "p.json").key, PlanOfText(text + "\n", "p.json").key);
    const std::string sky = PackFloats({0.1F});
    const std::pair<std::string, const char*> cases[] = {
        {"", "is no plan of a stack, or damaged"},
        {"[]", "is no plan"},
        {ToText(plan.options), "is no plan"},
        {text.substr(0, text.size() / 2), "is no plan"},
        {With(text, CORVANE_VERSION, "9.9"), "was made by version 9.9; this is"},
        {With(text, "\"reference_light\":0", "\"reference_light\":1"), "its reference is no light"},
        {With(text, "\"reference_light\":0", "\"reference_light\":-1"), "its reference is no light"},
        {With(text, "\"lights\":[\"a.fits\"]", "\"lights\":[]"), "its lights are others"},
        {With(text, "\"align\":\"stars\"", "\"align\":\"moon\""), "\"moon\" is not known"},
        {With(text, "\"dx\":0.1", "\"dx\":1e7"), "no light can lie as a.fits"},
        {With(text, "\"dx\":0.1", "\"dx\":\"nan\""), "no light can lie as a.fits"},
        {With(text, "\"dx\":0.1", "\"dx\":\"far\""), "'far' is no number"},
        {With(text, "\"dx\":0.1", "\"dx\":[]"), "is no plan"},
        {With(text, "\"size\":7.7", "\"size\":0"), "no light can lie as a.fits"},
        {With(text, sky, "not hex!"), "'not hex!' is no sample"},
        {With(text, sky, ""), "there are 5 samples, not 6"},
        {With(text, "\"width\":48", "\"width\":2000000000"), "a sky has another size than it says"},
        {With(text, "\"width\":48", "\"width\":-1"), "a sky has another size than it says"},
        {With(text, "\"width\":5", "\"width\":0"), "a thumbnail has no size"},
    };
    for (const auto& [damaged, reason] : cases) {
        test::ExpectError([&text = damaged] { PlanOfText(text, "p.json"); }, "p.json", reason);
    }
}

} // namespace corvane::stack
