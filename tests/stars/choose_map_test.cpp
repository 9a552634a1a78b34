#include "stars/choose_map.h"

#include <cmath>

#include "tests/support/images.h"

namespace corvane::stars {
namespace {

using test::Random;

constexpr double kFieldSide = 1000.0;
const Area kArea{0.0, 0.0, kFieldSide - 1.0, kFieldSide - 1.0};

/// What is asked of stars that lie as a truth says, and what is expected.
struct MapCase {
    const char* name;
    MapModel truth;
    int stars;
    MapModel expected;
    std::optional<MapModel> wish{};
    double right = kFieldSide; ///< stars lie left of this
    double bend = 6.0;         ///< pixels in the corners
};

/// Shifted by (5, -3), and what the model adds.
FieldMap Truth(const MapCase& c)
{
    FieldMap map;
    map.x0 = map.y0 = map.size = 0.5 * kFieldSide;
    map.x = {0.5 * kFieldSide + 5.0, 0.5 * kFieldSide};
    map.y = {0.5 * kFieldSide - 3.0, 0.0, 0.5 * kFieldSide};
    if (c.truth == MapModel::kAffine) {
        map.x[2] = c.bend / 2.0;
        map.y[1] = c.bend / 3.0;
    } else if (c.truth == MapModel::kHomography) {
        map.tiltU = -c.bend / kFieldSide;
        map.tiltV = c.bend / kFieldSide;
    } else if (c.truth == MapModel::kDistortion) {
        map.x[6] = map.x[8] = map.y[7] = map.y[9] = c.bend / 2.0;
    }
    return map;
}

/// Both fields, with noise of 0.1 pixels; every twentieth star of the frame is another one up to 3 pixels away.
std::pair<std::vector<FieldStar>, std::vector<FieldStar>> Fields(const MapCase& c, std::uint64_t seed)
{
    Random random(seed);
    const Mapping truth(Truth(c));
    std::pair<std::vector<FieldStar>, std::vector<FieldStar>> fields;
    for (int i = 0; i < c.stars; ++i) {
        const Position star{random.Between(0, c.right), random.Between(0, kFieldSide)};
        const Position at = truth.Map(star.x, star.y);
        const double off = i % 20 == 7 ? 3.0 : 0.17;
        fields.first.push_back({.x = star.x, .y = star.y});
        fields.second.push_back({.x = at.x + random.Between(-off, off), .y = at.y + random.Between(-off, off)});
    }
    return fields;
}

TEST(ChooseMap, TakesTheSimplestModelThatTheStarsBearAndNeed)
{
    using enum MapModel;
    const MapCase cases[] = {
        {"nothing to add", kSimilarity, 300, kSimilarity},
        {"sheared", kAffine, 60, kAffine},
        {"aslant", kHomography, 300, kHomography},
        {"bent", kDistortion, 300, kDistortion},
        {"bent by more than stars are looked for", kDistortion, 400, kDistortion, {}, kFieldSide, 12.0},
        {"too little to matter", kDistortion, 300, kSimilarity, {}, kFieldSide, 0.03},
        {"few stars", kDistortion, 11, kSimilarity, kDistortion},
        {"enough for lines", kAffine, 15, kAffine, kDistortion},
        {"on one side", kAffine, 300, kAffine, kDistortion, 0.15 * kFieldSide},
        {"asked for more", kSimilarity, 300, kDistortion, kDistortion},
        {"asked for less", kDistortion, 300, kAffine, kAffine, kFieldSide, 1.5},
    };
    for (const MapCase& c : cases) {
        for (std::uint64_t seed = 1; seed <= 6; ++seed) {
            SCOPED_TRACE(testing::Message() << c.name << ", seed " << seed);
            const auto [reference, frame] = Fields(c, seed);
            const Alignment match(-5.0, 3.0, 0.0, 1.0, 1.0, CfPoint(kFieldSide / 2, kFieldSide / 2));
            const ChosenMap chosen = ChooseMap(reference, frame, match, {.model = c.wish, .area = kArea});
            ASSERT_EQ(chosen.model, c.expected);
            ASSERT_EQ(chosen.map.has_value(), c.expected != kSimilarity);
            if (chosen.map && c.expected >= c.truth) {
                EXPECT_NEAR(chosen.residual, 0.14, c.stars > 100 ? 0.05 : 0.1);
                EXPECT_GE(chosen.stars, 0.9 * c.stars);
                for (const Position& at :
                     {Position{0, 0}, {kFieldSide, 0}, {0, kFieldSide}, {kFieldSide, kFieldSide}, {300, 400}}) {
                    const Position found = Mapping(*chosen.map).Map(at.x, at.y);
                    const Position truth = Mapping(Truth(c)).Map(at.x, at.y);
                    EXPECT_LT(std::hypot(found.x - truth.x, found.y - truth.y), c.stars > 100 ? 0.35 : 0.45);
                }
            }
        }
    }
}

} // namespace
} // namespace corvane::stars
