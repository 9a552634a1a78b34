#include "corvane/tone/curve.h"

#include <algorithm>
#include <limits>

#include "corvane/core/display_scale.h"

namespace corvane {
namespace {

constexpr double kUnbounded = std::numeric_limits<double>::infinity();

Curve::End LineBelow(double a, double b, double last)
{
    return a == b ? Curve::End{0.0, 0.0, a * 255.0, 0.0}
                  : Curve::End{std::min((b - a) * last, 0.0), 0.0, 0.0, -kUnbounded};
}

Curve::End LineAbove(double a, double b, double last)
{
    return a == b ? Curve::End{0.0, 255.0, b * 255.0, 255.0}
                  : Curve::End{std::max((b - a) * last, 0.0), b * 255.0, b * 255.0, kUnbounded};
}

} // namespace

Curve::Curve(const float* table, int n)
    : table_(table), size_(n), below_(LineBelow(table[0], table[1], n - 1.0)),
      above_(LineAbove(table[n - 2], table[n - 1], n - 1.0))
{}

void Curve::Apply(double* values, int count) const
{
    alignas(64) int index[kBlock];
    alignas(64) float entry[kBlock];
    const double last = size_ - 1.0;
    for (int i = 0; i < count; ++i) {
        index[i] = static_cast<int>(std::min(last, std::max(0.0, last * values[i] * kPer255)));
    }
    // A fraction f of the way to the next entry counts f + (1 - f) times: the lower entry, exactly.
    LookUp(index, table_, entry, count);
    const End below = below_;
    const End above = above_;
    for (int i = 0; i < count; ++i) {
        const double x = values[i];
        const double left = below(std::max(x, below.bound));
        const double right = above(std::min(x, above.bound));
        const double outside = x < 0.0 ? left : right; // NaN goes right and stays
        const bool isInside = (x >= 0.0) & (x <= 255.0);
        values[i] = isInside ? entry[i] * 255.0 : outside;
    }
}

std::optional<Curve::End> Curve::Then(const End& line) const
{
    if (line.slope == 0.0) {
        End level = line;
        Apply(&level.value, 1);
        return level;
    }
    // All of the line must lie above the table; it may begin at the last entry where the curve has no jump.
    const double first = line(255.0);
    if (line.slope > 0.0 && (first > 255.0 || (first == 255.0 && above_(255.0) == Entry(size_ - 1)))) {
        return End{line.slope * above_.slope, line.start, above_(line.value), above_.bound};
    }
    return std::nullopt;
}

} // namespace corvane
