#include "stack/combine/combine.h"

#include <algorithm>
#include <limits>

#include "corvane/combine/median_composit.h"
#include "corvane/core/memory_budget.h"
#include "tests/stack/test_night.h"
#include "tests/support/plain.h"
#include "tests/support/storage.h"

#if __has_include(<sys/resource.h>)
#include <sys/resource.h>
#endif

namespace corvane::stack {

namespace {

/// Offsets that change over the frames.
std::shared_ptr<const OffsetField> Waves()
{
    stars::CellGrid cells(61, 47, 9);
    for (int i = 0; i < cells.Columns() * cells.Rows(); ++i) {
        cells.Value(i % cells.Columns(), i / cells.Columns()) = static_cast<float>(i * i % 23);
    }
    return std::make_shared<const OffsetField>(cells);
}

constexpr int kBlank = std::numeric_limits<int>::min(); // of frames of 32-bit floats

struct Pose {
    double dx;
    double dy;
    double angle = 0.0;
};

/// Whole frames in memory, one row at a time: what a stack is defined as.
CStlImage CompositeOf(std::vector<CStlImage>& frames, const std::vector<Pose>& poses, CombineMethod method)
{
    CStlImage target(-32, frames[0].GetWidth(), frames[0].GetHeight(), frames[0].GetPlanes(), 1.0, 0.0, 1);
    CImgMedianComposit composite(&target);
    for (int y = 0; y < target.GetHeight(); ++y) {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            composite.Store(&frames[i], y, poses[i].dx, poses[i].dy, poses[i].angle);
        }
        method == CombineMethod::kMedian          ? composite.Calc()
        : method == CombineMethod::kClippedMedian ? composite.CalcClipping()
                                                  : composite.AddAvrCalcClipping();
    }
    return target;
}

constexpr int kWidth = 61;
constexpr int kHeight = 47;

/// Frames in memory, placed at will, and how often each of their rows is read.
struct PlacedFrames : FrameSource {
    explicit PlacedFrames(int planes)
    {
        for (const auto& [dx, dy, angle] : poses) {
            CStlImage& image = images.emplace_back(test::RandomImage({kWidth, kHeight}, planes, images.size() + 5));
            image.SetStdCtr(30.5, 23.25);
            image.SetBlank(kBlank);
            image.SetBlankUsed(1);
            test::Sprinkle(image, {static_cast<float>(kBlank)}, images.size());
            plan.frames.push_back({static_cast<int>(reads.size()), Alignment::Turned(dx, dy, angle, image.GetStdCtr()),
                                   std::vector<Normalisation>(planes)});
            reads.emplace_back(kHeight);
        }
        plan.grid = {kWidth, kHeight};
        plan.blank = kBlank;
    }

    FrameFacts Facts(int frame) const override { return ImageSource({&images[frame]}).Facts(0); }
    void Read(int frame, int first, int count, float* samples, std::ptrdiff_t stride) override
    {
        ImageSource({&images[frame]}).Read(0, first, count, samples, stride);
        inUse = MemoryInUse();
        std::for_each_n(reads[frame].begin() + first, count, [](int& times) { ++times; });
    }

    /// A band of the grid's rows.
    CStlImage Combine(int firstRow, int rows, CStlImage* coverage = nullptr)
    {
        CStlImage target(-32, plan.grid.width, rows, images[0].GetPlanes(), 1.0, 0.0, 1);
        CombineFrames(plan, *this, {target, firstRow, coverage});
        return target;
    }
    CStlImage Combine(CStlImage* coverage = nullptr) { return Combine(0, plan.grid.height, coverage); }

    std::vector<Pose> poses{{0, 0},           {3, -2},         {-4.3, 2.5}, {1.2, 0.7, 0.4}, {0, 3, -33.3},
                            {2.5, -1.5, 180}, {0.3, 4, 179.6}, {1, 1, 90},  {0, 0, -90.2}};
    std::vector<CStlImage> images;
    CombinePlan plan;
    std::vector<std::vector<int>> reads;
    std::uint64_t inUse = 0; ///< when rows were read
};

} // namespace

using StackTest = Night;

