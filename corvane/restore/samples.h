#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "corvane/core/independent.h"

namespace corvane {

/// The samples of a grid.
using Samples = std::vector<float>;

/// out[i] = map(i) for every sample. The map may read sample i of `out`, but no other one.
template <class Map>
void Fill(Samples& out, Map map)
{
    float* to = out.data();
    const std::size_t count = out.size();
    CORVANE_INDEPENDENT
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<float>(map(i));
    }
}

/// Adds up terms of the samples 0..count - 1, `terms(i, out)` for each, in lanes of a fixed order: sums come out the same
/// on every processor, and the loop vectorises.
template <int number, class Terms>
std::array<double, number> SumOver(std::size_t count, Terms terms)
{
    constexpr int kSumLanes = 16;
    double lanes[number][kSumLanes] = {};
    const std::size_t whole = count / kSumLanes * kSumLanes;
    for (std::size_t i = 0; i < whole; i += kSumLanes) {
        for (int l = 0; l < kSumLanes; ++l) {
            double term[number];
            terms(i + static_cast<std::size_t>(l), term);
            for (int k = 0; k < number; ++k) {
                lanes[k][l] += term[k];
            }
        }
    }
    for (std::size_t i = whole; i < count; ++i) {
        double term[number];
        terms(i, term);
        for (int k = 0; k < number; ++k) {
            lanes[k][i - whole] += term[k];
        }
    }
    std::array<double, number> sums{};
    for (int k = 0; k < number; ++k) {
        for (const double lane : lanes[k]) {
            sums[static_cast<std::size_t>(k)] += lane;
        }
    }
    return sums;
}

} // namespace corvane
