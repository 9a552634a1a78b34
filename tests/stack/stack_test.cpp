#include <utility>

#include "corvane/core/blank.h"
#include "corvane/geometry/flip.h"
#include "tests/stack/test_night.h"

namespace corvane::stack {

namespace {

double Ramp(int x, int y, int)
{
    return 1000 + 10 * y + x;
}

} // namespace

class WholeStackTest : public Night {
protected:
    std::string SaveRamp(const std::string& name, double exposure = 60.0, int width = 20, int planes = 1,
                         const char* pattern = "")
    {
        return Save(name, Make(width, 16, planes, Ramp), exposure,
                    [=](io::Header& header) { header.Set("BAYERPAT", pattern); });
    }
};

TEST_F(WholeStackTest, HeaderTellsWhatTheStackIsMadeOf)
{
    const CStlImage image = Make(20, 16, 1, Ramp);
    Options options;
    const char* const starts[] = {"2024-07-30T22:44:00", "2024-07-30T22:40:00", "2024-07-30T22:48:00.5"};
    const double exposures[] = {60.0, 60.0, 61.0};
    for (int i = 0; i < 3; ++i) {
        options.lights.push_back(Save("l" + std::to_string(i) + ".fits", image, exposures[i], [&](io::Header& header) {
            header.Set("OBJECT", "M 31");
            header.Set("DATE-OBS", starts[i]);
            header.Set("DATE-END", starts[i]);
            header.Set("MJD-OBS", 60521.9);
            header.Set("DATAMAX", 1170.0);
            header.Set("CALSTAT", "DX");
            header.Set("PEDESTAL", -100);
        }));
    }
    options.bias = {Save("b.fits", Make(20, 16, 1, [](int, int, int) { return 5; }), 0.0)};
    options.flats = {SaveRamp("f1.fits"), SaveRamp("f2.fits")};
    options.pedestal = 20.0;
    options.align = AlignMethod::kNone;
    options.method = CombineMethod::kClippedMean;
    const io::Header header = stack::Stack(options).header;
    std::string told;
    for (const char* keyword : {"OBJECT", "NCOMBINE", "STACKCNT", "EXPTIME", "LIVETIME", "CALSTAT", "PEDESTAL",
                                "DATE-END", "MJD-OBS", "DATAMAX", "DATE-OBS", "DATE-AVG"}) {
        told += header.Text(keyword).value_or("none") + ' ';
    }
    EXPECT_EQ(told, "M 31 3 3 60.0 181.0 BDFX -120.0 none none none 2024-07-30T22:40:00.000 2024-07-30T22:44:30.333 ");
    options.weight = WeightMethod::kNoise; // next to none for the last
    options.lights[2] =
        Save("noisy.fits", Sky(20, 16, 1, {}), 61.0, [&](io::Header& last) { last.Set("DATE-OBS", starts[2]); });
    EXPECT_EQ(stack::Stack(options).header.Text("DATE-AVG"), "2024-07-30T22:42:30.000");
    EXPECT_EQ(header.History().at(0),
              "stack --method clipped-mean --align none --normalise none --weight none --coverage any "
              "--interpolate lanczos3 --pedestal 20");
    EXPECT_PRED2(Holds, header.History().at(1), ": 3 of 3 lights; bias " + Path("b.fits") + "; flat median of 2 from ");
}

TEST_F(WholeStackTest, BringsFramesIntoOneOrderOfRows)
{
    const auto save = [&](const std::string& name, const CStlImage& image, const char* order, bool isTurned) {
        io::Frame frame;
        frame.image = image;
        frame.image.SetCRPix(1, 3.0);
        frame.image.SetCDelt(1, 0.5);
        CImgFlip turned(frame.image);
        turned.Do(0, &frame.image, 0);
        frame.header.Set("BAYERPAT", "RGGB");
        frame.header.Set("ROWORDER", isTurned ? "TOP-DOWN" : order);
        io::Save(Path(name), isTurned ? turned : frame.image, frame.header);
        return Path(name);
    };
    const CStlImage lights[] = {Sky(40, 31, 1, {{10, 8, 500}}), Sky(40, 31, 1, {{30, 20, 900}})};
    const auto dark = Make(40, 31, 1, [](int x, int y, int) { return 3 * x + 5 * y; });
    Options options;
    options.flats = {save("f.fits", Make(40, 31, 1, Ramp), "", false)}; // does not say: as the others
    options.align = AlignMethod::kNone;
    options.mosaic = MosaicUse::kPattern;
    std::vector<Result> results;
    for (const bool isTurned : {false, true}) {
        options.lights = {save("a.fits", lights[0], "BOTTOM-UP", isTurned),
                          save("b.fits", lights[1], "BOTTOM-UP", false)};
        options.darks = {save("d.fits", dark, "BOTTOM-UP", isTurned)};
        options.referenceFile = Path("b.fits");
        results.push_back(stack::Stack(options));
        EXPECT_EQ(results.back().header.Number("CDELT2"), 0.5);
    }
    EXPECT_EQ(test::Samples(results[0].image), test::Samples(results[1].image));
    ASSERT_EQ(results[1].notes.size(), results[0].notes.size() + 2);
    EXPECT_PRED2(Holds, results[1].notes[0], Path("a.fits") + ": its rows are TOP-DOWN, those of " + Path("b.fits"));
    options.referenceFile = Path("a.fits");
    EXPECT_EQ(stack::Stack(options).header.Text("ROWORDER"), "TOP-DOWN");
}

TEST_F(WholeStackTest, LeavesUndefinedSamplesOutOfTheFlat)
{
    const auto truth = [](int x, int y) { return (x + y) % 2 == 0 ? 80 : 120; };
    const auto isHole = [](int x, int y) { return y == 9 && x < 4; };
    for (const auto& [hole, bits] : {std::pair{NAN, -32}, {INFINITY, -32}, {-INFINITY, -32}, {NAN, 16}}) {
        const auto flat = Make(20, 16, 1, [&](int x, int y, int) { return isHole(x, y) ? double{hole} : truth(x, y); });
        io::Save(Path("flat.fits"), flat, {}, {bits}); // NaN among integers is a blank
        Options options;
        options.lights = {SaveRamp("light.fits")};
        options.flats = {Path("flat.fits")};
        std::vector<std::string> told;
        corvane::Run run;
        run.diagnostics = [&](const Diagnostic& diagnostic) { told.push_back(std::get<Note>(diagnostic).text); };
        const Result result = stack::Stack(options, run);
        for (int i = 0; i < 20 * 16; ++i) {
            const int x = i % 20;
            const int y = i / 20;
            const float v = result.image.GetPixelGrayRaw(x, y, 0);
            const bool isRight = std::fabs(v - Ramp(x, y, 0) * 100.0 / truth(x, y)) < 1e-3;
            EXPECT_TRUE(isHole(x, y) ? std::isnan(v) || BlankTest(result.image)(v) : isRight) << hole << ' ' << v;
        }
        EXPECT_EQ(result.notes, told);
        ASSERT_FALSE(result.notes.empty());
        EXPECT_PRED2(Holds, result.notes[0], "flat.fits: undefined samples: 4; each light");
        options.flats.push_back(SaveRamp("whole.fits"));
        EXPECT_TRUE(!std::isnan(hole) || stack::Stack(options).notes.empty()) << "another flat tells";
    }
}

TEST_F(WholeStackTest, WrongInputIsAnErrorThatNamesIt)
{
    const std::string light = SaveRamp("light.fits");
    const std::string wide = SaveRamp("wide.fits", 60.0, 24);
    const std::string colour = SaveRamp("colour.fits", 60.0, 20, 3);
    const std::string shorter = SaveRamp("short.fits", 30.0);
    const std::string black = Save("black.fits", Make(20, 16, 1, [](int, int, int) { return 0; }));
    const std::string mosaic = SaveRamp("mosaic.fits", 60.0, 20, 1, "RGGB");
    const std::string xtrans = SaveRamp("xtrans.fits", 60.0, 20, 1, "XTRANS");
    const std::string nothing = Save("nothing.fits", Make(20, 16, 1, [](int, int, int) { return NAN; }));
    const std::string untimed =
        Save("untimed.fits", Make(20, 16, 1, Ramp), 0.0, [](io::Header& h) { h.Set("EXPOSURE", "NaN"); });
    Options base;
    base.lights = {light};
    base.align = AlignMethod::kShift;
    base.size = 8;
    const std::pair<std::function<void(Options&)>, const char*> cases[] = {
        {[](Options& o) { o.lights.clear(); }, "LIGHT = no file: it takes one or more lights"},
        {[&](Options& o) { o.lights.push_back(Path("./light.fits")); }, "each light once"},
        {[&](Options& o) { o.lights.push_back(wide); },
         "wide.fits: the light is 24 x 16 (1 plane), but the first light"},
        {[&](Options& o) { o.lights.push_back(colour); }, "colour.fits: the light is 20 x 16 (3 planes), but"},
        {[&](Options& o) { o.bias = {wide}; }, "wide.fits: the bias is 24 x 16 (1 plane), but the light"},
        {[&](Options& o) { o.flats = {black}; }, "black.fits: the flat cannot be used"},
        {[&](Options& o) { o.flatDarks = {light}; }, "flat-dark = "},
        {[&](Options& o) { o.darks = {shorter}; },
         "light.fits: the light has 60 s, but the darks have 30 s: add bias frames"},
        {[&](Options& o) {
             o.darks = {shorter, light};
         },
         "light.fits: the dark has 60 s, but the dark"},
        {[](Options& o) { o.search = -1; }, "search = -1: must be 0 to 2048"},
        {[](Options& o) { o.pedestal = std::nan(""); }, "pedestal = nan: must be 0 to 1e+09"},
        {[](Options& o) { o.size = 32; }, "light.fits: size = 32: must be at most 16, the smaller side"},
        {[](Options& o) { o.reference.emplace(PixelPlace(20, 3)); },
         "light.fits: star = 20,3: must lie within the lights, 0,0 to 19,15"},
        {[](Options& o) { o.referenceFile = "other.fits"; }, "reference = other.fits: it takes one"},
        {[](Options& o) { o.cosmetic = true; }, "cosmetic = alone: it takes darks"},
        {[](Options& o) { o.wantsNoise = true, o.combine = CombineBy::kMax; }, "combine = max: it leaves nothing to"},
        {[](Options& o) { o.wantsNoise = true, o.reject.method = RejectMethod::kMinMax; }, "reject = minmax: it le"},
        {[](Options& o) { o.reject.grow = 11; }, "grow = 11: must be 0 to 10"},
        {[](Options& o) { o.reject = {.method = RejectMethod::kMinMax, .grow = 2}; }, "grow = 2: it takes a rejection"},
        {[](Options& o) { o.method = CombineMethod::kClippedMean, o.reject.grow = 1; }, "grow = 1: it takes a rej"},
        {[&](Options& o) { o.lights = {mosaic}, o.mosaic = MosaicUse::kKeep; },
         "mosaic.fits: is a mosaic, which bayer = none keeps"},
        {[&](Options& o) { o.lights = {xtrans}; }, "xtrans.fits: its mosaic XTRANS is no Bayer pattern"},
        {[&](Options& o) { o.lights = {nothing}; }, "nothing.fits: the light has no sample that is defined"},
        {[&](Options& o) {
             o.lights = {light, nothing}, o.align = AlignMethod::kNone;
         },
         "nothing.fits: has no sample"},
        {[&](Options& o) { o.flats = {nothing}; }, "nothing.fits: the flat has no sample that is defined"},
        {[&](Options& o) { o.darks = {untimed}; }, "untimed.fits: its exposure, EXPOSURE = NaN, is no number"},
    };
    for (const auto& [change, text] : cases) {
        Options options = base;
        change(options);
        EXPECT_PRED2(Holds, ErrorOf([&] { stack::Stack(options); }), text);
    }
}

TEST_F(WholeStackTest, EveryStageIsToldAndCanBeCancelled)
{
    const auto sky = Sky(370, 370, 1, {{60, 60, 5000}}); // large enough for several threads
    Options options;
    options.lights = {Save("a.fits", sky), Save("b.fits", sky)};
    const auto flat = Make(370, 370, 1, Ramp);
    options.flats = {Save("f.fits", flat), Save("g.fits", flat)};
    options.align = AlignMethod::kShift;
    options.search = 4;
    std::vector<std::string> texts;
    std::size_t stopAt = 100;
    std::vector<int> course; ///< how far each stage is at each step, and each time it asks whether to go on
    corvane::Run run;
    run.progress = [&](const Progress& progress) {
        course.push_back(progress.done);
        if (progress.state == Progress::State::kBegun) {
            texts.emplace_back(progress.text);
        }
    };
    run.cancelled = [&] {
        course.push_back(-1);
        return texts.size() == stopAt;
    };
    run.threads = 1;
    Stack(options, run);
    const std::vector<std::string> expected = {"Checking frames...", "Measuring flats...", "Combining flats...",
                                               "Aligning frames...", "Combining lights..."};
    EXPECT_EQ(texts, expected);
    const std::vector<int> courseOfOne = std::exchange(course, {});
    run.threads = 3;
    Stack(options, run);
    EXPECT_EQ(course, courseOfOne);
    for (stopAt = 1; stopAt <= expected.size(); ++stopAt) {
        texts.clear();
        EXPECT_THROW(Stack(options, run), Cancelled) << expected[stopAt - 1];
        EXPECT_EQ(texts.size(), stopAt);
    }
}

} // namespace corvane::stack
