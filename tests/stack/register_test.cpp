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

TEST_F(RegisterTest, NeverTakesAnotherStarForOneThatIsSpoiled)
{
    // Where hardly another star can contradict: a flash hides the star, and a fainter one is all the search can find.
    const std::vector<Place> pair = {{120, 100, 6000}, {145, 85, 3000}};
    auto spoiled = Sky(kWidth, kHeight, 1, pair, 2, 1);
    for (int i = 0; i < 400; ++i) {
        spoiled.SetPixelGrayRaw(108 + i % 20, 89 + i / 20, 40000.0F, 0);
    }
    // A field of twins: nothing tells which is which.
    const std::vector<Place> twins = {{110, 100, 6000}, {135, 100, 5900}};
    const auto chain = Sky(kWidth, kHeight, 1, {{85, 100, 6000}, {110, 100, 6000}, {135, 100, 6000}});
    for (const auto& [first, second] :
         {std::pair(Sky(kWidth, kHeight, 1, pair), spoiled), std::pair(Sky(kWidth, kHeight, 1, twins), chain)}) {
        const auto options = Shift({Save("a.fits", first), Save("b.fits", second)});
        EXPECT_PRED2(Holds, Thrown([&] { stack::Run(options); }), "no other light can be aligned");
    }
}

TEST_F(RegisterTest, MatchesThroughTracksAndTrails)
{
    const auto draw = [](CStlImage& image, double x, double y, double dx, double dy, int length, double light) {
        for (int i = 0; i < length; ++i) { // as wide as a star when it is long
            for (int across = -3; across <= 3; ++across) {
                const int column = static_cast<int>(std::lround(x + i * dx));
                const int row = static_cast<int>(std::lround(y + i * dy)) + across;
                const double share = length > 20 ? std::exp(-across * across / 3.2) : across == 0 ? 1.0 : 0.0;
                const auto s = static_cast<float>(image.GetPixelGrayRaw(column, row, 0) + share * light);
                image.SetPixelGrayRaw(column, row, s, 0);
            }
        }
    };
    auto first = Light(0, 0);
    draw(first, 0, 5, 1, 0.3, kWidth, 9000); // brighter than any star
    draw(first, 130, 108, 1, 0, 5, 9000);    // and in the patch
    auto second = Light(6.3, -4.2);
    draw(second, 100, 110, 1, 1, 6, 9000);
    draw(second, 0, 190, 1, -0.5, kWidth, 2000);
    const Result result = stack::Run(Shift({Save("a.fits", first), Save("b.fits", second)}));
    ASSERT_TRUE(result.reference);
    EXPECT_EQ(std::pair(result.reference->x, result.reference->y), std::pair(120, 100));
    EXPECT_NEAR(result.frames[1].dx, 6.3, 0.2);
    EXPECT_NEAR(result.frames[1].dy, -4.2, 0.2);
}

TEST_F(RegisterTest, LeavesOutWhatCannotBePlacedExactly)
{
    auto touched = Light(0, 0); // a fainter star's light runs into the star
    for (int i = 0; i < 400; ++i) {
        const double far = std::pow(i % 20 - 14.0, 2) + std::pow(i / 20 - 10.0, 2);
        float* s = touched.GetImageAdr(110 + i % 20, 90 + i / 20, 0);
        *s += static_cast<float>(4000.0 * std::exp(-far / 3.2));
    }
    const Result result = stack::Run(Shift({
        Save("a.fits", Light(0, 0)),
        Save("b.fits", Light(1, 1)),
        Save("touched.fits", touched),
    }));
    EXPECT_TRUE(result.frames[1].used) << result.frames[1].reason;
    EXPECT_PRED2(Holds, result.frames[2].reason, "something lies on the star");
    const std::vector<Place> moving = {{30, 100, 6000}, {95, 95, 1500}, {160, 120, 1200}, {95, 60, 800}};
    auto options = Shift(
        {Save("a.fits", Sky(kWidth, kHeight, 1, moving)), Save("cut.fits", Sky(kWidth, kHeight, 1, moving, 27, 0))});
    options.reference = PixelPlace{32, 100};
    EXPECT_PRED2(Holds, Thrown([&] { stack::Run(options); }), "edge of the frame");
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
