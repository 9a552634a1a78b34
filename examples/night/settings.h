#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "examples/night/truth.h"

namespace corvane::night {

/// The shape of a star's image.
enum class Profile {
    kGaussian,
    kMoffat, ///< with exponent 4: wings as the atmosphere draws them (Moffat 1969, Astronomy and Astrophysics 3)
};

/// What a night is like. Ranges are checked when a `Night` is made.
struct NightSettings {
    std::uint64_t seed = 1;
    int width = 2048;  ///< [pixels, 1..32768]
    int height = 2048; ///< [pixels, 1..32768]
    int lights = 20;   ///< number of lights in the night [1..100000]

    double exposure = 60.0;    ///< of a light [s, 0..86400]
    double flatExposure = 2.0; ///< of a flat [s, 0..86400]

    /// @name Only written to headers
    /// @{
    std::string filter = "L"; ///< of lights and flats, for a sensor without filters of its own
    int cameraGain = 100;     ///< the camera's setting [0..100000]
    int day = 0;              ///< when the night is, counted from 2024-03-09 [0..10000]
    /// @}

    /// @name Sensor and converter
    /// @{
    int bits = 16;                     ///< of the converter, which saturates [8..16]
    double gain = 1.5;                 ///< electrons per count [0.01..1000]
    double biasLevel = 500.0;          ///< [counts, 0..65535]
    double biasPattern = 1.5;          ///< deviation of column and row offsets [counts, 0..1000]
    double readNoise = 3.0;            ///< deviation [electrons, 0..10000]
    double darkCurrent = 0.05;         ///< [electrons / s, 0..10000]
    double hotPixels = 0.0005;         ///< share of all pixels [0..1]
    double hotCurrent = 20.0;          ///< mean of the hot pixels, exponentially spread [electrons / s, 0..100000]
    double temperature = -10.0;        ///< only written to the header [degrees Celsius, -100..100]
    double pixelResponseSpread = 0.01; ///< deviation of single pixels' response [0..0.2]
    double vignetting = 0.3;           ///< share of the light lost in the corners [0..0.9]
    int dustShadows = 8;               ///< doughnuts [0..1000]
    double flatLevel = 30000.0;        ///< mean of the first flat above the bias, without filters [counts, 1..65535]
    std::string bayer;                 ///< colour filters of the first 2 x 2 pixels, as "RGGB"; empty: none
    /// @}

    /// @name Sky
    /// @{
    int stars = 1000;           ///< mean number in a frame [0..1000000]
    std::vector<Star> ownStars; ///< where not empty, the stars of the first light instead of random ones
    Profile profile = Profile::kMoffat;
    double fwhm = 3.2;          ///< of random stars [pixels, 1..100]
    double faintest = 10.0;     ///< random stars' least flux [electrons / s, 0.001..1e9]
    double brightest = 20000.0; ///< their greatest flux [electrons / s, faintest..1e9]
    double sky = 5.0;           ///< background in the middle [electrons / s, 0..100000]
    double skyGradient = 0.0;   ///< its change from the left edge to the right, as a share [-2..2]
    double lightGradient = 0.0; ///< greatest of each light's own, across and down, as a share [0..2]
    double galaxy = 0.0;        ///< brightness of the core of a spiral in the middle [electrons / s in a pixel, 0..1e6]
    double cosmicHits = 20.0;   ///< mean number in a light [0..100000]
    int trails = 2;             ///< satellites in the whole night [0..10000]
    /// @}

    /// @name From light to light
    /// @{
    double driftX = 0.9;            ///< movement of the stars between two lights [pixels, -1000..1000]
    double driftY = -0.5;           ///< the same [pixels, -1000..1000]
    double jitter = 0.2;            ///< deviation of the guiding error of every light but the first [pixels, 0..100]
    double distortion = 0.0;        ///< how far the optics move stars outwards in the corners [pixels, -100..100]
    double turn = 0.0;              ///< turn of the field between two lights [degrees clockwise on screen, -1..1]
    std::vector<int> cloudyLights;  ///< those (from 0) with little of the stars and a bright sky
    std::vector<int> strayLights;   ///< those (from 0) that show another field
    std::vector<int> trailedLights; ///< those (from 0) during which the mount moved
    /// @}
};

/// The settings, when all are in range. Throws std::invalid_argument naming the first that is not, its value and range.
const NightSettings& Checked(const NightSettings& settings);

/// Throws std::invalid_argument "NAME is VALUE, must be in LOW..HIGH" when the value is not.
void CheckRange(const char* name, double value, double low, double high);

} // namespace corvane::night
