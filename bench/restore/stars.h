#pragma once

#include <cmath>

#include "bench/support/frames.h"

namespace corvane::bench {

/// A blurred field of stars with the noise of its photons and of reading out, so that restorations have something to
/// converge on. Sigma is `kStarSigma`, one count one electron, the read-out noise `kReadNoise`.
inline constexpr double kStarSigma = 2.5;
inline constexpr double kReadNoise = 5.0;

class Stars : public CStlImage {
public:
    explicit Stars(int size) : CStlImage(-32, size, size, 1, 1.0, 0.0, 1)
    {
        DrawStars(*this, 0.0, 0.0);
        const Sky noise(size, size, 1, 7); // deviation 30 about 1000
        for (int y = 0; y < size; ++y) {
            for (int x = 0; x < size; ++x) {
                const double light = GetPixelGrayRaw(x, y, 0);
                const double deviation = (noise.GetPixelGrayRaw(x, y, 0) - 1000.0) / 30.0;
                const double clipped = std::fmin(std::fmax(deviation, -4.0), 4.0);
                SetPixelGrayRaw(x, y, static_cast<float>(light + std::sqrt(light + kReadNoise * kReadNoise) * clipped),
                                0);
            }
        }
    }
};

} // namespace corvane::bench
