#include "corvane/draw/draw_line.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

struct Line {
    double x0, y0, x1, y1;
};

CImgDrawLine Drawn(CStlImage& image, const Line& line, const corvane::Pen& pen, CRect* rect = nullptr)
{
    CImgDrawLine result(image);
    result.Do(line.x0, line.y0, line.x1, line.y1, pen, &image, rect, 0);
    return result;
}

/// How much of the sample at (x, y) lies under the line: the box of a pixel, laid across it at the nearest point.
double Covered(double x, double y, const Line& line, double thickness)
{
    const double length = std::hypot(line.x1 - line.x0, line.y1 - line.y0);
    const double ux = length > 0.0 ? (line.x1 - line.x0) / length : 0.0;
    const double uy = length > 0.0 ? (line.y1 - line.y0) / length : 0.0;
    const double along = (x - line.x0) * ux + (y - line.y0) * uy;
    const double across = std::fabs((x - line.x0) * uy - (y - line.y0) * ux);
    const double beyond = std::min(along, 0.0) + std::max(along - length, 0.0);
    const double distance = length > 0.0 ? std::hypot(beyond, across) : std::hypot(x - line.x0, y - line.y0);
    const double low = std::max(distance - 0.5, -thickness / 2.0);
    const double high = std::min(distance + 0.5, thickness / 2.0);
    return std::max(high - low, 0.0);
}

} // namespace

TEST(DrawLine, AgreesWithThePlainFormInsideAndOutsideOfImageAndRectangle)
{
    Random random(7);
    ForEachImage([&](CStlImage& image) {
        ForEachRect(image, [&](CRect* rect) {
            const auto place = [&] { return random.Between(-12.0, 30.0); };
            const Line line{place(), place(), place(), place()};
            const corvane::Pen pen{random.Between(0.1, 9.0), random.Between(-50.0, 300.0), random.Whole(0, 1),
                                   random.Whole(-1, 2)};
            const CRect area = rect == nullptr ? CRect(0, 0, image.GetWidth(), image.GetHeight()) : *rect;
            const Plain before(image);
            const Plain expected = before.Map([&](double v, int x, int y, int p) {
                const bool isHere = x >= area.left && x < area.right && y >= area.top && y < area.bottom;
                const double c = isHere && (pen.plane == -1 || pen.plane == p) ? Covered(x, y, line, pen.thickness) : 0;
                const double value = pen.raw != 0 ? pen.value : before.ToRaw(pen.value, p);
                if (c > 0.0 && (!std::isfinite(v) || before.IsBlank(v))) {
                    return c >= 0.5 ? value : v;
                }
                return c > 0.0 ? v + c * (value - v) : v;
            });
            EXPECT_TRUE(Agree(Drawn(image, line, pen, rect), expected, 1, 1e-4));
        });
    });
}

TEST(DrawLine, EndsWhateverTheNumbers)
{
    constexpr double kMax = std::numeric_limits<double>::max();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    CStlImage image(-32, 40, 30, 1, 1.0, 0.0, 1);
    const auto samples = [&](const Line& line, double thickness = 3.0) {
        return Samples(Drawn(image, line, {thickness, 9.0, 1}));
    };
    const std::vector<float> none = Samples(image);
    const std::vector<float> level = samples({-9.0, 12.25, 99.0, 12.25});
    EXPECT_NE(level, none);
    EXPECT_EQ(samples({-kMax, 12.25, kMax, 12.25}), level);
    EXPECT_EQ(samples({1e300, 12.25, -7.0, 12.25}), level);
    const std::vector<float> diagonal = samples({0.0, 0.0, 39.0, 39.0});
    EXPECT_EQ(diagonal[20 * 40 + 20], 9.0F);
    EXPECT_NE(samples({-1e12, -1e12, 1e12, 1e12})[20 * 40 + 20], 0.0F);
    for (const Line& line : {Line{NAN, 1.0, 2.0, 3.0}, Line{1.0, 2.0, kInfinity, 3.0}, Line{-kMax, 99.0, kMax, 99.0}}) {
        EXPECT_EQ(samples(line), none);
    }
    for (const double thickness : {0.0, -1.0, static_cast<double>(NAN)}) {
        EXPECT_EQ(samples({0.0, 0.0, 39.0, 29.0}, thickness), none);
    }
    EXPECT_EQ(samples({1e5, 1e5, 1e5, 1e5}, kInfinity), std::vector<float>(40 * 30, 9.0F));
}
