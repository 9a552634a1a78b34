#include "stars/star_patterns.h"

#include <algorithm>
#include <cmath>
#include <ranges>
#include <tuple>

#include "stars/similarity.h"
#include "stars/star_grid.h"

namespace corvane::stars {

namespace {

constexpr int kTriangleNeighbours = 8; // 28 triangles a star: enough are left when half of the stars are missing
constexpr int kTriangleNeighboursAnyScale = 6; // 15: so many more are alike by chance
constexpr double kSideError = 0.75;            // pixels in each field: twice what errors of 0.25 pixel in x and y make
constexpr double kStretch = 0.001;             // of a side: the optics' distortion
constexpr double kShortest = 5.0;              // pixels
constexpr double kLeastHeight = 0.05;          // of the longest side
constexpr int kMostEquals = 64;

using Triple = std::array<int, 3>;

std::vector<Triple> NeighbourTriples(const std::vector<Position>& stars, int count)
{
    std::vector<Triple> triples;
    const auto neighbours = NearestNeighbours(stars, count);
    for (std::size_t i = 0; i < neighbours.size(); ++i) {
        for (std::size_t j = 1; j < neighbours[i].size(); ++j) {
            for (std::size_t k = 0; k < j; ++k) {
                Triple triple{static_cast<int>(i), neighbours[i][j], neighbours[i][k]};
                std::sort(triple.begin(), triple.end());
                triples.push_back(triple);
            }
        }
    }
    std::sort(triples.begin(), triples.end());
    triples.erase(std::unique(triples.begin(), triples.end()), triples.end());
    return triples;
}

/// Adds the pattern of three stars in their order, if it is a good one.
void AddPattern(const std::array<Position, 3>& stars, const PatternKind& kind, std::vector<StarPattern>& patterns)
{
    const auto& [p, q, r] = stars;
    const double a = std::sqrt(SquaredDistance(q, r));
    const double b = std::sqrt(SquaredDistance(r, p));
    const double c = std::sqrt(SquaredDistance(p, q));
    const double area = (q.x - p.x) * (r.y - p.y) - (r.x - p.x) * (q.y - p.y);
    const double error = kSideError + kStretch * a;
    const double slack = kind.allOrders ? 2.0 * error : 0.0;
    const bool isInOrder = a >= b - slack && b >= c - slack;
    if (!isInOrder || std::min({a, b, c}) < kShortest || std::fabs(area) < kLeastHeight * a * a) {
        return;
    }
    if (kind.anyScale) {
        patterns.push_back({{b / a, c / a, 0.0}, error / a, stars, area > 0.0});
    } else {
        patterns.push_back({{a, b, c}, error, stars, area > 0.0});
    }
}

bool IsBefore(const StarPattern& p, const StarPattern& q)
{
    const auto place = [](const StarPattern& pattern) {
        const auto& [first, second, third] = pattern.stars;
        return std::tuple(pattern.key, first.x, first.y, second.x, second.y, third.x, third.y);
    };
    return place(p) < place(q);
}

bool IsSame(const StarPattern& p, const StarPattern& q)
{
    const double tolerance = p.tolerance + q.tolerance;
    return p.isClockwise == q.isClockwise && std::fabs(p.key[0] - q.key[0]) <= tolerance &&
           std::fabs(p.key[1] - q.key[1]) <= tolerance && std::fabs(p.key[2] - q.key[2]) <= tolerance;
}

} // namespace

std::vector<StarPattern> MakePatterns(const std::vector<Position>& stars, const PatternKind& kind)
{
    std::vector<StarPattern> patterns;
    for (Triple triple : NeighbourTriples(stars, kind.anyScale ? kTriangleNeighboursAnyScale : kTriangleNeighbours)) {
        do {
            const auto star = [&](std::size_t i) { return stars[static_cast<std::size_t>(triple[i])]; };
            AddPattern({star(0), star(1), star(2)}, kind, patterns);
        } while (std::next_permutation(triple.begin(), triple.end()));
    }
    std::sort(patterns.begin(), patterns.end(), IsBefore);
    return patterns;
}

void MatchPatterns(const std::vector<StarPattern>& reference, const std::vector<StarPattern>& frame,
                   const std::function<bool(const StarPattern&, const StarPattern&)>& visit)
{
    double tolerance = 0.0; // the largest of the frame
    for (const StarPattern& pattern : frame) {
        tolerance = std::max(tolerance, pattern.tolerance);
    }
    // the largest first, which fewer others equal by chance
    for (const StarPattern& pattern : std::views::reverse(reference)) {
        const double reach = pattern.tolerance + tolerance;
        const auto isBelow = [](const StarPattern& p, double key) { return p.key[0] < key; };
        auto other = std::lower_bound(frame.begin(), frame.end(), pattern.key[0] - reach, isBelow);
        for (int equals = 0; equals < kMostEquals && other != frame.end() && other->key[0] <= pattern.key[0] + reach;
             ++other) {
            if (IsSame(pattern, *other)) {
                ++equals;
                if (!visit(pattern, *other)) {
                    return;
                }
            }
        }
    }
}

} // namespace corvane::stars
