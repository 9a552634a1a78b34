#include "catalogue/points.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tests/io/files.h"

namespace corvane::catalogue {
namespace {

using PointFiles = test::InFolder;

TEST_F(PointFiles, AreReadFromOneColumnOrTwo)
{
    const Points even = ReadPoints(Write("curve.txt", "0.1\n0.2\n0.9\n"));
    ASSERT_EQ(even.size(), 3U);
    EXPECT_EQ(even[1].x, 0.5);
    EXPECT_EQ(even[2].y, 0.9);
    const std::pair<const char*, const char*> faults[] = {
        {"", "a curve has two points or more"},
        {"0.5\n", "a curve has two points or more"},
        {"0 0\n1 1.5\n", "points must lie within 0 and 1"},
        {"0\n-\n", "line 2 is not one number or two"},
        {"0 0\n1 1 1\n", "line 2 is not one number or two"},
        {"0 0\n\n1\n", "line 3 has not as many numbers as those before"},
    };
    for (const auto& [text, fault] : faults) {
        const std::string file = Write("curve.txt", text);
        test::ExpectError([&] { ReadPoints(file); }, file, fault);
    }
}

TEST(Points, MakeACurveThatGoesThroughThemWithoutSwinging)
{
    const Points points{{0.1, 0.3}, {0.2, 0.3}, {0.5, 0.9}, {0.6, 0.91}, {0.8, 0.4}};
    const std::vector<float> table = Tabulate(points, 1001);
    std::size_t next = 0;
    for (int i = 0; i <= 1000; ++i) {
        next += next < points.size() && i > points[next].x * 1000.0 ? 1 : 0;
        const Point& after = points[std::min(next, points.size() - 1)];
        const Point& before = points[next > 0 ? next - 1 : 0];
        EXPECT_GE(table[static_cast<std::size_t>(i)], std::min(before.y, after.y) - 1e-6) << i;
        EXPECT_LE(table[static_cast<std::size_t>(i)], std::max(before.y, after.y) + 1e-6) << i;
    }
    for (const Point& point : points) {
        EXPECT_NEAR(table[static_cast<std::size_t>(std::lround(point.x * 1000.0))], point.y, 1e-6);
    }
    // No kink at a point: the slopes on both sides of it are alike.
    EXPECT_NEAR(table[501] - table[500], table[500] - table[499], 2e-5);
}

} // namespace
} // namespace corvane::catalogue
