#include "stack/combine/row_window.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace corvane::stack {

RowWindow::RowWindow(const Alignment& alignment, const FrameFacts& frame, int left, int right)
    : alignment_(alignment), width_(frame.width), height_(frame.height), planes_(frame.planes), left_(left),
      right_(right)
{}

RowSpan RowWindow::Touched(int firstRow, int lastRow) const
{
    Alignment fromLeft = alignment_;
    fromLeft.dx -= left_;
    RowSpan touched{height_, 0};
    for (int y = firstRow; y <= lastRow; ++y) {
        const RowSpan span = RowsTouched(fromLeft, y, right_ - left_, width_, height_);
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
    const RowSpan kept = Keep(wanted);
    const auto readRows = [&](int first, int end) {
        if (first < end) {
            read(first, end - first, samples_.data() + static_cast<std::ptrdiff_t>(first - wanted.first) * width_,
                 PlaneStride());
        }
    };
    readRows(wanted.first, kept.first);
    readRows(kept.end, wanted.end);
}

/// Moves the wanted rows that are in memory to their places in a buffer with room for all. Returns which they are; when
/// there are none, an empty span at the beginning of the wanted ones.
RowSpan RowWindow::Keep(const RowSpan& wanted)
{
    RowSpan kept{std::max(wanted.first, first_), std::min(wanted.end, first_ + count_)};
    if (kept.first >= kept.end) {
        kept = {wanted.first, wanted.first};
    }
    const int capacity = std::max(capacity_, wanted.end - wanted.first);
    std::vector<float> larger(capacity > capacity_ ? static_cast<std::size_t>(capacity) * width_ * planes_ : 0);
    float* const target = larger.empty() ? samples_.data() : larger.data();
    for (int plane = 0; plane < planes_ && kept.first < kept.end; ++plane) {
        const float* from =
            samples_.data() + (static_cast<std::ptrdiff_t>(plane) * capacity_ + kept.first - first_) * width_;
        float* to = target + (static_cast<std::ptrdiff_t>(plane) * capacity + kept.first - wanted.first) * width_;
        std::memmove(to, from, sizeof(float) * static_cast<std::size_t>(kept.end - kept.first) * width_);
    }
    if (!larger.empty()) {
        samples_.swap(larger);
    }
    capacity_ = capacity;
    first_ = wanted.first;
    count_ = wanted.end - wanted.first;
    return kept;
}

/// Reading between the samples right of a plane's last one takes the first sample of the next plane.
void RowWindow::ReadFollowers(const Reader& read)
{
    if (planes_ < 2 || !followers_.empty() || !ReadsBetween()) {
        return;
    }
    std::vector<float> row(static_cast<std::size_t>(width_) * planes_);
    read(0, 1, row.data(), width_);
    for (int plane = 1; plane < planes_; ++plane) {
        followers_.push_back(row[static_cast<std::size_t>(plane) * width_]);
    }
}

bool RowWindow::ReadsBetween() const
{
    return !alignment_.IsShift() || alignment_.dx != std::floor(alignment_.dx);
}

void RowWindow::LeaveOutWrapped(int row, int* inside) const
{
    if (!ReadsBetween()) {
        return;
    }
    const double last = width_ - 1;
    alignment_.WithMap([&](auto map) {
        for (int x = left_; x < right_; ++x) {
            inside[x - left_] &= map(x, row).x <= last ? 1 : 0;
        }
    });
}

void RowWindow::Sample(int plane, int row, double outside, double* values, int* inside) const
{
    const float* rows = samples_.data() + plane * PlaneStride();
    const bool holdsLast = count_ > 0 && first_ + count_ == height_;
    const float own = holdsLast ? rows[static_cast<std::ptrdiff_t>(count_) * width_ - 1] : 0.0F;
    const bool isFollowed = plane < static_cast<int>(followers_.size());
    const PlaneRows held{rows, width_, height_, first_, isFollowed ? followers_[plane] : own};
    if (left_ == 0) {
        SampleAlignedRow(held, alignment_, row, right_, outside, values, inside);
    } else {
        SampleAlignedStretch(held, alignment_, left_, row, right_ - left_, outside, values, inside);
    }
}

} // namespace corvane::stack
