#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "corvane/core/stl_image.h"

inline std::uint64_t Mix(std::uint64_t hash, std::uint64_t value)
{
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ (hash >> 29);
}

/// A hash of numbers to the last bit. Any NaN is like the other: sign and payload are the compiler's choice.
template <class T>
std::uint64_t HashOf(const T* values, std::size_t count, std::uint64_t hash = 1)
{
    for (std::size_t i = 0; i < count; ++i) {
        const auto v = static_cast<double>(values[i]); // holds all bits of the types in use
        hash = Mix(hash, std::bit_cast<std::uint64_t>(std::isnan(v) ? std::numeric_limits<double>::quiet_NaN() : v));
    }
    return hash;
}

/// A hash of an image's size, samples and display levels.
inline std::uint64_t HashOf(const CStlImage& image)
{
    const int sizes[]{image.GetWidth(), image.GetHeight(), image.GetPlanes()};
    std::uint64_t hash = HashOf(sizes, 3);
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const double levels[]{image.GetLevelMin(plane), image.GetLevelMax(plane)};
        hash = HashOf(levels, 2, hash);
        for (int y = 0; y < image.GetHeight(); ++y) {
            hash = HashOf(image.GetImageAdr(0, y, plane, 1), static_cast<std::size_t>(image.GetWidth()), hash);
        }
    }
    return hash;
}

/// Noise between 0 and 65536 that is not made of whole numbers, with levels of its own on each plane.
inline CStlImage Noise(int planes, std::uint64_t seed, int width = 517, int height = 203)
{
    CStlImage image(-32, width, height, planes, 1.0, 0.0, 1);
    for (int plane = 0; plane < planes; ++plane) {
        image.SetLevel(plane, 1000.1 + plane, 50000.7 - 333.3 * plane);
        for (int i = 0; i < width * height; ++i) {
            seed = Mix(seed, 0xC0FFEE);
            image.SetPixelGrayRaw(i % width, i / width, static_cast<float>(seed >> 40) / 257.0F, plane);
        }
    }
    return image;
}

/// Runs every operation of the catalogue on several frames and prints a line for each run. Returns whether each
/// operation, with each of its parameters, ran to its end somewhere.
bool PrintSteps();
