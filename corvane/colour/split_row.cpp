#include "corvane/colour/split_row.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvane::demosaic {
namespace {

bool HoldsGaps(const float* row, int width)
{
    int finite = 0;
    for (int x = 0; x < width; ++x) {
        finite += std::fabs(row[x]) <= std::numeric_limits<float>::max() ? 1 : 0;
    }
    return finite < width;
}

/// What stands in for a run of gaps between two columns, either of which may lie outside.
float Between(const float* row, int left, int right, int width)
{
    if (left < 0 && right >= width) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    const double a = row[left < 0 ? right : left];
    const double b = row[right >= width ? left : right];
    return static_cast<float>(0.5 * (a + b));
}

/// Fills the gaps of every other column.
void FillGaps(float* row, int parity, int width)
{
    int left = -1;
    for (int x = parity; x < width; x += 2) {
        if (std::isfinite(row[x])) {
            left = x;
            continue;
        }
        int right = x + 2;
        while (right < width && !std::isfinite(row[right])) {
            right += 2;
        }
        const float filling = Between(row, left, right, width);
        for (; x < right && x < width; x += 2) {
            row[x] = filling;
        }
        x -= 2;
    }
}

} // namespace

SplitRow::SplitRow(int width)
    : width_(width), padded_(2 * (static_cast<std::size_t>(width / 2 + width % 2) + 2 * kPad)),
      halves_{std::vector<float>(padded_.size() / 2), std::vector<float>(padded_.size() / 2)}
{}

void SplitRow::Take(const float* row)
{
    float* const inner = padded_.data() + 2 * kPad;
    std::copy_n(row, width_, inner);
    hasGaps_ = HoldsGaps(row, width_);
    if (hasGaps_) {
        FillGaps(inner, 0, width_);
        FillGaps(inner, 1, width_);
    }
    const int end = static_cast<int>(padded_.size()) - 2 * kPad;
    for (int x = -2 * kPad; x < end; x = x == -1 ? width_ : x + 1) {
        inner[x] = inner[Mirrored(x, width_)];
    }
    const float* const padded = padded_.data();
    float* __restrict const even = halves_[0].data();
    float* __restrict const odd = halves_[1].data();
    const int count = static_cast<int>(halves_[0].size());
    for (int k = 0; k < count; ++k) {
        even[k] = padded[2 * k];
        odd[k] = padded[2 * k + 1];
    }
}

} // namespace corvane::demosaic
