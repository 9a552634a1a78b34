#pragma once

#include <cstdint>

#include "corvane/core/stl_image.h"

namespace corvane::bench {

/// Fills an image with a night sky: noise of deviation 30 about 1000, and a bright sample here and there. Its levels
/// are set to 900 and 1400. The same seed gives the same image.
void FillSky(CStlImage& image, std::uint64_t seed);

/// A sky of width x height x planes.
class Sky : public CStlImage {
public:
    Sky(int width, int height, int planes, std::uint64_t seed) : CStlImage(-32, width, height, planes, 1.0, 0.0, 1)
    {
        FillSky(*this, seed);
    }
};

/// The monochrome frame of 4096 x 4096 that most lines work on; it lives as long as the process.
CStlImage& LargeFrame();

/// A colour frame of 2048 x 2048, for the same time.
CStlImage& ColourFrame();

/// Draws stars of deviation 2.5 pixels on a level of 1000, without noise: the same sky at every call, moved by the
/// offset, so that images of it are known to fit each other between samples.
void DrawStars(CStlImage& image, double offsetX, double offsetY);

} // namespace corvane::bench
