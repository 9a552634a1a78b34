#include "examples/night/settings.h"

#include <sstream>
#include <stdexcept>
#include <string>

namespace corvane::night {

namespace {

struct Range {
    const char* name;
    double value;
    double low;
    double high;
};

void CheckBayer(const std::string& pattern)
{
    for (const char* known : {"", "RGGB", "GRBG", "GBRG", "BGGR"}) {
        if (pattern == known) {
            return;
        }
    }
    throw std::invalid_argument("bayer is '" + pattern + "', must be RGGB, GRBG, GBRG or BGGR");
}

void CheckLights(const char* name, const std::vector<int>& lights, int count)
{
    for (const int light : lights) {
        CheckRange(name, light, 0.0, count - 1.0);
    }
}

} // namespace

void CheckRange(const char* name, double value, double low, double high)
{
    if (value >= low && value <= high) {
        return;
    }
    std::ostringstream text;
    text << name << " is " << value << ", must be in " << low << ".." << high;
    throw std::invalid_argument(text.str());
}

const NightSettings& Checked(const NightSettings& s)
{
    const Range ranges[] = {
        {"width", static_cast<double>(s.width), 1, 32768},
        {"height", static_cast<double>(s.height), 1, 32768},
        {"lights", static_cast<double>(s.lights), 1, 100000},
        {"exposure", s.exposure, 0, 86400},
        {"flat exposure", s.flatExposure, 0, 86400},
        {"bits", static_cast<double>(s.bits), 8, 16},
        {"gain", s.gain, 0.01, 1000},
        {"bias level", s.biasLevel, 0, 65535},
        {"bias pattern", s.biasPattern, 0, 1000},
        {"read noise", s.readNoise, 0, 10000},
        {"dark current", s.darkCurrent, 0, 10000},
        {"hot pixels", s.hotPixels, 0, 1},
        {"hot current", s.hotCurrent, 0, 100000},
        {"temperature", s.temperature, -100, 100},
        {"camera gain", static_cast<double>(s.cameraGain), 0, 100000},
        {"day", static_cast<double>(s.day), 0, 10000},
        {"pixel response spread", s.pixelResponseSpread, 0, 0.2},
        {"vignetting", s.vignetting, 0, 0.9},
        {"dust shadows", static_cast<double>(s.dustShadows), 0, 1000},
        {"flat level", s.flatLevel, 1, 65535},
        {"stars", static_cast<double>(s.stars), 0, 1000000},
        {"FWHM", s.fwhm, 1, 100},
        {"faintest star", s.faintest, 0.001, 1e9},
        {"brightest star", s.brightest, s.faintest, 1e9},
        {"sky", s.sky, 0, 100000},
        {"sky gradient", s.skyGradient, -2, 2},
        {"light gradient", s.lightGradient, 0, 2},
        {"galaxy", s.galaxy, 0, 1e6},
        {"cosmic hits", s.cosmicHits, 0, 100000},
        {"trails", static_cast<double>(s.trails), 0, 10000},
        {"drift in x", s.driftX, -1000, 1000},
        {"drift in y", s.driftY, -1000, 1000},
        {"jitter", s.jitter, 0, 100},
        {"turn", s.turn, -1, 1},
        {"distortion", s.distortion, -100, 100},
    };
    for (const Range& range : ranges) {
        CheckRange(range.name, range.value, range.low, range.high);
    }
    for (const Star& star : s.ownStars) {
        CheckRange("own star's FWHM", star.fwhm, 1, 100);
        CheckRange("own star's flux", star.flux, 0, 1e12);
        CheckRange("own star's redness", star.redness, -1, 1);
    }
    CheckBayer(s.bayer);
    CheckLights("cloudy light", s.cloudyLights, s.lights);
    CheckLights("stray light", s.strayLights, s.lights);
    CheckLights("trailed light", s.trailedLights, s.lights);
    return s;
}

} // namespace corvane::night
