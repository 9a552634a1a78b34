#include "stack/row_window.h"

#include <algorithm>
#include <cmath>

namespace corvane::stack {

RowWindow::RowWindow(const Alignment& alignment, int width, int height, int planes)
    : alignment_(alignment), width_(width), height_(height), planes_(planes)
{}

RowSpan RowWindow::Touched(int firstRow, int lastRow) const
{
    RowSpan touched{height_, 0};
    for (int y = firstRow; y <= lastRow; ++y) {
        const RowSpan span = RowsTouched(alignment_, y, width_, width_, height_);
        if (span.first < span.end) {
            touched = {std::min(touched.first, span.first), std::max(touched.end, span.end)};
        }
    }
    return touched;
}

void RowWindow::MoveTo(int firstRow, int lastRow, const Reader& read)
{
    const RowSpan wanted = Touched(firstRow, lastRow);
    if (wanted.first >= wanted.end) {
        return;
    }
    ReadFollowers(read);
    Keep(wanted);
    const int missing = wanted.end - (first_ + count_);
    if (missing > 0) {
        read(first_ + count_, missing, samples_.data() + static_cast<std::ptrdiff_t>(count_) * width_, PlaneStride());
        count_ += missing;
    }
}

/// Makes the wanted rows that are in memory the first ones of a buffer with room for all.
void RowWindow::Keep(const RowSpan& wanted)
{
    const bool follows = wanted.first >= first_ && wanted.first < first_ + count_;
    const int kept = follows ? first_ + count_ - wanted.first : 0;
    const std::ptrdiff_t oldStride = PlaneStride();
    const std::ptrdiff_t skipped = static_cast<std::ptrdiff_t>(wanted.first - first_) * width_;
    std::vector<float> larger;
    if (wanted.end - wanted.first > capacity_) {
        capacity_ = wanted.end - wanted.first;
        larger.resize(static_cast<std::size_t>(PlaneStride()) * planes_);
    }
    float* target = larger.empty() ? samples_.data() : larger.data();
    for (int plane = 0; plane < planes_ && kept > 0; ++plane) {
        const float* from = samples_.data() + plane * oldStride + skipped;
        std::copy_n(from, static_cast<std::ptrdiff_t>(kept) * width_, target + plane * PlaneStride());
    }
    if (!larger.empty()) {
        samples_.swap(larger);
    }
    first_ = wanted.first;
    count_ = kept;
}

/// Reading between the samples right of a plane's last one takes the first sample of the next plane.
void RowWindow::ReadFollowers(const Reader& read)
{
    const bool readsBetween = !alignment_.IsShift() || alignment_.dx != std::floor(alignment_.dx);
    if (planes_ < 2 || !followers_.empty() || !readsBetween) {
        return;
    }
    std::vector<float> row(static_cast<std::size_t>(width_) * planes_);
    read(0, 1, row.data(), width_);
    for (int plane = 1; plane < planes_; ++plane) {
        followers_.push_back(row[static_cast<std::size_t>(plane) * width_]);
    }
}

void RowWindow::Sample(int plane, int row, double outside, double* values, int* inside) const
{
    const float* rows = samples_.data() + plane * PlaneStride();
    const bool holdsLast = count_ > 0 && first_ + count_ == height_;
    const float own = holdsLast ? rows[static_cast<std::ptrdiff_t>(count_) * width_ - 1] : 0.0F;
    const bool isFollowed = plane < static_cast<int>(followers_.size());
    const PlaneRows held{rows, width_, height_, first_, isFollowed ? followers_[plane] : own};
    SampleAlignedRow(held, alignment_, row, width_, outside, values, inside);
}

} // namespace corvane::stack
