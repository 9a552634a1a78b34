#pragma once

#include <algorithm>
#include <cstddef>

namespace corvane {

/// Where a plane lies in the grid that also holds another: the grid is as large as the larger of both on each axis, and
/// the plane in its middle, a sample nearer to the start where that is not a whole number.
class Grid {
public:
    Grid(int width, int height, int otherWidth, int otherHeight)
        : innerWidth_(width), innerHeight_(height), width_(std::max(width, otherWidth)),
          height_(std::max(height, otherHeight))
    {}

    int Width() const { return width_; }
    int Height() const { return height_; }
    std::size_t Size() const { return static_cast<std::size_t>(width_) * height_; }
    /// Column and row of the plane's first sample.
    int Left() const { return (width_ - innerWidth_) / 2; }
    int Top() const { return (height_ - innerHeight_) / 2; }

    /// Where sample (width / 2, height / 2) of the plane is in the grid.
    std::ptrdiff_t Middle() const { return Row(innerHeight_ / 2) + innerWidth_ / 2; }

    /// Copies a plane to its place in the grid.
    void Place(const float* plane, float* grid) const
    {
        for (int y = 0; y < innerHeight_; ++y) {
            std::copy_n(plane + static_cast<std::ptrdiff_t>(y) * innerWidth_, innerWidth_, grid + Row(y));
        }
    }
    /// Sets the plane's place in the grid to one value.
    void Fill(float value, float* grid) const
    {
        for (int y = 0; y < innerHeight_; ++y) {
            std::fill_n(grid + Row(y), innerWidth_, value);
        }
    }
    /// Copies the plane out of the grid.
    void Take(const float* grid, float* plane) const
    {
        for (int y = 0; y < innerHeight_; ++y) {
            std::copy_n(grid + Row(y), innerWidth_, plane + static_cast<std::ptrdiff_t>(y) * innerWidth_);
        }
    }

private:
    std::ptrdiff_t Row(int y) const { return static_cast<std::ptrdiff_t>(Top() + y) * width_ + Left(); }

    int innerWidth_;
    int innerHeight_;
    int width_;
    int height_;
};

} // namespace corvane
