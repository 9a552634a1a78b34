#include "stack/stack_job.h"

#include <utility>

#include "stack/parts/band_file.h"
#include "tests/stack/test_night.h"

namespace corvane::stack {

namespace {

const std::vector<std::pair<double, double>> kSpots{{30, 25}, {70, 20}, {50, 60}, {20, 70}, {85, 75},
                                                    {60, 40}, {35, 50}, {75, 55}, {15, 40}, {48, 12}};

/// What tells of a result: samples of all images, and the header.
std::vector<std::vector<float>> SamplesOf(const Result& result)
{
    return {test::Samples(result.image), test::Samples(result.coverage), test::Samples(result.noise),
            test::Samples(result.rejected), test::Samples(result.rejectedPlaces)};
}

void ExpectSame(const Result& a, const Result& b)
{
    const auto as = SamplesOf(a);
    const auto bs = SamplesOf(b);
    for (std::size_t i = 0; i < as.size(); ++i) {
        EXPECT_TRUE(test::SameSamples(as[i], bs[i])) << "image " << i;
    }
    EXPECT_EQ(a.header.Cards(), b.header.Cards());
    EXPECT_EQ(a.image.IsBlankUsed(), b.image.IsBlankUsed());
    EXPECT_EQ(a.image.GetBlank(), b.image.GetBlank());
    EXPECT_EQ(a.depth.has_value(), b.depth.has_value());
    for (std::size_t i = 0; i < a.frames.size(); ++i) {
        EXPECT_EQ(a.frames[i].used, b.frames[i].used);
        EXPECT_EQ(a.frames[i].reason, b.frames[i].reason);
        EXPECT_EQ(a.frames[i].rejected->values, b.frames[i].rejected->values);
        EXPECT_EQ(a.frames[i].rejected->high, b.frames[i].rejected->high);
    }
}

} // namespace

class StackJobTest : public Night {
protected:
    /// Lights that drift, one of them with nothing but NaN where the others show the upper half.
    Options Lights(int count)
    {
        Options options;
        for (int i = 0; i < count; ++i) {
            std::vector<Place> stars;
            for (std::size_t s = 0; s < kSpots.size(); ++s) {
                stars.push_back({kSpots[s].first, kSpots[s].second, 400.0 + 90.0 * static_cast<double>(s)});
            }
            CStlImage sky = Sky(100, 90, 1, stars, 1.3 * i, -0.7 * i);
            sky.SetPixelGrayRaw(40 + i, 33, 30000.0F, 0); // a hit
            options.lights.push_back(Save("l" + std::to_string(i) + ".fits", sky));
        }
        options.reject.method = RejectMethod::kWinsorized;
        options.wantsCoverage = options.wantsNoise = options.wantsRejected = options.wantsReport = true;
        return options;
    }

