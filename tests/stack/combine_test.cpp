#include <cstring>
#include <fstream>
#include <limits>

#include "corvane/combine/median_composit.h"
#include "corvane/core/memory_budget.h"
#include "tests/io/files.h"
#include "tests/stack/test_night.h"

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

void ExpectSameBits(const CStlImage& image, const CStlImage& expected)
{
    ASSERT_EQ(image.GetPixelCount(), expected.GetPixelCount());
    for (long long i = 0; i < image.GetPixelCount(); ++i) {
        const float* a = image.GetImageAdr(0, 0, 0, 1) + i;
        const float* b = expected.GetImageAdr(0, 0, 0, 1) + i;
        ASSERT_EQ(std::memcmp(a, b, sizeof(float)), 0) << "sample " << i << ": " << *a << ", not " << *b;
    }
}

struct Budget {
    explicit Budget(std::uint64_t bytes) { SetMemoryBudget(bytes); }
    ~Budget() { SetMemoryBudget(before); }
    std::uint64_t before = MemoryBudget();
};

} // namespace

struct Field {
    int planes;
    CombineMethod method;
    std::uint64_t budget;
};

class BandsTest : public Night, public testing::WithParamInterface<Field> {};

TEST_P(BandsTest, EqualTheCompositeOfWholeFrames)
{
    const auto [planes, method, budget] = GetParam();
    const int width = 181;
    const int height = 150;
    const std::pair<double, double> shifts[] = {{0, 0}, {3, -2}, {-4.3, 2.5}, {0.5, 0.0}, {-7.2, -5.6}, {0, 11}};
    const auto dark = Make(width, height, planes, [](int x, int y, int) { return 20 + x % 7 + y % 5; });
    const auto flat = Make(width, height, 1, [](int x, int y, int) { return 1000 + 3 * x - 2 * y; });
    Options options;
    std::vector<CStlImage> frames;
    for (const auto& [dx, dy] : shifts) {
        frames.push_back(Sky(width, height, planes, {{90, 70, 5000}, {40, 80, 900}, {130, 60, 700}}, dx, dy));
        *frames.back().GetImageAdr(50, 50, 0) = std::numeric_limits<float>::quiet_NaN();
        options.lights.push_back(Save("light" + std::to_string(frames.size()) + ".fits", frames.back()));
    }
    options.darks = {Save("dark.fits", dark)};
    options.flats = {Save("flat.fits", flat)};
    options.align = AlignMethod::kShift;
    options.search = 20;
    options.method = method;
    const Budget tiny(budget);
    const Result result = stack::Run(options);

    CStlImage darkFrame(dark);
    CStlImage flatFrame(flat);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        EXPECT_NEAR(result.frames[i].dx, shifts[i].first, 0.1001);
        EXPECT_NEAR(result.frames[i].dy, shifts[i].second, 0.1001);
        frames[i].DarkClbrtn(&darkFrame, 0);
        frames[i].FlatClbrtn(&flatFrame, 0);
        frames[i].SetBlankUsed(i > 0);
        frames[i].SetBlank(kBlank);
    }
    ExpectSameBits(result.image, CompositeOf(frames, result, method));
    EXPECT_EQ(result.image.IsBlankUsed(), 1);
    EXPECT_EQ(result.image.GetBlank(), kBlank);
    EXPECT_EQ(result.image.GetPixelGrayRaw(0, 0, planes - 1), static_cast<float>(kBlank));
}

INSTANTIATE_TEST_SUITE_P(All, BandsTest,
                         testing::Values(Field{1, CombineMethod::kMedian, 1U << 30U},
                                         Field{1, CombineMethod::kClippedMean, 1U << 20U},
                                         Field{3, CombineMethod::kClippedMedian, 1U << 20U},
                                         Field{3, CombineMethod::kMedian, 1U << 20U}));

using StackTest = Night;

TEST_F(StackTest, BlanksOfLightsBecomeOneBlankAndNanStays)
{
    const auto light = [&](const std::string& name, int blank, const std::vector<std::int16_t>& samples) {
        std::ofstream(Path(name), std::ios::binary)
            << test::Hdu(test::Cards(16, {3, 1}, {"BLANK   = " + std::to_string(blank)}), test::Bytes(samples, true));
        return Path(name);
    };
    Options options;
    options.lights = {light("a.fits", -7, {300, -7, 300}), light("b.fits", -32768, {300, 300, -32768})};
    const Result blanks = stack::Run(options);
    EXPECT_EQ(blanks.image.IsBlankUsed(), 1);
    EXPECT_EQ(blanks.image.GetBlank(), -7);
    EXPECT_EQ(blanks.image.GetPixelGrayRaw(0, 0, 0), 300.0F);
    EXPECT_EQ(blanks.image.GetPixelGrayRaw(1, 0, 0), -7.0F);
    EXPECT_EQ(blanks.image.GetPixelGrayRaw(2, 0, 0), -7.0F);

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
    const Budget tiny(1U << 20U);
    const Result result = stack::Run(options);
    setrlimit(RLIMIT_NOFILE, &before);
    for (int y = 0; y < 300; ++y) {
        ASSERT_EQ(result.image.GetPixelGrayRaw(63, y, 0), static_cast<float>(35063 + y));
    }
}
#endif

} // namespace corvane::stack
