#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

namespace corvane::filter {

/// The neighbourhoods by their codes; other codes mean the centre alone.
enum Shape { kCross = 0, kSquare3 = 1, kSquare5 = 2 };

constexpr int Radius(int type)
{
    return type == kSquare5 ? 2 : (type == kCross || type == kSquare3 ? 1 : 0);
}

constexpr int Points(int type)
{
    return type == kCross ? 5 : (type == kSquare3 ? 9 : (type == kSquare5 ? 21 : 1));
}

/// The most points that a neighbourhood has, and the largest radius.
inline constexpr int kMostPoints = 21;
inline constexpr int kMostPointRadius = 2;

/// True for the samples that belong to a neighbourhood, at (dx, dy) from its centre.
constexpr bool Contains(int type, int dx, int dy)
{
    const int x = dx < 0 ? -dx : dx;
    const int y = dy < 0 ? -dy : dy;
    const int r = Radius(type);
    return x <= r && y <= r && (type != kCross || x + y <= 1) && (type != kSquare5 || x + y < 4);
}

/// The row that stands for row y of an image: above the first one the mirror leaves the first one out, below the last
/// one it repeats the last one. Columns of the Gaussian follow the same rule.
constexpr int MirrorRow(long long y, long long height)
{
    const long long mirrored = y < 0 ? -y : (y >= height ? 2 * height - y - 1 : y);
    return static_cast<int>(std::clamp(mirrored, 0LL, std::max(height - 1, 0LL)));
}

/// The offset at which the neighbour at offset dx of column x is read: of one outside, the same distance on the other
/// side; clamped in images too narrow for that.
constexpr int MirrorOffset(int x, int dx, int width)
{
    const bool isOutside = dx < 0 ? x < -dx : x >= width - dx;
    return std::clamp(x + (isOutside ? -dx : dx), 0, std::max(width - 1, 0)) - x;
}

/// The samples of a neighbourhood, row by row, mirrored at the edges; `rows` point at column x.
struct Neighbours {
    std::array<float, kMostPoints> values{};
    int count = 0;

    Neighbours(const float* const* rows, int x, int width, int type)
    {
        x = std::clamp(x, 0, std::max(width - 1, 0));
        const int r = Radius(type);
        for (int dy = -r; dy <= r; ++dy) {
            for (int dx = -r; dx <= r; ++dx) {
                if (Contains(type, dx, dy)) {
                    values[static_cast<std::size_t>(count++)] = rows[dy + r][MirrorOffset(x, dx, width)];
                }
            }
        }
    }

    float Centre() const { return values[static_cast<std::size_t>(count / 2)]; }
};

} // namespace corvane::filter
