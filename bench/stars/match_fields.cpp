#include "stars/match_fields.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "bench/support/bench.h"
#include "corvane/core/alignment.h"

namespace corvane::bench {
namespace {

using Field = std::vector<stars::FieldStar>;

/// Two frames of one sky, a third of the stars of each missing in the other, turned by 217 degrees and moved.
struct Pair {
    static constexpr double kDensity = 2e-4; // per square pixel

    double side;
    CfPoint centre;
    Alignment truth;
    Field reference;
    Field frame;

    explicit Pair(int stars)
        : side(std::sqrt(stars / kDensity)), centre(side / 2, side / 2),
          truth(Alignment::Turned(0.12 * side, -0.09 * side, 217.0, centre))
    {
        std::mt19937_64 random(7);
        std::uniform_real_distribution<double> place(-side, 2.0 * side);
        std::normal_distribution<double> error(0.0, 0.15);
        for (int i = 0; i < 13 * stars; ++i) { // nine frames of sky
            const double x = std::floor(place(random));
            const double y = std::floor(place(random));
            const Position moved = truth.Map(static_cast<int>(x), static_cast<int>(y));
            const auto kind = random() % 4;
            Add(reference, kind != 0, x + error(random), y + error(random));
            Add(frame, kind != 1, moved.x + error(random), moved.y + error(random));
        }
    }

    void Add(Field& field, bool isSeen, double x, double y) const
    {
        if (isSeen && std::min(x, y) >= 0.0 && std::max(x, y) < side) {
            field.push_back({.x = x, .y = y});
        }
    }
};

Line MatchingLine(const std::string& name, int stars, bool isSame, stars::MatchOptions options, Limit limit)
{
    return {"stars/MatchFields/" + name, limit, [=](Run& run) {
                const Pair pair(Size(stars, 60));
                Field frame = pair.frame;
                if (!isSame) {
                    std::mt19937_64 random(8);
                    std::uniform_real_distribution<double> place(0.0, pair.side);
                    std::generate(frame.begin(), frame.end(),
                                  [&] { return stars::FieldStar{.x = place(random), .y = place(random)}; });
                }
                stars::FieldMatch match;
                const auto work = [&] { match = stars::MatchFields(pair.reference, frame, pair.centre, options); };
                work();
                Require(match.reason.empty() == isSame, "a match or none: " + match.reason);
                Require(!isSame || (std::fabs(match.dx - pair.truth.dx) < 0.5 && std::fabs(match.angle + 143.0) < 0.1),
                        "the shift and the angle found");
                run.Time((pair.reference.size() + frame.size()) * sizeof(stars::FieldStar), work);
            }};
}

const Line same = MatchingLine("200 stars", 200, true, {}, Seconds(0.02));
const Line other = MatchingLine("200 stars of another field", 200, false, {}, Seconds(0.02));
const Line any = MatchingLine("200 stars, scale and mirror", 200, true, {.scale = true, .mirror = true}, Seconds(0.02));
const Line anyOther =
    MatchingLine("200 stars of another field, scale and mirror", 200, false, {.scale = true, .mirror = true}, {});
const Line many = MatchingLine("10000 stars", 10000, true, {}, Seconds(0.1));

} // namespace
} // namespace corvane::bench
