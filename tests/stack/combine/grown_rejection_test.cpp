#include "stack/combine/grown_rejection.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>

#include <gtest/gtest.h>

#include "stack/combine/drizzle.h"
#include "stack/combine/rejection_tally.h"
#include "tests/support/images.h"
#include "tests/support/storage.h"

namespace corvane::stack {

namespace {

constexpr int kHigh = 40; // rows of a grid

/// What was rejected of one frame, by row and column.
using Marks = std::vector<std::vector<bool>>;

bool IsMarked(const Marks& marks, int x, int y)
{
    return y >= 0 && y < kHigh && x >= 0 && x < static_cast<int>(marks[0].size()) && marks[y][x];
}

int CountAbout(const Marks& marks, int x, int y, int reach, auto counts)
{
    int count = 0;
    for (int v = y - reach; v <= y + reach; ++v) {
        for (int u = x - reach; u <= x + reach; ++u) {
            count += IsMarked(marks, u, v) && counts(u, v) ? 1 : 0;
        }
    }
    return count;
}

/// The definition, pixel by pixel.
bool IsDropped(const Marks& marks, int x, int y, int grow)
{
    const auto any = [](int, int) { return true; };
    return CountAbout(marks, x, y, grow, [&](int u, int v) { return CountAbout(marks, u, v, 2, any) >= 4; }) > 0;
}

constexpr int kWide = 90;

CStlImage Empty()
{
    return {-32, kWide, kHigh, 1, 1.0, 0.0, 1};
}

/// Frames of noise. The second one shows a trail, the third one a hit.
struct NoisyFrames {
    explicit NoisyFrames(double degrees)
    {
        test::Random random(4);
        for (int i = 0; i < 7; ++i) {
            images.push_back(test::Make(kWide, kHigh, 1, [&](int x, int y, int) {
                const double far = y - 20.0 - 0.02 * x;
                const double trail = i == 1 ? 40.0 * std::exp(-far * far) : 0.0;
                const double hit = i == 2 && x / 2 == 35 && y / 2 == 4 ? 50.0 : 0.0;
                return 100.0 + random.Between(-2.0, 2.0) + trail + hit;
            }));
            plan.frames.push_back({i, Alignment::Turned(0.0, 0.0, degrees * i, {kWide / 2.0, kHigh / 2.0})});
        }
        images[3].SetPixelGrayRaw(50, 21, NAN, 0);
        plan.frames[6].weight = 0.5;
        plan.grid = {kWide, kHigh};
        plan.coverage = Coverage::kAny;
        plan.rule = {CombineBy::kMean, ClipByWinsorizedDeviation({4.0, 4.0})};
        plan.grow = 1;
        for (const CStlImage& image : images) {
            pointers.push_back(&image);
        }
        tally.emplace(plan);
    }

    /// In bands of so many rows.
    void Combine(int rows)
    {
        ImageSource source(pointers);
        for (int first = 0; first < kHigh; first += rows) {
            CStlImage band(-32, kWide, std::min(rows, kHigh - first), 1, 1.0, 0.0, 1);
            CStlImage high(band);
            CombineFrames(plan, source, {band, first, nullptr, nullptr, &high, nullptr, &*tally});
            for (int y = 0; y < band.GetHeight(); ++y) {
                for (const auto& [from, to] : {std::pair{&band, &result}, {&high, &tooHigh}}) {
                    std::copy_n(from->GetImageAdr(0, y, 0), kWide, to->GetImageAdr(0, first + y, 0));
                }
            }
        }
    }

    void Drizzle()
    {
        ImageSource source(pointers);
        DrizzleFrames({plan, plan.grid, 1.0}, source, {result, nullptr, nullptr, nullptr, &tooHigh, nullptr, &*tally});
    }

    std::vector<CStlImage> images;
    std::vector<const CStlImage*> pointers;
    CombinePlan plan{};
    CStlImage result = Empty();
    CStlImage tooHigh = Empty();
    std::optional<RejectionTally> tally;
};

/// One pixel of frames that lie on each other, without what is dropped of them; takes down what is too high.
float CombinedPixel(const NoisyFrames& frames, int x, int y, std::vector<Marks>& marks, bool isDropping)
{
    const std::size_t count = frames.images.size();
    std::vector<double> values(count);
    std::vector<int> valid(count, 1);
    std::vector<CombineLine> lines;
    std::vector<double> weights;
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = frames.images[i].GetPixelGrayRaw(x, y, 0);
        valid[i] = isDropping && IsDropped(marks[i], x, y, frames.plan.grow) ? 0 : 1;
        lines.push_back({&values[i], &valid[i]});
        weights.push_back(frames.plan.frames[i].weight);
    }
    float result = 0.0F;
    double low = 0.0;
    double high = 0.0;
    RowCombiner(frames.plan.rule, Coverage::kAny, weights, 0)
        .Combine(lines.data(), 1, {&result, nullptr, nullptr, nullptr, &low, &high});
    for (std::size_t i = 0; i < count && !isDropping; ++i) {
        marks[i][y][x] = values[i] > high;
    }
    return result;
}

} // namespace

