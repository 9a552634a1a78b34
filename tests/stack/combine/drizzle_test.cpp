#include "stack/combine/drizzle.h"

#include <cmath>
#include <numbers>

#include "stack/combine/placed_frame.h"
#include "tests/stack/test_night.h"
#include "tests/support/plain.h"

namespace corvane::stack {

namespace {

using Polygon = std::vector<Position>;

/// What lies on the positive side of a line.
template <class Side>
Polygon Clip(const Polygon& polygon, Side side)
{
    Polygon clipped;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Position& a = polygon[i];
        const Position& b = polygon[(i + 1) % polygon.size()];
        const double t = side(a) / (side(a) - side(b));
        if (side(a) >= 0.0) {
            clipped.push_back(a);
        }
        if ((side(a) >= 0.0) != (side(b) >= 0.0)) {
            clipped.push_back({a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)});
        }
    }
    return clipped;
}

double Area(const Polygon& polygon)
{
    double area = 0.0;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Position& a = polygon[i];
        const Position& b = polygon[(i + 1) % polygon.size()];
        area += (a.x * b.y - a.y * b.x) / 2.0;
    }
    return std::fabs(area);
}

/// The part of a drop about the middle of pixel (n, m) that falls into pixel (x, y) of the grid.
double Part(const Alignment& onGrid, double size, int n, int m, int x, int y)
{
    const double h = size / 2.0;
    Polygon drop;
    for (const auto& [dx, dy] : {std::pair{-h, -h}, {h, -h}, {h, h}, {-h, h}}) {
        drop.push_back(onGrid.Back(n + dx, m + dy));
    }
    const double whole = Area(drop);
    drop = Clip(drop, [=](const Position& p) { return p.x - (x - 0.5); });
    drop = Clip(drop, [=](const Position& p) { return x + 0.5 - p.x; });
    drop = Clip(drop, [=](const Position& p) { return p.y - (y - 0.5); });
    return Area(Clip(drop, [=](const Position& p) { return y + 0.5 - p.y; })) / whole;
}

constexpr int kDropsAcross = 40;
constexpr int kDropsDown = 31;
const CfPoint kCentre(20, 15);

/// Frames in memory and what becomes of them.
struct Drizzled {
    void Add(CStlImage image, const Alignment& alignment)
    {
        plan.judged.frames.push_back({.frame = static_cast<int>(images.size()), .mapping = alignment});
        images.push_back(std::move(image));
    }

    void Drizzle(int threads = 1)
    {
        std::vector<const CStlImage*> sources;
        std::transform(images.begin(), images.end(), std::back_inserter(sources), [](const auto& i) { return &i; });
        const double scale = plan.grid.scale;
        const int planes = images[0].GetPlanes();
        plan.judged.grid = {images[0].GetWidth(), images[0].GetHeight()};
        plan.judged.blank = -9;
        plan.grid.width = static_cast<int>(std::lround(images[0].GetWidth() * scale));
        plan.grid.height = static_cast<int>(std::lround(images[0].GetHeight() * scale));
        result = CStlImage(-32, plan.grid.width, plan.grid.height, planes, 1.0, 0.0, 1);
        weights = CStlImage(result);
        noise = CStlImage(result);
        ImageSource source(sources);
        Run run;
        run.threads = threads;
        DrizzleFrames(plan, source, {result, &weights, nullptr, nullptr, nullptr, &noise}, run);
    }

    DrizzlePlan plan;
    std::vector<CStlImage> images;
    CStlImage result;
    CStlImage weights;
    CStlImage noise;
};

} // namespace