TEST(CombineFrames, TurnedFramesInBandsAndStrips)
{
    for (const int planes : {1, 3}) {
        for (const bool takesStrips : {false, true}) {
            PlacedFrames frames(planes);
            frames.plan.rule = CombineMethod::kClippedMedian;
            frames.plan.memory = takesStrips ? 4000 : 90000U * planes;
            const CStlImage target = frames.Combine();
            for (const auto& rows : frames.reads) { // but for row 0, which the plane before it asks for
                EXPECT_LE(*std::max_element(rows.begin() + 1, rows.end()), takesStrips ? 3 : 1);
            }
            EXPECT_EQ(frames.reads[0][46], takesStrips ? 3 : 1);
            EXPECT_EQ(frames.inUse > MemoryInUse() + 70000 * planes, !takesStrips) << "what bands take is reserved";
            const CStlImage expected = CompositeOf(frames.images, frames.poses, CombineMethod::kClippedMedian);
            EXPECT_TRUE(test::Agree(target, test::Plain(expected)));
        }
    }
}

TEST(CombineFrames, AnyBandOfTheGridIsThatOfTheWhole)
{
    for (const Coverage coverage : {Coverage::kAll, Coverage::kAny}) {
        PlacedFrames frames(3);
        frames.plan.frames[1].normalisation[2] = {0.5, 0.0, Waves()};
        frames.plan.grid = {90, 70, 1.6};
        frames.plan.rule = CombineMethod::kClippedMean;
        frames.plan.coverage = coverage;
        const std::vector<float> whole = test::Samples(frames.Combine());
        for (const auto& [first, end] : {std::pair{0, 1}, {1, 30}, {30, 70}, {69, 70}}) {
            const std::vector<float> band = test::Samples(frames.Combine(first, end - first));
            for (int i = 0; i < 90 * 3 * (end - first); ++i) {
                const int plane = i / (90 * (end - first));
                ASSERT_TRUE(test::Near(band[i], whole[i + 90 * (first + plane * (70 - end + first))], 0)) << first;
            }
        }
        EXPECT_THROW(frames.Combine(30, 41), Error);
        frames.images[2] = test::RandomImage({kWidth, kHeight}, 1, 1);
        EXPECT_THROW(frames.Combine(), Error);
    }
}

TEST(CombineFrames, AnyCoverageTakesWhatFramesHave)
{
    // On these scales no pixel lies on just one of a turned frame.
    for (const auto& [isFirstWhole, grid] : {std::pair{false, Grid{kWidth, kHeight}},
                                             {true, {kWidth, kHeight}},
                                             {false, {55, 40, 0.8}},
                                             {false, {90, 70, 1.6}}}) {
        PlacedFrames frames(3);
        frames.images[0] = isFirstWhole ? test::RandomImage({kWidth, kHeight}, 3, 1) : frames.images[0];
        frames.plan.frames[1].normalisation = {{2.0, -50.0}, {1.5, 0.0, Waves()}, {1.0, 7.5}};
        frames.plan.grid = grid;
        frames.plan.coverage = Coverage::kAny;
        frames.plan.memory = 90000;
        CStlImage coverage(-32, grid.width, grid.height, 3, 1.0, 0.0, 1);
        const CStlImage target = frames.Combine(&coverage);
        for (CStlImage& image : frames.images) { // so that what is interpolated from blanks is NaN
            float* const samples = image.GetImageAdr(0, 0, 0);
            std::replace(samples, samples + kWidth * kHeight * 3, static_cast<float>(kBlank), std::nanf(""));
        }
        const int ulps = grid.scale == 1.0 ? 1 : 40; // positions are rounded otherwise
        test::Plain(target).ForEach([&, scale = grid.scale](int x, int y, int p) {
            std::vector<double> values;
            for (std::size_t i = 0; i < frames.images.size(); ++i) {
                const Position on{(x + 0.5) / scale - 0.5, (y + 0.5) / scale - 0.5};
                const Position at = frames.plan.frames[i].mapping.Map(on.x, on.y);
                const bool isInside = at.x >= 0.0 && at.x <= kWidth - 1 && at.y >= 0.0 && at.y < kHeight;
                const double v = isInside ? frames.images[i].GetPixelGrayRaw(at.x, at.y, p) : std::nan("");
                const Normalisation& normalisation = frames.plan.frames[i].normalisation[p];
                values.push_back(v * normalisation.factor + normalisation.OffsetAt(on.x, on.y));
            }
            std::erase_if(values, [](double v) { return std::isnan(v); });
            std::sort(values.begin(), values.end());
            const double expected = values.empty() ? kBlank : values[values.size() / 2];
            ASSERT_TRUE(test::Near(target.GetPixelGrayRaw(x, y, p), static_cast<float>(expected), ulps))
                << x << ' ' << y;
            ASSERT_EQ(coverage.GetPixelGrayRaw(x, y, p), static_cast<float>(values.size())) << x << ' ' << y;
        });
        EXPECT_EQ(target.IsBlankUsed() == 0, isFirstWhole);
    }
}