TEST(GrownRejection, DropsWhatTheDefinitionSays)
{
    std::mt19937 random(7);
    for (const auto& [width, grow] : {std::pair{1, 1}, {3, 2}, {63, 1}, {64, 3}, {65, 10}, {130, 1}, {200, 2}}) {
        CombinePlan plan;
        plan.frames.resize(2);
        plan.grid = {width, kHigh};
        plan.rule = {CombineBy::kMean, ClipByDeviation({})};
        plan.grow = grow;
        GrownRejection grown(plan, 1);
        const RowSpan rows = grown.Around({10, 20});
        grown.Begin(rows);
        Marks marks(kHigh, std::vector<bool>(width));
        for (int y = rows.first; y < rows.end; ++y) {
            std::vector<double> values(width);
            const std::vector<int> valid(width, 1);
            for (int x = 0; x < width; ++x) {
                marks[y][x] = random() % 16 == 0;
                values[x] = marks[y][x] ? 5.0 : 3.0;
            }
            const std::vector<double> high(width, 4.0);
            const std::vector<double> none(width, 0.0);
            grown.Enter({0, y, 0, width}, {{none.data(), valid.data()}, {values.data(), valid.data()}}, high.data());
        }
        ColumnBits columns;
        for (int y = 10; y < 20; ++y) {
            EXPECT_FALSE(grown.Find(0, 0, y, columns));
            grown.Find(1, 0, y, columns);
            for (int x = 0; x < width; ++x) {
                ASSERT_EQ(HasColumn(columns, x), IsDropped(marks, x, y, grow)) << x << ' ' << y << " of " << width;
            }
        }
    }
}

TEST(GrownRejection, JudgesTheRestAgainInCombiningAsInDrizzling)
{
    NoisyFrames frames(0.0);
    std::vector<Marks> marks(7, Marks(kHigh, std::vector<bool>(kWide)));
    for (const bool isDropping : {false, true}) {
        for (int i = 0; i < kWide * kHigh; ++i) {
            CombinedPixel(frames, i % kWide, i / kWide, marks, isDropping);
        }
    }
    frames.Combine(kHigh);
    NoisyFrames drizzled(0.0);
    drizzled.Drizzle();
    int dropped = 0;
    for (int i = 0; i < kWide * kHigh; ++i) {
        const int x = i % kWide;
        const int y = i / kWide;
        const float value = frames.result.GetPixelGrayRaw(x, y, 0);
        ASSERT_EQ(value, CombinedPixel(frames, x, y, marks, true)) << x << ' ' << y;
        ASSERT_NEAR(drizzled.result.GetPixelGrayRaw(x, y, 0), value, 1e-3) << x << ' ' << y;
        ASSERT_EQ(drizzled.tooHigh.GetPixelGrayRaw(x, y, 0), frames.tooHigh.GetPixelGrayRaw(x, y, 0)) << x << ' ' << y;
        dropped += static_cast<int>(frames.tooHigh.GetPixelGrayRaw(x, y, 0));
    }
    long long counted = 0;
    for (std::size_t i = 0; i < 7; ++i) {
        counted += frames.tally->OfFrames()[i].high;
        EXPECT_EQ(drizzled.tally->OfFrames()[i].high, frames.tally->OfFrames()[i].high);
        EXPECT_EQ(frames.tally->OfFrames()[i].values, kWide * kHigh - (i == 3 ? 1 : 0));
    }
    EXPECT_EQ(counted, dropped);
    EXPECT_GT(frames.tally->OfFrames()[1].high, 4 * kWide) << "the trail with its edges";
    EXPECT_EQ(frames.tooHigh.GetPixelGrayRaw(70, 7, 0), 1.0F) << "beside the hit";
}

TEST(GrownRejection, IsTheSameInAnyBandsAndStrips)
{
    NoisyFrames whole(12.0);
    whole.Combine(kHigh);
    for (const auto& [rows, memory] : {std::pair{1, 1U << 30}, {7, 1U << 30}, {kHigh, 3000U}, {kHigh, 30000U}}) {
        NoisyFrames frames(12.0);
        frames.plan.memory = memory;
        frames.Combine(rows);
        EXPECT_EQ(test::Samples(frames.result), test::Samples(whole.result)) << rows << ' ' << memory;
        EXPECT_EQ(test::Samples(frames.tooHigh), test::Samples(whole.tooHigh)) << rows << ' ' << memory;
        EXPECT_EQ(test::Samples(frames.tally->Picture()), test::Samples(whole.tally->Picture()));
    }
}

} // namespace corvane::stack
