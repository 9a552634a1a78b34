#pragma once

namespace corvane {

/// What is measured along an axis; the code that `CStlImage::GetAxisInfo` gives.
enum AxisKind : int {
    kUnknownAxis = 0,
    kCelestialAxis = 1,  ///< right ascension, declination, any longitude or latitude
    kWavelengthAxis = 2, ///< in vacuum or air
    kFrequencyAxis = 3,
    kEnergyAxis = 4, ///< of photons
    kWavenumberAxis = 5,
    kVelocityAxis = 6, ///< along the line of sight, also as redshift or part of the speed of light
    kTimeAxis = 7,
    kStokesAxis = 8, ///< polarisation
};

} // namespace corvane