TEST_F(StackTest, BandsEqualTheCompositeOfWholeFrames)
{
    const int width = 181;
    const int height = 150;
    const std::pair<double, double> shifts[] = {{0, 0}, {3, -2}, {-4.3, 2.5}, {0.5, 0.0}, {-7.2, -5.6}, {0, 11}};
    for (const auto& [planes, method] :
         {std::pair(1, CombineMethod::kClippedMean), {3, CombineMethod::kClippedMedian}, {3, CombineMethod::kMedian}}) {
        SCOPED_TRACE(testing::Message() << planes << " planes, method " << static_cast<int>(method));
        auto dark = Make(width, height, planes, [](int x, int y, int) { return 20 + x % 7 + y % 5; });
        auto flat = Make(width, height, 1, [](int x, int y, int) { return 1000 + 3 * x - 2 * y; });
        Options options;
        options.darks = {Save("dark.fits", dark)};
        options.flats = {Save("flat.fits", flat)};
        options.align = AlignMethod::kShift;
        options.search = 20;
        options.method = method;
        options.coverage = Coverage::kAll;
        options.interpolation = Interpolation::kBilinear;
        std::vector<CStlImage> frames;
        std::vector<Pose> poses;
        for (const auto& [dx, dy] : shifts) {
            frames.push_back(Sky(width, height, planes, {{90, 70, 5000}, {40, 80, 900}, {130, 60, 700}}, dx, dy));
            frames.back().SetPixelGrayRaw(50, 50, std::nanf(""), 0);
            options.lights.push_back(Save("light" + std::to_string(frames.size()) + ".fits", frames.back()));
        }
        const test::TightMemory tiny(1 << 20);
        const Result result = stack::Stack(options);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            poses.push_back({result.frames[i].dx, result.frames[i].dy});
            frames[i].DarkClbrtn(&dark, 0);
            frames[i].FlatClbrtn(&flat, 0);
            frames[i].SetBlankUsed(i > 0);
            frames[i].SetBlank(kBlank);
        }
        EXPECT_TRUE(test::Agree(result.image, test::Plain(CompositeOf(frames, poses, method))));
        EXPECT_EQ(std::pair(result.image.IsBlankUsed(), result.image.GetBlank()), std::pair(1, kBlank));
    }
}

TEST_F(StackTest, BlanksOfLightsBecomeOneBlank)
{
    const auto light = [&](const std::string& name, int blank, const std::vector<std::int16_t>& samples) {
        return Write(name, test::Hdu(test::Cards(16, {3, 1}, {"BLANK   = " + std::to_string(blank)}),
                                     test::Bytes(samples, true)));
    };
    Options options;
    options.align = AlignMethod::kNone;
    options.coverage = Coverage::kAll;
    options.lights = {light("a.fits", -7, {300, -7, 300}), light("b.fits", -32768, {300, 300, -32768})};
    const Result blanks = stack::Stack(options);
    EXPECT_EQ(std::pair(blanks.image.IsBlankUsed(), blanks.image.GetBlank()), std::pair(1, -7));
    EXPECT_EQ(test::Samples(blanks.image), (std::vector{300.0F, -7.0F, -7.0F}));
}

