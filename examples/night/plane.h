#pragma once

#include <cstddef>
#include <vector>

namespace corvane::night {

/// Rows of samples, one after the other.
struct Plane {
    int width = 0;
    int height = 0;
    std::vector<float> samples;

    Plane() = default;
    Plane(int planeWidth, int planeHeight, float value = 0.0F)
        : width(planeWidth), height(planeHeight), samples(static_cast<std::size_t>(planeWidth) * planeHeight, value)
    {}

    float* Row(int y) { return samples.data() + static_cast<std::ptrdiff_t>(y) * width; }
    const float* Row(int y) const { return samples.data() + static_cast<std::ptrdiff_t>(y) * width; }
};

} // namespace corvane::night
