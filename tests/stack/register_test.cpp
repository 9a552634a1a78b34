#include "tests/stack/test_night.h"

namespace corvane::stack {

class RegisterTest : public Night {
protected:
    static constexpr int kWidth = 240;
    static constexpr int kHeight = 200;
    const std::vector<Place> field_ = {
        {120, 100, 6000}, {70, 95, 1500}, {160, 120, 1200}, {200, 90, 900}, {95, 60, 800}};

    CStlImage Light(double dx, double dy) { return Sky(kWidth, kHeight, 1, field_, dx, dy); }

    Options Shift(std::vector<std::string> lights)
    {
        Options options;
        options.lights = std::move(lights);
        options.align = AlignMethod::kShift;
        options.search = 30;
        return options;
    }
};

TEST_F(RegisterTest, ChoosesAStarThatIsNeitherSaturatedNorHotNorAtTheEdge)
{
    auto first = Sky(kWidth, kHeight, 1, {{60, 60, 90000}, {15, 150, 9000}, {150, 140, 5000}, {60, 140, 3000}});
    for (long long i = 0; i < first.GetPixelCount(); ++i) {
        float* s = first.GetImageAdr(0, 0, 0) + i;
        *s = std::min(*s, 60000.0F);
    }
    for (int i = 0; i < 4; ++i) { // a hot pixel, and a particle's track
        first.SetPixelGrayRaw(180, 60, 40000.0F, 0);
        first.SetPixelGrayRaw(90 + i, 100, 30000.0F, 0);
    }
    const Result result = stack::Run(Shift({Save("a.fits", first), Save("b.fits", first)}));
    EXPECT_EQ(result.reference->x, 150);
    EXPECT_EQ(result.reference->y, 140);
}

TEST_F(RegisterTest, LeavesOutByNameWhatCannotBeMatched)
{
    auto hot = Light(9, -7);
    auto reference = Light(0, 0);
    for (auto* image : {&reference, &hot}) { // brighter than the star, and not moved
        image->SetPixelGrayRaw(110, 110, 30000.0F, 0);
    }
    const auto other = Sky(kWidth, kHeight, 1, {{128, 93, 5500}, {40, 60, 1500}, {180, 105, 1300}});
    const Result result = stack::Run(Shift({
        Save("reference.fits", reference),
        Save("hot.fits", hot),
        Save("other.fits", other),
        Save("far.fits", Light(31, 2)),
        Save("empty.fits", Sky(kWidth, kHeight, 1, {})),
        Save("faint.fits", Sky(kWidth, kHeight, 1, {{120, 100, 600}})),
    }));
    std::vector<bool> used;
    for (const FrameReport& frame : result.frames) {
        used.push_back(frame.used);
        EXPECT_EQ(frame.used, frame.reason.empty()) << frame.file;
    }
    EXPECT_EQ(used, (std::vector<bool>{true, true, false, false, false, false}));
    EXPECT_EQ(result.frames[1].dx, 9.0);
    EXPECT_EQ(result.frames[1].dy, -7.0);
    EXPECT_PRED2(Holds, result.frames[2].reason, "other stars are where");
    EXPECT_PRED2(Holds, result.frames[3].reason, "edge of the search range of 30 pixels");
    EXPECT_PRED2(Holds, result.frames[4].reason, "correlation");
    EXPECT_PRED2(Holds, result.frames[5].reason, "times the brightness");
    EXPECT_EQ(result.header.Number("NCOMBINE"), 2.0);
    EXPECT_PRED2(Holds, result.header.History().back(), "left out: " + Path("faint.fits"));
}

TEST_F(RegisterTest, TriesTheNextStarWhenOthersContradict)
{
    // The star has become a little fainter, and another comes into the search range that looks as it did before.
    auto crowded = field_;
    crowded.push_back({150, 100, 6000});
    const auto first = Sky(kWidth, kHeight, 1, crowded);
    crowded[0].peak = 5000;
    const auto second = Sky(kWidth, kHeight, 1, crowded, 25, 3);
    Options options = Shift({Save("a.fits", first), Save("b.fits", second)});
    options.reference = PixelPlace{120, 100};
    options.size = 16;
    const Result result = stack::Run(options);
    EXPECT_NEAR(result.frames[1].dx, 25.0, 0.1001);
    EXPECT_NEAR(result.frames[1].dy, 3.0, 0.1001);
}

TEST_F(RegisterTest, FindsAPatchAtTheEdgeThroughAChangedSky)
{
    auto options = Shift({});
    options.reference = PixelPlace{6, 192};
    const std::vector<Place> stars = {{12, 185, 2000}};
    options.lights.push_back(Save("a.fits", Sky(kWidth, kHeight, 1, stars)));
    auto bright = Sky(kWidth, kHeight, 1, stars, -8, 6.5);
    for (long long i = 0; i < bright.GetPixelCount(); ++i) {
        bright.GetImageAdr(0, 0, 0)[i] += 3000.0F;
    }
    options.lights.push_back(Save("b.fits", bright));
    const Result result = stack::Run(options);
    EXPECT_TRUE(result.frames[1].used) << result.frames[1].reason;
    EXPECT_NEAR(result.frames[1].dx, -8.0, 0.1001);
    EXPECT_NEAR(result.frames[1].dy, 6.5, 0.1001);
}

TEST_F(RegisterTest, RefusesAStackOfTheReferenceAlone)
{
    const auto options =
        Shift({Save("a.fits", Light(0, 0)), Save("b.fits", Sky(kWidth, kHeight, 1, {})), Save("c.fits", Light(50, 0))});
    const std::string text = Thrown([&] { stack::Run(options); });
    EXPECT_PRED2(Holds, text, "a.fits: no other light can be aligned with it: ");
    EXPECT_PRED2(Holds, text, "b.fits: ");
    EXPECT_PRED2(Holds, text, "c.fits: ");
    EXPECT_PRED2(Holds, Thrown([&] {
                     stack::Run(Shift({options.lights[1], options.lights[0]}));
                 }),
                 "b.fits: shows no star");
}

} // namespace corvane::stack