    /// The stack that processes make, each of which knows no more than the texts and files of the others.
    Result InParts(const Options& options, int bands)
    {
        StackJob placing(options);
        for (int i = 0; i < std::ssize(options.lights); ++i) {
            const std::string record = ToText(StackJob(OptionsOfText(ToText(options), "o")).Measure(i));
            placing.Take(i, LightOfText(record, "l"));
        }
        placing.Place();
        const std::string plan = ToText(placing.GetPlan());
        std::vector<std::string> files;
        for (int band = bands; band > 0; --band) {
            const SavedPlan saved = PlanOfText(plan, "p");
            StackJob job(saved);
            files.push_back(Path("band" + std::to_string(band) + ".fits"));
            WriteBand(files.back(), job.Combine(RowsOf({band, bands}, job.Rows())), saved.key);
        }
        StackJob joining(PlanOfText(plan, "p"));
        Band whole = joining.EmptyStack();
        ReadBands(files, PlanOfText(plan, "p").key, whole, {});
        return joining.Finish(std::move(whole));
    }
};

TEST_F(StackJobTest, PartsMakeTheWhole)
{
    Options options = Lights(6);
    const std::string half =
        Save("half.fits", test::Make(100, 90, 1, [](int, int y, int) { return y < 45 ? NAN : 200.0; }));
    const auto change = [&](const std::function<void(Options&)>& to) {
        Options changed = options;
        to(changed);
        return changed;
    };
    const std::pair<const char*, Options> cases[] = {
        {"usual", options},
        {"local", change([](Options& o) { o.normalise = NormaliseMethod::kLocal; })},
        {"union", change([](Options& o) { o.canvas = Canvas::kUnion; })},
        {"all", change([](Options& o) { o.coverage = Coverage::kAll; })},
        {"one light is left out", change([](Options& o) { o.rejectStars = 0.5; })},
        {"a light that shows little", change([&](Options& o) {
             o.align = AlignMethod::kNone;
             o.lights.push_back(half);
         })},
        {"drizzle", change([](Options& o) { o.drizzle = 1.3; })},
    };
    for (const auto& [name, of] : cases) {
        SCOPED_TRACE(name);
        const Result whole = stack::Stack(of);
        for (const int bands : {1, 4}) {
            ExpectSame(InParts(of, bands), whole);
        }
    }
}

TEST_F(StackJobTest, LightsThatAreEmptyAreToldByAllBandsTogether)
{
    Options options = Lights(3);
    options.align = AlignMethod::kNone;
    options.lights.push_back(Save("nothing.fits", test::Make(100, 90, 1, [](int, int, int) { return NAN; })));
    const Result whole = stack::Stack(options);
    const Result parts = InParts(options, 3);
    ExpectSame(parts, whole);
    EXPECT_FALSE(parts.frames[3].used);
    options.coverage = Coverage::kAll;
    EXPECT_PRED2(Holds, ErrorOf([&] { InParts(options, 2); }), "nothing.fits: the light has no sample that is defined");
}

TEST_F(StackJobTest, RefusesPlansOfOtherLights)
{
    Options options = Lights(3);
    options.cosmic = true;
    StackJob job(options);
    job.Register();
    const SavedPlan plan = job.GetPlan();
    const std::function<void(SavedPlan&)> cases[] = {
        [](SavedPlan& p) { p.lights[1].report.file = "other.fits"; },
        [](SavedPlan& p) { p.lights[1].seen.levels.clear(); },
        [](SavedPlan& p) { p.lights[1].seen.levels.resize(3); },
        [](SavedPlan& p) { p.options.normalise = NormaliseMethod::kLocal; },
        [](SavedPlan& p) {
            p.lights[1].hits = {{{100, 0, 1.0F}}};
        },
        [](SavedPlan& p) {
            p.lights[1].hits = {{{0, 90, 1.0F}}};
        },
        [](SavedPlan& p) {
            p.lights[1].hits = {{{5, 6, 1.0F}, {5, 5, 1.0F}}};
        },
        [](SavedPlan& p) { p.lights[1].hits.resize(2); },
    };
    for (const auto& change : cases) {
        SavedPlan changed = plan;
        change(changed);
        EXPECT_PRED2(Holds, ErrorOf([&] {
                         StackJob(std::move(changed)).Combine({0, 9});
                     }),
                     ".fits: what was measured is of another light");
    }
    SavedPlan both = plan;
    both.options.wantsBoth = true;
    EXPECT_PRED2(Holds, ErrorOf([&] { StackJob(std::move(both)).Rows(); }), "both = ");
    std::filesystem::remove(options.lights[2]);
    EXPECT_PRED2(Holds, ErrorOf([&] { StackJob(SavedPlan(plan)).Rows(); }), "l2.fits: no such file");
}

TEST_F(StackJobTest, WayOfReadingTellsWhatOtherFramesDecide)
{
    const auto save = [&](const std::string& name, const char* order, const char* pattern) {
        return Save(name, test::Make(20, 16, 1, [](int x, int, int) { return 1.0 * x; }), 60.0,
                    [&](io::Header& header) {
                        header.Set("ROWORDER", order);
                        header.Set("BAYERPAT", pattern);
                    });
    };
    Options options;
    options.lights = {save("a.fits", "TOP-DOWN", "RGGB"), save("b.fits", "BOTTOM-UP", "RGGB")};
    const StackJob job(options);
    EXPECT_NE(job.WayOfReading(0), job.WayOfReading(1));
    std::swap(options.lights[0], options.lights[1]);
    EXPECT_NE(StackJob(options).WayOfReading(1), job.WayOfReading(0)) << "the other one is the model now";
    options.lights.pop_back();
    EXPECT_NE(StackJob(options).WayOfReading(0), job.WayOfReading(1));
}

TEST_F(StackJobTest, BandsTileTheRows)
{
    for (const auto& [bands, rows] : {std::pair{1, 1}, {3, 10}, {7, 7}, {8, 4001}}) {
        int end = 0;
        for (int band = 1; band <= bands; ++band) {
            const RowSpan span = RowsOf({band, bands}, rows);
            EXPECT_EQ(span.first, end);
            EXPECT_NEAR(span.end - span.first, 1.0 * rows / bands, 1.0);
            end = span.end;
        }
        EXPECT_EQ(end, rows);
    }
    EXPECT_EQ(ReadBandNumber("3/8").band, 3);
    for (const char* text : {"", "3", "3/", "/8", "0/8", "9/8", "3/8x", "-1/-1", "1/2/3", "a/b"}) {
        EXPECT_PRED2(Holds, ErrorOf([&] { ReadBandNumber(text); }), "must be NUMBER/OF") << text;
    }
    EXPECT_PRED2(Holds, ErrorOf([&] { RowsOf({1, 5}, 4); }), "at most 4, the rows of the stack");
}

} // namespace corvane::stack