TEST(Drizzle, EqualsPolygonsClippedOneByOne)
{
    for (const auto& [scale, size, degrees] : {std::tuple{2.0, 0.7, 0.0},
                                               {1.0, 1.0, 33.0},
                                               {0.5, 0.6, 5.0},
                                               {3.3, 0.4, -120.0},
                                               {2.0, 1.0, 90.0},
                                               {2.0, 0.8, 1e-9}}) {
        SCOPED_TRACE(testing::Message() << scale << ' ' << size << ' ' << degrees);
        Drizzled frames;
        frames.plan.grid.scale = scale;
        frames.plan.drop = size;
        for (const int i : {0, 1, 2}) {
            Alignment alignment = Alignment::Turned(0.3 * i, -1.7 * i, degrees * i, kCentre);
            alignment.scale = 1.0 + 0.1 * i;
            frames.Add(test::RandomImage({kDropsAcross, kDropsDown}, 1, i), alignment);
            frames.plan.judged.frames.back().weight = 1.0 - 0.3 * i;
        }
        frames.images[1].SetPixelGrayRaw(20, 15, NAN, 0);
        frames.Drizzle();
        test::Plain sums = test::Plain(frames.weights).Map([](double, int, int, int) { return 0.0; });
        test::Plain weights = sums;
        for (std::size_t i = 0; i < 3; ++i) {
            const auto& [frame, mapping, normalisation, weight] = frames.plan.judged.frames[i];
            const Alignment& alignment = *mapping.AsAlignment();
            const Alignment onGrid = *OnGrid(alignment, {0, 0, scale}).AsAlignment();
            for (int k = 0; k < kDropsAcross * kDropsDown; ++k) {
                const int n = k % kDropsAcross;
                const int m = k / kDropsAcross;
                const Position near = alignment.Back(n, m);
                const double rx = std::floor(near.x + 0.5);
                const double ry = std::floor(near.y + 0.5);
                const Position judged = alignment.Map(rx, ry);
                const bool isThere = rx >= 0 && ry >= 0 && rx < kDropsAcross && ry < kDropsDown && judged.x >= 0.0 &&
                                     judged.y >= 0.0 && judged.x <= kDropsAcross - 1 && judged.y < kDropsDown;
                if (!isThere || std::isnan(frames.images[i].GetPixelGrayRaw(judged.x, judged.y, 0))) {
                    continue;
                }
                const Position at = onGrid.Back(n, m);
                for (int y = std::max(0, static_cast<int>(at.y) - 3); y < std::min(at.y + 4, 1.0 * weights.height);
                     ++y) {
                    for (int x = std::max(0, static_cast<int>(at.x) - 3); x < std::min(at.x + 4, 1.0 * weights.width);
                         ++x) {
                        const double part = weight * Part(onGrid, size, n, m, x, y);
                        weights.At(x, y, 0) += static_cast<float>(part);
                        sums.At(x, y, 0) += static_cast<float>(part * frames.images[i].GetPixelGrayRaw(n, m, 0));
                    }
                }
            }
        }
        weights.ForEach([&](int x, int y, int p) {
            const float weight = weights.At(x, y, p);
            ASSERT_NEAR(frames.weights.GetPixelGrayRaw(x, y, p), weight, 1e-5) << x << ' ' << y;
            if (weight > 1e-3F) {
                ASSERT_NEAR(frames.result.GetPixelGrayRaw(x, y, p), sums.At(x, y, p) / weight, 0.05) << x << ' ' << y;
            }
        });
    }
}

TEST(Drizzle, KeepsConstantsAndTheFluxOfStars)
{
    for (const auto kernel : {DropKernel::kSquare, DropKernel::kPoint}) {
        for (const auto& [scale, degrees, size] : {std::tuple{2.0, 0.0, 0.7}, {2.0, 3.0, 0.7}, {1.5, 20.0, 1.0}}) {
            Drizzled constant;
            Drizzled stars;
            constant.plan.kernel = stars.plan.kernel = kernel;
            constant.plan.drop = stars.plan.drop = size;
            constant.plan.grid.scale = stars.plan.grid.scale = scale;
            test::Random random(8);
            for (int i = 0; i < 16; ++i) {
                const auto alignment = Alignment::Turned(i % 4 / 4.0 + random.Between(0, 0.01),
                                                         i / 4 / 4.0 + random.Between(0, 0.01), degrees, kCentre);
                const Position at = alignment.Map(20.3, 15.1);
                constant.Add(Make(kDropsAcross, kDropsDown, 1, [](int, int, int) { return 1234.5; }), alignment);
                stars.Add(Make(kDropsAcross, kDropsDown, 1,
                               [&](int x, int y, int) {
                                   return 1e4 * std::exp(-(std::pow(x - at.x, 2) + std::pow(y - at.y, 2)) / 3.0);
                               }),
                          alignment);
            }
            constant.Drizzle();
            stars.Drizzle();
            double flux = 0.0;
            test::Plain(stars.result).ForEach([&](int x, int y, int p) {
                const bool isFilled = constant.weights.GetPixelGrayRaw(x, y, p) > 0.0;
                ASSERT_NEAR(constant.result.GetPixelGrayRaw(x, y, p), isFilled ? 1234.5 : -9.0, 1e-3);
                flux += isFilled ? stars.result.GetPixelGrayRaw(x, y, p) / (scale * scale) : 0.0;
            });
            EXPECT_NEAR(flux / (1e4 * std::numbers::pi * 3.0), 1.0, kernel == DropKernel::kPoint ? 1.2e-2 : 1e-4)
                << scale << ' ' << degrees << ' ' << size;
        }
    }
}

