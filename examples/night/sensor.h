#pragma once

#include <vector>

#include "examples/night/plane.h"
#include "examples/night/random.h"
#include "examples/night/settings.h"

namespace corvane::night {

/// A sensor with its optics in front and its converter behind: what stays the same from frame to frame.
class Sensor {
public:
    explicit Sensor(const NightSettings& settings);

    /// A frame [counts]: the light [electrons on a sensor of even response 1] times the response, plus dark current for
    /// `exposure` seconds, with shot noise; particle hits; read noise; bias; rounded and cut to the converter's range.
    Plane Expose(Plane light, double exposure, const std::vector<CosmicHit>& hits, Random& noise) const;

    /// Mean of many bias frames [counts].
    const Plane& Bias() const { return bias_; }
    /// Dark current [electrons / s], hot pixels included.
    const Plane& DarkCurrent() const { return darkCurrent_; }
    /// Vignetting, dust and the pixels' own sensitivity, with mean 1: dividing by a flat over its mean takes it away.
    const Plane& Response() const { return response_; }
    /// The converter's largest count.
    double Ceiling() const { return ceiling_; }

private:
    float Digitise(double electrons, double bias, Random& noise) const;

    double gain_;
    double readNoise_;
    double ceiling_;
    Plane bias_;
    Plane darkCurrent_;
    Plane response_;
};

} // namespace corvane::night
