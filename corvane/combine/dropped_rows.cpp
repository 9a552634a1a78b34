#include "corvane/combine/dropped_rows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace corvane {

namespace {

/// A position that is far off, or none, as one that is off any frame.
double Bounded(double position)
{
    constexpr double kFar = 1e6;
    return position > -kFar ? std::min(position, kFar) : -kFar; // NaN is not
}

} // namespace

double DropSums::Noise(int i) const
{
    if (frames[i] < 2) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const double squares = std::max(square[i] - value[i] * value[i] / weight[i], 0.0);
    const double free = parts[i] - worth[i] / weight[i];
    return std::sqrt(squares / free * worth[i]) / weight[i];
}

void DropSums::Store(int blank, float* means, float* weights, float* coverage, float* noise) const
{
    for (int i = 0; i < count; ++i) {
        means[i] = weight[i] > 0.0 ? static_cast<float>(value[i] / weight[i]) : static_cast<float>(blank);
    }
    if (weights != nullptr) {
        std::copy_n(weight, count, weights);
    }
    if (coverage != nullptr) {
        std::copy_n(frames, count, coverage);
    }
    for (int i = 0; i < count && noise != nullptr; ++i) {
        noise[i] = static_cast<float>(Noise(i));
    }
}

DroppedRows::DroppedRows(const Mapping& onGrid, double size, DropKernel kernel, int width, int planes, double weight)
    : onGrid_(onGrid), drop_(onGrid, {0.0, 0.0}, size, kernel), size_(size), kernel_(kernel), width_(width),
      planes_(planes), weight_(weight)
{}

void DroppedRows::Begin(const RowSpan& rows)
{
    rows_ = rows;
    samples_.resize(static_cast<std::size_t>(Index(planes_, rows.first)));
}

/// 1 where the middle of a drop lies on the pixel of the grid. That is told by where it lies alone, so that it lies on
/// just one also where that is an edge.
void DroppedRows::PointParts(const int* columns, const int* rows, const DropSums& sums, double* parts) const
{
    for (int i = 0; i < sums.count; ++i) {
        const Position at = onGrid_.Inverse({1.0 * columns[i], 1.0 * rows[i]});
        const bool isHere = (std::floor(at.x + 0.5) == sums.x + i) & (std::floor(at.y + 0.5) == sums.row);
        parts[i] = isHere ? 1.0 : 0.0;
    }
}

/// Adds one drop to each pixel, where there is one.
template <class Noisy>
void DroppedRows::AddDrops(int plane, const int* columns, const int* rows, const double* parts, Noisy isNoisy,
                           int* seen, DropSums& sums) const
{
    const float* const samples = samples_.data() + Index(plane, rows_.first);
    for (int i = 0; i < sums.count; ++i) {
        const bool isInside =
            (columns[i] >= 0) & (columns[i] < width_) & (rows[i] >= rows_.first) & (rows[i] < rows_.end);
        const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(rows[i] - rows_.first) * width_ + columns[i];
        const float v = samples[isInside ? at : 0];
        const bool has = isInside & (parts[i] > 0.0) & (v == v); // NOLINT(misc-redundant-expression): false for NaN
        const double weight = has ? parts[i] * weight_ : 0.0;
        sums.value[i] += has ? weight * v : 0.0;
        sums.weight[i] += weight;
        seen[i] |= has ? 1 : 0;
        if constexpr (isNoisy) {
            sums.square[i] += has ? weight * v * v : 0.0;
            sums.parts[i] += has ? parts[i] : 0.0;
            sums.worth[i] += weight * parts[i];
        }
    }
}

void DroppedRows::Add(int plane, DropSums& sums) const
{
    if (!(weight_ > 0.0) || rows_.first == rows_.end) {
        return;
    }
    const int count = sums.count;
    const Position middle{sums.x + 0.5 * count, 1.0 * sums.row};
    const Drop drop = onGrid_.AsAlignment() != nullptr ? drop_ : Drop(onGrid_, middle, size_, kernel_);
    const double reach = drop.Reach();
    double x[kDropStretch];
    double y[kDropStretch];
    onGrid_.WithMap([&](auto map) {
        for (int i = 0; i < count; ++i) {
            const Position at = map(sums.x + i, sums.row);
            x[i] = Bounded(at.x);
            y[i] = Bounded(at.y);
        }
    });
    int firstColumns[kDropStretch];
    int firstRows[kDropStretch];
    for (int i = 0; i < count; ++i) {
        firstColumns[i] = static_cast<int>(std::ceil(x[i] - reach));
        firstRows[i] = static_cast<int>(std::ceil(y[i] - reach));
    }
    int seen[kDropStretch] = {};
    int columns[kDropStretch];
    int rows[kDropStretch];
    double a[kDropStretch];
    double b[kDropStretch];
    double parts[kDropStretch];
    const int most = static_cast<int>(2.0 * reach) + 1;
    for (int k = 0; k < most * most; ++k) {
        for (int i = 0; i < count; ++i) {
            columns[i] = firstColumns[i] + k % most;
            rows[i] = firstRows[i] + k / most;
            a[i] = x[i] - columns[i];
            b[i] = y[i] - rows[i];
        }
        kernel_ == DropKernel::kPoint ? PointParts(columns, rows, sums, parts) : drop.Parts(a, b, count, parts);
        sums.wantsNoise ? AddDrops(plane, columns, rows, parts, std::true_type(), seen, sums)
                        : AddDrops(plane, columns, rows, parts, std::false_type(), seen, sums);
    }
    for (int i = 0; i < count; ++i) {
        sums.frames[i] += seen[i];
    }
}

} // namespace corvane