TEST(Drizzle, DropsNoHitsAndTheSameForAnyBandsAndThreads)
{
    Drizzled frames;
    frames.plan.grid.scale = 2.0;
    frames.plan.judged.rule = CombineMethod::kClippedMean;
    for (int i = 0; i < 14; ++i) {
        frames.Add(test::RandomImage({140, 60}, 3, i), Alignment::Turned(0.37 * i, -0.23 * i, 0.5 * i, kCentre));
    }
    frames.images[5].SetPixelGrayRaw(50, 20, 9e4F, 1);
    frames.plan.patterns.assign(14, BayerPattern::kGrbg);
    frames.Drizzle();
    const test::Plain first(frames.result);
    const test::Plain firstNoise(frames.noise);
    EXPECT_LT(*std::max_element(first.samples.begin(), first.samples.end()), 301.0F);
    frames.plan.judged.memory = 600000;
    frames.Drizzle(3);
    EXPECT_TRUE(test::Agree(frames.result, first));
    EXPECT_TRUE(test::Agree(frames.noise, firstNoise));
    frames.plan.judged.frames.resize(1); // GRBG: red is right of the first pixel, blue below it
    frames.plan.drop = 0.5;
    frames.Drizzle();
    const auto at = [&](int x, int y, int p) { return frames.result.GetPixelGrayRaw(2 * x, 2 * y, p); };
    EXPECT_EQ(at(4, 4, 0), -9.0);
    EXPECT_EQ(at(5, 4, 0), frames.images[0].GetPixelGrayRaw(5, 4, 0));
    EXPECT_EQ(at(4, 4, 1), frames.images[0].GetPixelGrayRaw(4, 4, 1));
    EXPECT_EQ(at(4, 5, 2), frames.images[0].GetPixelGrayRaw(4, 5, 2));
}

TEST(Drizzle, TellsTheNoiseOfFramesThatDifferInIt)
{
    Drizzled frames;
    frames.plan.grid.scale = 2.0;
    for (int i = 0; i < 12; ++i) {
        const CStlImage image = test::RandomImage({140, 60}, 1, i); // of mean 140
        const double times = 1.0 + i % 2;
        frames.Add(Make(140, 60, 1, [&](int x, int y, int) { return (image.GetPixelGrayRaw(x, y, 0) - 140) * times; }),
                   Alignment::Turned(0.37 * i, -0.23 * i, 0.5 * i, kCentre));
        frames.plan.judged.frames.back().weight = 1.0 / (times * times);
    }
    frames.Drizzle();
    double told = 0.0;
    double mean = 0.0;
    double squares = 0.0;
    constexpr int kCount = 200 * 80; // where all frames are
    for (int i = 0; i < kCount; ++i) {
        const double v = frames.result.GetPixelGrayRaw(40 + i % 200, 20 + i / 200, 0);
        told += std::pow(frames.noise.GetPixelGrayRaw(40 + i % 200, 20 + i / 200, 0), 2);
        mean += v / kCount;
        squares += v * v;
    }
    EXPECT_NEAR(told / (squares - kCount * mean * mean), 1.0, 0.05);
}

using DrizzleTest = Night;

TEST_F(DrizzleTest, StacksOntoAFinerGridOfTheSky)
{
    const auto sky = [](io::Header& header) {
        header.Set("CRPIX1", 11.0);
        header.Set("CRVAL1", 80.0);
        header.Set("CDELT1", 0.5);
        header.Set("XPIXSZ", 3.76);
    };
    Options options;
    options.align = AlignMethod::kNone;
    options.drizzle = 2.0;
    options.wantsWeights = options.wantsCoverage = options.wantsRejected = true;
    for (const char* name : {"a.fits", "b.fits"}) {
        options.lights.push_back(Save(name, Make(30, 20, 1, [](int x, int y, int) { return x + 100 * y; }), 60.0, sky));
    }
    const Result result = stack::Stack(options);
    EXPECT_EQ(result.image.GetPixelGrayRaw(21, 31, 0), 1510.0);
    EXPECT_NEAR(result.weights.GetPixelGrayRaw(21, 31, 0), 2 * 0.25, 1e-6);
    EXPECT_EQ(result.coverage.GetPixelGrayRaw(59, 39, 0), 2.0);
    EXPECT_EQ(result.rejected.GetWidth(), 30);
    const auto& axis = result.image.GetCoordinates().axes[0]; // the middle of pixel 11 is the corner of two now
    EXPECT_EQ(std::pair(axis.referencePixel.value(), axis.increment.value()), std::pair(21.5, 0.25));
    EXPECT_EQ(result.header.Number("XPIXSZ"), 1.88);
    options.drizzle = 4.1;
    EXPECT_EQ(ErrorOf([&] { CheckOptions(options); }), "drizzle = 4.1: must be 0.5 to 4");
    options.drizzle.reset();
    EXPECT_TRUE(Holds(ErrorOf([&] { CheckOptions(options); }), "weight-map"));
}

} // namespace corvane::stack
