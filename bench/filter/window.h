#pragma once

#include <cstdlib>
#include <numeric>
#include <vector>

#include "corvane/core/stl_image.h"

namespace corvane::bench {

/// The samples of a neighbourhood by the rules for edges, row by row: the centre is in the middle.
inline std::vector<double> Window(const CStlImage& image, int x, int y, int plane, int type)
{
    const int r = type == 2 ? 2 : 1;
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    std::vector<double> values;
    for (int dy = -r; dy <= r; ++dy) {
        for (int dx = -r; dx <= r; ++dx) {
            const int distance = std::abs(dx) + std::abs(dy);
            if (distance > 1 && (type == 0 || distance == 4)) {
                continue;
            }
            const int row = y + dy < 0 ? -(y + dy) : (y + dy < height ? y + dy : 2 * height - 1 - y - dy);
            const int column = x + dx < 0 || x + dx >= width ? x - dx : x + dx;
            values.push_back(image.GetPixelGrayRaw(column, row, plane));
        }
    }
    return values;
}

/// The mean of such a window with that weight for each sample about the centre.
inline double PlainMean(const std::vector<double>& window, double weight)
{
    const double centre = window[window.size() / 2];
    const double sum = std::accumulate(window.begin(), window.end(), 0.0) - centre;
    return (sum * weight + centre) / (static_cast<double>(window.size() - 1) * weight + 1.0);
}

} // namespace corvane::bench
