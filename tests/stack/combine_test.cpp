#include <limits>

#include "corvane/combine/median_composit.h"
#include "tests/stack/test_night.h"
#include "tests/support/plain.h"
#include "tests/support/storage.h"

#if __has_include(<sys/resource.h>)
#include <sys/resource.h>
#endif

namespace corvane::stack {

namespace {

constexpr int kBlank = std::numeric_limits<int>::min(); // of frames of 32-bit floats

/// Whole frames in memory, one row at a time: what a stack is defined as.
CStlImage CompositeOf(std::vector<CStlImage>& frames, const Result& result, CombineMethod method)
{
    CStlImage target(-32, frames[0].GetWidth(), frames[0].GetHeight(), frames[0].GetPlanes(), 1.0, 0.0, 1);
    CImgMedianComposit composite(&target);
    for (int y = 0; y < target.GetHeight(); ++y) {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            composite.Store(&frames[i], y, result.frames[i].dx, result.frames[i].dy, 0.0);
        }
        method == CombineMethod::kMedian          ? composite.Calc()
        : method == CombineMethod::kClippedMedian ? composite.CalcClipping()
                                                  : composite.AddAvrCalcClipping();
    }
    return target;
}

} // namespace

using StackTest = Night;

TEST_F(StackTest, BandsEqualTheCompositeOfWholeFrames)
{
    const int width = 181;
    const int height = 150;
    const std::pair<double, double> shifts[] = {{0, 0}, {3, -2}, {-4.3, 2.5}, {0.5, 0.0}, {-7.2, -5.6}, {0, 11}};
    const std::tuple<int, CombineMethod, std::uint64_t> cases[] = {{1, CombineMethod::kMedian, 1 << 30},
                                                                   {1, CombineMethod::kClippedMean, 1 << 20},
                                                                   {3, CombineMethod::kClippedMedian, 1 << 20},
                                                                   {3, CombineMethod::kMedian, 1 << 20}};
    for (const auto& [planes, method, budget] : cases) {
        SCOPED_TRACE(testing::Message() << planes << " planes, method " << static_cast<int>(method));
        auto dark = Make(width, height, planes, [](int x, int y, int) { return 20 + x % 7 + y % 5; });
        auto flat = Make(width, height, 1, [](int x, int y, int) { return 1000 + 3 * x - 2 * y; });
        Options options;
        options.darks = {Save("dark.fits", dark)};
        options.flats = {Save("flat.fits", flat)};
        options.align = AlignMethod::kShift;
        options.search = 20;
        options.method = method;
        std::vector<CStlImage> frames;
        for (const auto& [dx, dy] : shifts) {
            frames.push_back(Sky(width, height, planes, {{90, 70, 5000}, {40, 80, 900}, {130, 60, 700}}, dx, dy));
            frames.back().SetPixelGrayRaw(50, 50, std::nanf(""), 0);
            options.lights.push_back(Save("light" + std::to_string(frames.size()) + ".fits", frames.back()));
        }
        const test::TightMemory tiny(budget);
        const Result result = stack::Run(options);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            EXPECT_NEAR(result.frames[i].dx, shifts[i].first, 0.1001);
            EXPECT_NEAR(result.frames[i].dy, shifts[i].second, 0.1001);
            frames[i].DarkClbrtn(&dark, 0);
            frames[i].FlatClbrtn(&flat, 0);
            frames[i].SetBlankUsed(i > 0);
            frames[i].SetBlank(kBlank);
        }
        EXPECT_TRUE(test::Agree(result.image, test::Plain(CompositeOf(frames, result, method))));
        EXPECT_EQ(std::pair(result.image.IsBlankUsed(), result.image.GetBlank()), std::pair(1, kBlank));
        EXPECT_EQ(result.image.GetPixelGrayRaw(0, 0, planes - 1), static_cast<float>(kBlank));
    }
}

TEST_F(StackTest, BlanksOfLightsBecomeOneBlankAndNanStays)
{
    const auto light = [&](const std::string& name, int blank, const std::vector<std::int16_t>& samples) {
        return Write(name, test::Hdu(test::Cards(16, {3, 1}, {"BLANK   = " + std::to_string(blank)}),
                                     test::Bytes(samples, true)));
    };
    Options options;
    options.lights = {light("a.fits", -7, {300, -7, 300}), light("b.fits", -32768, {300, 300, -32768})};
    const Result blanks = stack::Run(options);
    EXPECT_EQ(std::pair(blanks.image.IsBlankUsed(), blanks.image.GetBlank()), std::pair(1, -7));
    EXPECT_EQ(test::Samples(blanks.image), (std::vector{300.0F, -7.0F, -7.0F}));

    const auto nan = [](int x, int, int) { return x == 1 ? std::nan("") : 200.0; };
    const auto whole = [](int, int, int) { return 200.0; };
    options.lights = {Save("nan.fits", Make(2, 1, 1, nan)), Save("whole.fits", Make(2, 1, 1, whole))};
    EXPECT_TRUE(std::isnan(stack::Run(options).image.GetPixelGrayRaw(1, 0, 0)));
}

#if __has_include(<sys/resource.h>)
TEST_F(StackTest, TakesMoreLightsThanFilesMayBeOpen)
{
    Options options;
    for (int i = 0; i < 70; ++i) {
        const CStlImage light = Make(64, 300, 1, [i](int x, int y, int) { return (i * 37 % 70) * 1000 + x + y; });
        options.lights.push_back(Save("light" + std::to_string(i) + ".fits", light));
    }
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{32, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const test::TightMemory tiny(1 << 20);
    const Result result = stack::Run(options);
    setrlimit(RLIMIT_NOFILE, &before);
    for (int y = 0; y < 300; ++y) {
        ASSERT_EQ(result.image.GetPixelGrayRaw(63, y, 0), static_cast<float>(35063 + y));
    }
}
#endif

} // namespace corvane::stack
