#include "stars/match_fields.h"

#include <cmath>
#include <limits>

#include "corvane/core/alignment.h"
#include "tests/support/images.h"

namespace corvane::stars {
namespace {

using test::Random;
using Stars = std::vector<FieldStar>;

constexpr int kSide = 1000;
const CfPoint kCentre(480, 510);

struct Case {
    const char* name;
    int stars;      ///< of each frame
    double missing; ///< share of them that the other frame has not, even where both see the same sky
    double error;   ///< largest of a position
    Alignment truth;
    MatchOptions options{};
    bool isMirrored = false;
    double distortion = 0.0; ///< at the middle of the frame's borders
};

Alignment Placed(double dx, double dy, double degrees, double scale = 1.0)
{
    Alignment alignment = Alignment::Turned(dx, dy, degrees, kCentre);
    alignment.scale = scale;
    return alignment;
}

void AddInside(Stars& field, double x, double y)
{
    if (std::min(x, y) >= 0.0 && std::max(x, y) < kSide) {
        field.push_back({.x = x, .y = y});
    }
}

/// Both frames' stars of a sky that is larger than they are; what comes first is seen by one of them alone.
std::pair<Stars, Stars> Frames(const Case& c, std::uint64_t seed)
{
    Random random(seed);
    Stars reference;
    Stars frame;
    for (int i = 0; i < 25 * c.stars; ++i) {
        const int x = random.Whole(-2 * kSide, 3 * kSide - 1);
        const int y = random.Whole(-2 * kSide, 3 * kSide - 1);
        const auto error = [&] { return random.Between(-c.error, c.error); };
        Position at = c.truth.Map(x, y);
        const double fromCentre = at.x - kCentre.x;
        at.x += c.distortion * std::pow(fromCentre / (kSide / 2), 3.0);
        const double kind = random.Between(0.0, 1.0 + c.missing);
        if (kind >= c.missing) {
            AddInside(reference, x + error(), y + error());
        }
        if (kind < c.missing || kind > 2.0 * c.missing) {
            AddInside(frame, (c.isMirrored ? 2.0 * kCentre.x - at.x : at.x) + error(), at.y + error());
        }
    }
    return {reference, frame};
}

void ExpectTruth(const FieldMatch& match, const Case& c, double tolerance)
{
    ASSERT_EQ(match.reason, "");
    EXPECT_EQ(match.isMirrored, c.isMirrored);
    const Alignment found = Placed(match.dx, match.dy, match.angle, match.scale);
    for (const auto& [x, y] : {CPoint(0, 0), CPoint(kSide, 0), CPoint(0, kSide), CPoint(kSide, kSide)}) {
        EXPECT_NEAR(found.Map(x, y).x, c.truth.Map(x, y).x, tolerance);
        EXPECT_NEAR(found.Map(x, y).y, c.truth.Map(x, y).y, tolerance);
    }
}

/// So many stars, each where place(random) says.
template <class Place>
Stars Scattered(int stars, std::uint64_t seed, Place place)
{
    Random random(seed);
    Stars field(static_cast<std::size_t>(stars));
    for (FieldStar& star : field) {
        std::tie(star.x, star.y) = place(random);
    }
    return field;
}

Stars Evenly(int stars, std::uint64_t seed)
{
    return Scattered(stars, seed,
                     [](Random& random) { return std::pair(random.Between(0, kSide), random.Between(0, kSide)); });
}

} // namespace

TEST(MatchFields, FindsHowAFrameLies)
{
    const Case cases[] = {
        {"exact", 100, 0.0, 0.0, Placed(12.25, -7.5, 0.0)},
        {"the mount turned over", 200, 0.3, 0.3, Placed(-60.0, 35.0, 180.3)},
        {"half a frame away", 200, 0.3, 0.2, Placed(500.0, -120.0, -71.0)},
        {"another scale", 200, 0.3, 0.2, Placed(40.0, 55.0, 100.0, 1.4), {.scale = true}},
        {"mirrored", 150, 0.2, 0.2, Placed(90.0, 20.0, 30.0), {.mirror = true}, true},
        {"mirrored at another scale", 150, 0.2, 0.2, Placed(9.0, 80.0, -140.0, 0.7), {true, true}, true},
        {"distorted", 150, 0.2, 0.1, Placed(20.0, 10.0, 5.0), {}, false, 1.0},
        {"few", 12, 0.0, 0.2, Placed(30.0, -10.0, 45.0)},
        {"crowded", 9000, 0.3, 0.1, Placed(100.0, 150.0, 10.0)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (std::uint64_t seed = 1; seed <= 3; ++seed) {
            const auto [reference, frame] = Frames(c, seed);
            const FieldMatch match = MatchFields(reference, frame, kCentre, c.options);
            ExpectTruth(match, c, c.error == 0.0 ? 1e-9 : 0.6 + c.error + 3.0 * c.distortion);
            EXPECT_EQ(match.scale == 1.0, !c.options.scale);
            const double expected = c.error * std::sqrt((1.0 + c.truth.scale * c.truth.scale) * 2.0 / 3.0);
            EXPECT_NEAR(match.residual, expected, 1e-9 + 0.3 * c.error + 0.5 * c.distortion);
        }
    }
}

TEST(MatchFields, FitsAllStarsButOutliers)
{
    const Case c{"", 2000, 0.0, 0.0, Placed(5.5, 3.25, 2.0)};
    auto [reference, frame] = Frames(c, 4);
    const int all = MatchFields(reference, frame, kCentre).stars;
    EXPECT_GT(all, 1500);
    Stars doubled = reference;
    for (const FieldStar& star : reference) {
        doubled.push_back({.x = star.x + 0.3, .y = star.y});
    }
    const FieldMatch nearest = MatchFields(doubled, frame, kCentre);
    ExpectTruth(nearest, c, 1e-9);
    EXPECT_EQ(nearest.stars, all);
    const int moved = 200;
    for (int i = 0; i < moved; ++i) {
        frame[static_cast<std::size_t>(7 * i)].x += 1.5;
    }
    const FieldMatch match = MatchFields(reference, frame, kCentre);
    ExpectTruth(match, c, 1e-9);
    EXPECT_NEAR(match.stars, all - moved, 15);
}

TEST(MatchFields, LeavesScaleInTheResidualUnlessAskedForIt)
{
    const Case c{"", 300, 0.0, 0.0, Placed(0.0, 0.0, 180.0, 1.002)};
    const auto [reference, frame] = Frames(c, 7);
    const FieldMatch rigid = MatchFields(reference, frame, kCentre);
    EXPECT_NEAR(rigid.residual, 0.002 * kSide / std::sqrt(6.0), 0.05);
}

TEST(MatchFields, TakesSaturatedStarsOnlyWhenFewAreLeft)
{
    const Case c{"", 40, 0.0, 0.0, Placed(5.5, 3.25, 2.0)};
    auto [reference, frame] = Frames(c, 5);
    const int all = MatchFields(reference, frame, kCentre).stars;
    for (const std::size_t star : {0U, 3U, 4U}) {
        frame[star].isSaturated = true;
    }
    EXPECT_LE(MatchFields(reference, frame, kCentre).stars, all - 2);
    for (FieldStar& star : frame) {
        star.isSaturated = true;
    }
    EXPECT_EQ(MatchFields(reference, frame, kCentre).stars, all);
    Stars others = Evenly(40, 6);
    others.insert(others.end(), frame.begin(), frame.end());
    EXPECT_NE(MatchFields(reference, others, kCentre).reason, "");
    for (FieldStar& star : frame) {
        star.isHot = true;
    }
    EXPECT_EQ(MatchFields(reference, frame, kCentre).reason, "the frame has 0 usable stars, and 3 are the least");
}

TEST(MatchFields, NamesNoMatchOfOtherFieldsAndOfWhatOnlyLooksLikeOne)
{
    const auto lattice = [](Random& random) {
        return std::pair(40.0 * random.Whole(0, 24), 40.0 * random.Whole(0, 24));
    };
    const auto line = [](Random& random) {
        const double t = random.Between(0, kSide);
        return std::pair(t, 0.6 * t + random.Between(-0.5, 0.5));
    };
    const auto trail = [&, i = 0](Random& random) mutable {
        return ++i % 3 == 0 ? line(random) : std::pair(random.Between(0, kSide), random.Between(0, kSide));
    };
    const auto cluster = [](Random& random) {
        const double r = random.Between(0, 1);
        const double angle = random.Between(0, 7);
        return std::pair(500 + 400 * r * r * r * std::cos(angle), 500 + 400 * r * r * r * std::sin(angle));
    };
    const auto expectNone = [](const Stars& reference, const Stars& frame, MatchOptions options = {}) {
        EXPECT_NE(MatchFields(reference, frame, kCentre, options).reason, "") << reference.size();
    };
    for (const int stars : {3, 4, 6, 10, 25, 100, 200}) {
        for (std::uint64_t seed = 1; seed <= 30; ++seed) {
            expectNone(Evenly(stars, seed), Evenly(stars, seed + 100), {seed % 3 == 0, seed % 2 == 0});
        }
    }
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        expectNone(Scattered(200, seed, lattice), Scattered(200, seed + 50, lattice));
        expectNone(Scattered(150, seed, line), Scattered(150, seed, line));
        expectNone(Scattered(200, seed, trail), Scattered(200, seed + 50, trail));
        expectNone(Scattered(100, seed, cluster), Scattered(100, seed + 50, cluster));
        expectNone(Evenly(200, seed), Stars(200, {.x = 5.0, .y = 5.0}));
    }
    const Case mirrored{"", 100, 0.0, 0.0, Placed(5.0, 3.0, 2.0), {}, true};
    const auto [reference, frame] = Frames(mirrored, 6);
    expectNone(reference, frame);
    EXPECT_EQ(MatchFields(Evenly(2, 1), frame, kCentre).reason,
              "the reference has 2 usable stars, and 3 are the least");
    expectNone({}, {});
    expectNone(frame, Stars(50, {.x = std::numeric_limits<double>::quiet_NaN(), .y = 1e300}));
}

} // namespace corvane::stars
