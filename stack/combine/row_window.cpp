#include "stack/combine/row_window.h"

#include <algorithm>
#include <cstring>

namespace corvane::stack {

RowWindow::RowWindow(const Mapping& mapping, const FrameFacts& frame, int left, int right, Interpolation interpolation)
    : mapping_(mapping), interpolation_(interpolation), width_(frame.width), height_(frame.height),
      planes_(frame.planes), left_(left), right_(right)
{}

RowSpan RowWindow::Touched(int firstRow, int lastRow) const
{
    RowSpan touched{height_, 0};
    for (int y = firstRow; y <= lastRow; ++y) {
        const RowSpan span = RowsTouched(mapping_, left_, y, right_ - left_, width_, height_, interpolation_);
        if (span.first < span.end) {
            touched = {std::min(touched.first, span.first), std::max(touched.end, span.end)};
        }
    }
    return touched;
}

void RowWindow::Reserve(int rows)
{
    capacity_ = rows;
    samples_ = std::make_unique_for_overwrite<float[]>(static_cast<std::size_t>(PlaneStride()) * planes_);
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
            read(first, end - first, samples_.get() + static_cast<std::ptrdiff_t>(first - wanted.first) * width_,
                 PlaneStride());
        }
    };
    readRows(wanted.first, kept.first);
    readRows(kept.end, wanted.end);
}

/// Moves the wanted rows that are in memory to their places. Returns which they are; when there are none, an empty span
/// at the beginning of the wanted ones.
RowSpan RowWindow::Keep(const RowSpan& wanted)
{
    RowSpan kept{std::max(wanted.first, first_), std::min(wanted.end, first_ + count_)};
    if (kept.first >= kept.end) {
        kept = {wanted.first, wanted.first};
    }
    for (int plane = 0; plane < planes_ && kept.first < kept.end; ++plane) {
        float* const rows = samples_.get() + plane * PlaneStride();
        const float* from = rows + static_cast<std::ptrdiff_t>(kept.first - first_) * width_;
        float* to = rows + static_cast<std::ptrdiff_t>(kept.first - wanted.first) * width_;
        std::memmove(to, from, sizeof(float) * static_cast<std::size_t>(kept.end - kept.first) * width_);
    }
    first_ = wanted.first;
    count_ = wanted.end - wanted.first;
    return kept;
}

/// Reading between the samples right of a plane's last one takes the first sample of the next plane.
void RowWindow::ReadFollowers(const Reader& read)
{
    if (planes_ < 2 || !followers_.empty() || mapping_.KeepsColumns()) {
        return;
    }
    std::vector<float> row(static_cast<std::size_t>(width_) * planes_);
    read(0, 1, row.data(), width_);
    for (int plane = 1; plane < planes_; ++plane) {
        followers_.push_back(row[static_cast<std::size_t>(plane) * width_]);
    }
}

void RowWindow::LeaveOutWrapped(int x, int row, int count, int* inside) const
{
    corvane::LeaveOutWrapped(mapping_, width_, x, row, count, inside);
}

void RowWindow::Sample(int plane, int x, int row, int count, double outside, double* values, int* inside) const
{
    const float* rows = samples_.get() + plane * PlaneStride();
    const bool holdsLast = count_ > 0 && first_ + count_ == height_;
    const float own = holdsLast ? rows[static_cast<std::ptrdiff_t>(count_) * width_ - 1] : 0.0F;
    const bool isFollowed = plane < static_cast<int>(followers_.size());
    const PlaneRows held{rows, width_, height_, first_, isFollowed ? followers_[plane] : own};
    SampleAlignedStretch(held, mapping_, x, row, count, outside, values, inside, interpolation_);
}

} // namespace corvane::stack
