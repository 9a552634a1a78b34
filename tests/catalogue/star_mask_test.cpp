#include <algorithm>
#include <cmath>
#include <vector>

#include "catalogue/apply.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

namespace corvane::catalogue {
namespace {

constexpr int kFieldWidth = 320;
constexpr int kFieldHeight = 240;
constexpr double kSigma = 1.6; // of a star [pixels]
constexpr double kNoise = 10.0;
constexpr double kCeiling = 30000.0;

/// A round source: a Gaussian, and a part of its peak that falls with the cube of the distance.
struct Source {
    double x;
    double y;
    double peak;
    double sigma = kSigma;
    double wing = 0.0;

    double At(double px, double py) const
    {
        const double square = ((px - x) * (px - x) + (py - y) * (py - y)) / (2.0 * sigma * sigma);
        return peak * (std::exp(-square) + wing * std::pow(1.0 + square, -1.5));
    }
};

const Source kFaintSource{40.3, 200.0, 20 * kNoise};
const Source kBrightSource{100.0, 200.6, 1000 * kNoise};
const Source kSaturated{220.0, 190.0, 400000.0, kSigma, 0.02};
const Source kGalaxy{290.0, 130.0, 300 * kNoise, 6.0};
constexpr int kHotX = 160;
constexpr int kHotY = 150;
constexpr int kTrailEnd = 60; // of the saturated star's column

/// A field on a sky of 1000.
CStlImage StarryField(int planes)
{
    std::vector<Source> sources{kFaintSource, kBrightSource, kSaturated, kGalaxy};
    for (int i = 0; i < 24; ++i) {
        sources.push_back({20.2 + 37.1 * (i % 8), 20.0 + 30.3 * (i / 8), (60 + 10 * i) * kNoise});
    }
    test::Random random(2);
    return test::Make(kFieldWidth, kFieldHeight, planes, [&](int x, int y, int p) {
        double v = 1000.0 + kNoise * std::sqrt(2.0) * (random.Between(-1.2, 1.2) + random.Between(-1.2, 1.2)) / 1.386;
        for (const Source& source : sources) {
            v += (p == 0 ? 1.0 : 0.05) * source.At(x, y);
        }
        v += x == kHotX && y == kHotY ? 5000.0 : 0.0;
        const bool isTrail = x == kSaturated.x && y > kTrailEnd && y < kSaturated.y;
        return isTrail ? kCeiling : std::min(v, kCeiling);
    });
}

/// How far to the right of a star the mask is 1.
int RadiusIn(const CStlImage& mask, const Source& star)
{
    int radius = 0;
    while (mask.GetPixelGrayRaw(static_cast<int>(std::lround(star.x)) + radius, static_cast<int>(std::lround(star.y)),
                                0) == 1.0F) {
        ++radius;
    }
    return radius;
}

TEST(StarMask, CoversStarsToWhereNoiseHidesThem)
{
    const CStlImage image = StarryField(1);
    const CStlImage mask = Apply(image, "star-mask", {{"grow", 0.0}, {"soft", 0.0}});
    for (const Source& star : {kFaintSource, kBrightSource}) {
        EXPECT_NEAR(RadiusIn(mask, star), kSigma * std::sqrt(2.0 * std::log(star.peak / kNoise)), 1.5);
    }
    for (int x = 0; x < kFieldWidth; ++x) {
        for (int y = kTrailEnd + 1; y < kFieldHeight; ++y) {
            const bool isSeen = kSaturated.At(x, y) > 1.5 * kNoise || image.GetPixelGrayRaw(x, y, 0) == kCeiling;
            EXPECT_TRUE(!isSeen || mask.GetPixelGrayRaw(x, y, 0) == 1.0F) << x << ", " << y;
        }
    }
    EXPECT_LT(RadiusIn(mask, kSaturated), 70) << "where its halo has 0.3 of the noise";
    EXPECT_EQ(RadiusIn(mask, kGalaxy), 0);
    EXPECT_EQ(mask.GetPixelGrayRaw(kHotX, kHotY, 0), 0.0F);
    EXPECT_EQ(mask.GetPixelGrayRaw(70, 230, 0), 0.0F);
}

// A knot that stands on a nebula is covered as far as it rises above that.
TEST(StarMask, StopsWhereANebulaBegins)
{
    CStlImage image = StarryField(1);
    const Source nebula{160.0, 210.0, 200 * kNoise, 10.0};
    const Source knot{160.0, 210.0, 150 * kNoise};
    for (int i = 0; i < kFieldWidth * kFieldHeight; ++i) {
        float& sample = *image.GetImageAdr(i % kFieldWidth, i / kFieldWidth, 0);
        sample +=
            static_cast<float>(nebula.At(i % kFieldWidth, i / kFieldWidth) + knot.At(i % kFieldWidth, i / kFieldWidth));
    }
    const int radius = RadiusIn(Apply(image, "star-mask", {{"grow", 0.0}, {"soft", 0.0}}), knot);
    EXPECT_GE(radius, 4);
    EXPECT_LE(radius, 10) << "the nebula is seen 30 pixels away";
}

TEST(StarMask, EndsStarsWithoutNoise)
{
    const CStlImage image = test::Make(300, 300, 1, [](int x, int y, int) { return 100.0 + kBrightSource.At(x, y); });
    EXPECT_NEAR(RadiusIn(Apply(image, "star-mask", {{"grow", 0.0}, {"soft", 0.0}}), kBrightSource), 4.8 * kSigma, 1.5);
}

TEST(StarMask, GrowsFadesTurnsAndChooses)
{
    const CStlImage image = StarryField(3);
    const auto with = [&](Settings settings) { return Apply(image, "star-mask", settings); };
    const CStlImage plain = with({{"soft", 0.0}, {"grow", 0.0}});
    const int own = RadiusIn(plain, kBrightSource);
    EXPECT_EQ(plain.GetPlanes(), 1);
    EXPECT_GT(own, RadiusIn(with({{"soft", 0.0}, {"grow", 0.0}, {"plane", 2}}), kBrightSource))
        << "it is brightest in red";
    EXPECT_EQ(RadiusIn(with({{"soft", 0.0}, {"grow", 3.0}}), kBrightSource), own + 3);
    const CStlImage soft = with({{"soft", 6.0}, {"grow", 0.0}});
    for (int i = 0; i < 8; ++i) {
        const float inner = soft.GetPixelGrayRaw(100 + own - 1 + i, 201, 0);
        const float outer = soft.GetPixelGrayRaw(100 + own + i, 201, 0);
        EXPECT_TRUE(outer < inner || (outer == 0.0F && i >= 5)) << i;
    }
    EXPECT_TRUE(test::Agree(with({{"soft", 6.0}, {"grow", 0.0}, {"invert", true}}),
                            test::Plain(soft).Map([](double v, int, int, int) { return 1.0 - v; })));
    EXPECT_EQ(RadiusIn(with({{"min", 2.0 * own - 3.0}}), kFaintSource), 0);
    EXPECT_EQ(RadiusIn(with({{"max", 2.0 * own - 3.0}}), kBrightSource), 0);
    EXPECT_GT(RadiusIn(with({{"max", 2.0 * own - 3.0}}), kFaintSource), 0);
}

} // namespace
} // namespace corvane::catalogue
