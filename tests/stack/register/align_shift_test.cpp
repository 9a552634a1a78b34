#include "tests/stack/test_night.h"

namespace corvane::stack {

class RegisterTest : public Night {
protected:
    static constexpr int kWidth = 240;
    static constexpr int kHeight = 200;
    const std::vector<Place> field_ = {
        {120, 100, 6000}, {70, 95, 1500}, {160, 120, 1200}, {200, 90, 900}, {95, 60, 800}};

    CStlImage Stars(const std::vector<Place>& stars, double dx = 0.0, double dy = 0.0)
    {
        return Sky(kWidth, kHeight, 1, stars, dx, dy);
    }
    CStlImage Light(double dx, double dy) { return Stars(field_, dx, dy); }

    /// The frames as lights a.fits, b.fits and so on.
    Options Shift(const std::vector<CStlImage>& frames)
    {
        Options options;
        for (const CStlImage& frame : frames) {
            const auto letter = static_cast<char>('a' + options.lights.size());
            options.lights.push_back(Save(letter + std::string(".fits"), frame));
        }
        options.align = AlignMethod::kShift;
        options.search = 30;
        return options;
    }

    static void ExpectShift(const FrameReport& frame, double dx, double dy, double tolerance = 0.1001)
    {
        EXPECT_TRUE(frame.used) << frame.reason;
        EXPECT_NEAR(frame.dx, dx, tolerance);
        EXPECT_NEAR(frame.dy, dy, tolerance);
    }
};

TEST_F(RegisterTest, ChoosesAStarThatIsNeitherSaturatedNorHotNorAtTheEdge)
{
    auto first = Stars({{60, 60, 90000}, {15, 150, 9000}, {150, 140, 5000}, {60, 140, 3000}});
    first.SetLevel(0, 0.0, 60000.0);
    first.CutOutOfLevel();
    for (int i = 0; i < 4; ++i) { // a hot pixel, and a particle's track
        first.SetPixelGrayRaw(180, 60, 40000.0F, 0);
        first.SetPixelGrayRaw(90 + i, 100, 30000.0F, 0);
    }
    const Result result = stack::Stack(Shift({first, first}));
    EXPECT_EQ(std::pair(result.reference->x, result.reference->y), std::pair(150, 140));
}

TEST_F(RegisterTest, LeavesOutByNameWhatCannotBeMatched)
{
    auto hot = Light(9, -7);
    auto reference = Light(0, 0);
    for (auto* image : {&reference, &hot}) { // brighter than the star, and not moved
        image->SetPixelGrayRaw(110, 110, 30000.0F, 0);
    }
    const auto other = Stars({{128, 93, 5500}, {40, 60, 1500}, {180, 105, 1300}});
    auto touched = field_;
    touched.push_back({124, 100, 4000}); // its light runs into the star
    const Result result =
        stack::Stack(Shift({reference, hot, other, Light(31, 2), Stars({}), Stars({{120, 100, 600}}), Stars(touched)}));
    const char* const reasons[] = {"",
                                   "",
                                   "other stars are where",
                                   "edge of the search range of 30 pixels",
                                   "correlation",
                                   "times the brightness",
                                   "something lies on the star"};
    for (std::size_t i = 0; i < std::size(reasons); ++i) {
        EXPECT_EQ(result.frames[i].used, i < 2) << i;
        EXPECT_PRED2(Holds, result.frames[i].reason, reasons[i]);
    }
    ExpectShift(result.frames[1], 9.0, -7.0, 0.0);
    EXPECT_EQ(result.header.Number("NCOMBINE"), 2.0);
    EXPECT_PRED2(Holds, result.header.History().back(), "left out: " + Path("g.fits"));
}

TEST_F(RegisterTest, TriesTheNextStarWhenOthersContradict)
{
    // The star has become a little fainter, and another comes into the search range that looks as it did before.
    auto crowded = field_;
    crowded.push_back({150, 100, 6000});
    const auto first = Stars(crowded);
    crowded[0].peak = 5000;
    Options options = Shift({first, Stars(crowded, 25, 3)});
    options.reference = PixelPlace{120, 100};
    options.size = 16;
    ExpectShift(stack::Stack(options).frames[1], 25.0, 3.0);
}

TEST_F(RegisterTest, MatchesThroughTracksAndTrails)
{
    const auto draw = [](CStlImage& image, int x, int y, double slope, int length, double light) {
        for (int i = 0; i < length; ++i) { // as wide as a star when it is long
            const int reach = length > 20 ? 3 : 0;
            for (int across = -reach; across <= reach; ++across) {
                const int row = static_cast<int>(std::lround(y + i * slope)) + across;
                const double s = image.GetPixelGrayRaw(x + i, row, 0) + light * std::exp(-across * across / 3.2);
                image.SetPixelGrayRaw(x + i, row, static_cast<float>(s), 0);
            }
        }
    };
    auto first = Light(0, 0);
    draw(first, 0, 5, 0.3, kWidth, 9000); // brighter than any star
    draw(first, 130, 108, 0, 5, 9000);    // and in the patch
    auto second = Light(6.3, -4.2);
    draw(second, 100, 110, 1, 6, 9000);
    draw(second, 0, 190, -0.5, kWidth, 2000);
    const Result result = stack::Stack(Shift({first, second}));
    EXPECT_EQ(std::pair(result.reference->x, result.reference->y), std::pair(120, 100));
    ExpectShift(result.frames[1], 6.3, -4.2, 0.2);
}

TEST_F(RegisterTest, FindsAPatchAtTheEdgeThroughAChangedSky)
{
    const std::vector<Place> stars = {{12, 185, 2000}};
    auto bright = Stars(stars, -8, 6.5);
    std::for_each_n(bright.GetImageAdr(0, 0, 0), kWidth * kHeight, [](float& sample) { sample += 3000.0F; });
    Options options = Shift({Stars(stars), bright});
    options.reference = PixelPlace{6, 192};
    ExpectShift(stack::Stack(options).frames[1], -8.0, 6.5);
}

TEST_F(RegisterTest, RefusesAStackOfTheReferenceAlone)
{
    // Where hardly another star can contradict: a flash hides the star, and a fainter one is all the search can find.
    const std::vector<Place> pair = {{120, 100, 6000}, {145, 85, 3000}};
    auto spoiled = Stars(pair, 2, 1);
    for (int i = 0; i < 400; ++i) {
        spoiled.SetPixelGrayRaw(108 + i % 20, 89 + i / 20, 40000.0F, 0);
    }
    const auto twins = Stars({{110, 100, 6000}, {135, 100, 5900}}); // nothing tells which is which
    const auto chain = Stars({{85, 100, 6000}, {110, 100, 6000}, {135, 100, 6000}});
    const std::vector<Place> moving = {{30, 100, 6000}, {95, 95, 1500}, {160, 120, 1200}, {95, 60, 800}};
    const std::tuple<CStlImage, CStlImage, std::optional<PixelPlace>, const char*> cases[] = {
        {Stars(pair), spoiled, {}, "a.fits: no other light can be stacked with it: "},
        {twins, chain, {}, "b.fits: several stars match the reference equally well"},
        {Stars(moving), Stars(moving, 27, 0), PixelPlace{32, 100}, "edge of the frame"},
        {Stars({}), Light(0, 0), {}, "a.fits: shows no star"}};
    for (const auto& [first, second, star, error] : cases) {
        Options options = Shift({first, second});
        options.reference = star;
        EXPECT_PRED2(Holds, ErrorOf([&] { stack::Stack(options); }), error);
    }
}

} // namespace corvane::stack