TEST_F(StackTest, CombinesWhatTheRejectionLeaves)
{
    Options options;
    options.align = AlignMethod::kNone;
    for (const double value : {14.0, 10.0, 1000.0, 11.0, 13.0}) {
        const CStlImage light = Make(20, 16, 1, [&](int, int, int) { return value; });
        options.lights.push_back(Save("light" + std::to_string(value) + ".fits", light));
    }
    const struct {
        std::optional<CombineBy> combine;
        RejectOptions reject;
        RejectMethod done;
        double expected;
    } cases[] = {{{}, {}, RejectMethod::kWinsorized, 12.0},
                 {{}, {RejectMethod::kNone}, RejectMethod::kNone, 209.6F},
                 {{}, {RejectMethod::kSigma}, RejectMethod::kSigma, 209.6F},
                 {{}, {RejectMethod::kSigma, 0.1, 1.0}, RejectMethod::kSigma, 13.0},
                 {{}, {RejectMethod::kMad}, RejectMethod::kMad, 12.0},
                 {{}, {RejectMethod::kMinMax}, RejectMethod::kMinMax, 38.0F / 3.0F},
                 {{}, {RejectMethod::kMinMax, 0.0, 2.0}, RejectMethod::kMinMax, 34.0F / 3.0F},
                 {CombineBy::kMedian, {}, RejectMethod::kNone, 13.0},
                 {CombineBy::kSum, {RejectMethod::kEsd}, RejectMethod::kEsd, 48.0},
                 {CombineBy::kMax, {RejectMethod::kWinsorized}, RejectMethod::kWinsorized, 14.0},
                 {CombineBy::kMin, {}, RejectMethod::kNone, 10.0}};
    for (const auto& [combine, reject, done, expected] : cases) {
        options.combine = combine;
        options.reject = reject;
        const Result result = stack::Stack(options);
        EXPECT_EQ(result.rejection, done);
        EXPECT_FLOAT_EQ(result.image.GetPixelGrayRaw(3, 5, 0), static_cast<float>(expected)) << static_cast<int>(done);
        std::rotate(options.lights.begin(), options.lights.begin() + 2, options.lights.end());
    }
}

TEST_F(StackTest, LimitsOfRejectionGoByTheNumberOfLights)
{
    const struct {
        int lights;
        double far; // of 1, 2, 3 ...
        bool isKept;
        std::optional<int> grow{};
    } cases[] = {{2, 900.0, true},    {7, 12.0, true},    {7, 14.0, false},    {8, 18.0, true},
                 {8, 20.0, false},    {19, 38.0, true},   {20, 38.0, false},   {20, 36.0, true},
                 {9, 16.0, false, 0}, {9, 12.0, true, 0}, {10, 16.0, true, 0}, {10, 20.0, false, 0}};
    for (const auto& [lights, far, isKept, grow] : cases) {
        Options options;
        options.reject.grow = grow;
        options.align = AlignMethod::kNone;
        double sum = 0.0;
        for (int i = 0; i < lights; ++i) {
            const double value = i == 0 ? far : i;
            const CStlImage light = Make(8, 8, 1, [&](int, int, int) { return value; });
            options.lights.push_back(Save("light" + std::to_string(i) + ".fits", light));
            sum += value;
        }
        const double mean = isKept ? sum / lights : (sum - far) / (lights - 1);
        EXPECT_FLOAT_EQ(stack::Stack(options).image.GetPixelGrayRaw(1, 1, 0), static_cast<float>(mean))
            << lights << " lights, " << far;
    }
}

#if __has_include(<sys/resource.h>)
TEST_F(StackTest, TakesMoreLightsThanFilesMayBeOpen)
{
    Options options;
    options.align = AlignMethod::kNone;
    options.combine = CombineBy::kMedian;
    for (int i = 0; i < 70; ++i) {
        const CStlImage light = Make(64, 300, 1, [i](int x, int y, int) { return (i * 37 % 70) * 1000 + x + y; });
        options.lights.push_back(Save("light" + std::to_string(i) + ".fits", light));
    }
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit few{32, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    const test::TightMemory tiny(1 << 20);
    const Result result = stack::Stack(options);
    setrlimit(RLIMIT_NOFILE, &before);
    for (int y = 0; y < 300; ++y) {
        ASSERT_EQ(result.image.GetPixelGrayRaw(63, y, 0), static_cast<float>(35063 + y));
    }
}
#endif

} // namespace corvane::stack
