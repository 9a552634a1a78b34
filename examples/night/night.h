#pragma once

#include <optional>
#include <vector>

#include "corvane/core/stl_image.h"
#include "examples/night/placement.h"
#include "examples/night/plane.h"
#include "examples/night/sensor.h"
#include "examples/night/settings.h"
#include "examples/night/truth.h"
#include "io/header.h"

namespace corvane::night {

/// A raw frame as a capture program would save it.
struct Frame {
    Plane counts;
    io::Header header;
};

/// The samples as an image.
CStlImage ToImage(const Plane& plane);

/// A night of raw frames whose truth is known. Any frame can be rendered at any time, and the same settings give the
/// same bits on every machine.
///
/// Frames are numbered from 0: lights up to their number in the settings, calibration frames without end. Each flat is
/// one percent dimmer than the one before, as twilight makes it. Calibration frames have no particle hits. A number or
/// exposure out of range throws std::invalid_argument.
class Night {
public:
    /// Throws std::invalid_argument when a setting is out of range.
    explicit Night(const NightSettings& settings);

    /// @name Frames
    /// The header has the cards of capture programs; that of a light has its placement as TRUEDX, TRUEDY, TRUEROT too.
    /// @{
    Frame Light(int i) const;
    Frame Dark(int i, double exposure) const; ///< Exposure [s, 0..86400].
    Frame Flat(int i) const;
    Frame FlatDark(int i) const; ///< A dark of the flats' exposure.
    Frame Bias(int i) const;
    /// @}

    /// @name Truth
    /// @{

    /// How light i is placed onto light 0. A stray light is pointed as if nothing were wrong, at another field.
    Placement PlacementOf(int i) const;
    /// The stars whose centres lie in light i, dimmed where it is cloudy; in a trailed light, half way of their trails.
    std::vector<Star> StarsOf(int i) const;
    std::vector<Trail> TrailsOf(int i) const;
    std::vector<CosmicHit> CosmicHitsOf(int i) const;
    /// What falls on the sensor during light i, without noise and response: sky, galaxy, stars, trails [electrons].
    /// With colour filters, what they let through.
    Plane SceneOf(int i) const;
    const Sensor& GetSensor() const { return sensor_; }
    const NightSettings& Settings() const { return settings_; }
    /// @}

private:
    Plane EvenLight(double electrons) const;
    Plane SceneBelow(std::optional<char> filter, int i) const;
    std::vector<Star> MakeField(Purpose purpose) const;
    std::vector<Star> MovedStars(int i) const;
    Frame ExposeDark(Random noise, double exposure, const char* type, double time) const;

    NightSettings settings_;
    Sensor sensor_;
    std::vector<Star> field_;
    std::vector<Star> otherField_;
};

} // namespace corvane::night
