#include "catalogue/points.h"

#include <algorithm>

#include "catalogue/number_lines.h"
#include "corvane/core/error.h"

namespace corvane::catalogue {
namespace {

constexpr NumberLines kCurveLines{"a curve", "one number or two", 2};

bool IsWithin(double v)
{
    return v >= 0.0 && v <= 1.0;
}

/// The slopes of the curve at its points.
std::vector<double> Slopes(const Points& points)
{
    const auto width = [&](std::size_t i) { return points[i + 1].x - points[i].x; };
    const auto chord = [&](std::size_t i) { return (points[i + 1].y - points[i].y) / width(i); };
    std::vector<double> slopes(points.size(), 0.0);
    slopes.front() = chord(0);
    slopes.back() = chord(points.size() - 2);
    for (std::size_t i = 1; i + 1 < points.size(); ++i) {
        const double before = chord(i - 1);
        const double after = chord(i);
        if (before * after > 0.0) {
            const double weightBefore = width(i - 1) + 2.0 * width(i);
            const double weightAfter = 2.0 * width(i - 1) + width(i);
            slopes[i] = (weightBefore + weightAfter) / (weightBefore / before + weightAfter / after);
        }
    }
    return slopes;
}

/// The cubic from a to b with the given slopes there, at x between them.
double Cubic(const Point& a, const Point& b, double slopeA, double slopeB, double x)
{
    const double width = b.x - a.x;
    const double t = (x - a.x) / width;
    const double u = 1.0 - t;
    return u * u * (1.0 + 2.0 * t) * a.y + t * t * (1.0 + 2.0 * u) * b.y + t * u * width * (u * slopeA - t * slopeB);
}

} // namespace

std::string FaultOf(const Points& points)
{
    if (points.size() < 2) {
        return "a curve has two points or more";
    }
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!IsWithin(points[i].x) || !IsWithin(points[i].y)) {
            return "points must lie within 0 and 1";
        }
        if (i > 0 && points[i].x <= points[i - 1].x) {
            return "x must rise from point to point";
        }
    }
    return {};
}

Points ReadPoints(const std::string& file)
{
    const std::vector<std::vector<double>> lines = ReadNumberLines(file, kCurveLines);
    Points points;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const double place = static_cast<double>(i) / static_cast<double>(std::max<std::size_t>(lines.size(), 2) - 1);
        points.push_back({lines[i].size() == 2 ? lines[i].front() : place, lines[i].back()});
    }
    if (const std::string fault = FaultOf(points); !fault.empty()) {
        throw FileError(file, fault);
    }
    return points;
}

std::vector<float> Tabulate(const Points& points, int entries)
{
    const std::vector<double> slopes = Slopes(points);
    std::vector<float> table;
    std::size_t next = 1;
    for (int i = 0; i < entries; ++i) {
        const double x = std::clamp(i / (entries - 1.0), points.front().x, points.back().x);
        while (x > points[next].x) {
            ++next;
        }
        table.push_back(static_cast<float>(Cubic(points[next - 1], points[next], slopes[next - 1], slopes[next], x)));
    }
    return table;
}

} // namespace corvane::catalogue
