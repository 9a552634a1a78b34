#include "corvane/core/axis_type.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "corvane/core/ascii.h"
#include "corvane/core/axis_kind.h"

namespace corvane {
namespace {

struct Known {
    std::string_view word;
    const char* name;
    int kind;
    const char* unit;
};

constexpr Known kKnown[] = {
    {"RA", "Right ascension", kCelestialAxis, "deg"},
    {"DEC", "Declination", kCelestialAxis, "deg"},
    {"GLON", "Galactic longitude", kCelestialAxis, "deg"},
    {"GLAT", "Galactic latitude", kCelestialAxis, "deg"},
    {"ELON", "Ecliptic longitude", kCelestialAxis, "deg"},
    {"ELAT", "Ecliptic latitude", kCelestialAxis, "deg"},
    {"WAVE", "Wavelength in vacuum", kWavelengthAxis, "m"},
    {"AWAV", "Wavelength in air", kWavelengthAxis, "m"},
    {"LAMBDA", "Wavelength", kWavelengthAxis, ""},
    {"FREQ", "Frequency", kFrequencyAxis, "Hz"},
    {"ENER", "Photon energy", kEnergyAxis, "J"},
    {"WAVN", "Wavenumber", kWavenumberAxis, "m-1"},
    {"VRAD", "Radio velocity", kVelocityAxis, "m/s"},
    {"VOPT", "Optical velocity", kVelocityAxis, "m/s"},
    {"VELO", "Velocity", kVelocityAxis, "m/s"},
    {"FELO", "Optical velocity", kVelocityAxis, "m/s"},
    {"ZOPT", "Redshift", kVelocityAxis, ""},
    {"BETA", "Velocity / speed of light", kVelocityAxis, ""},
    {"TIME", "Time", kTimeAxis, "s"},
    {"UTC", "Time (UTC)", kTimeAxis, "s"},
    {"TAI", "Time (TAI)", kTimeAxis, "s"},
    {"TT", "Time (TT)", kTimeAxis, "s"},
    {"TDB", "Time (TDB)", kTimeAxis, "s"},
    {"STOKES", "Stokes parameter", kStokesAxis, ""},
};

// Rest frames, which stand where others have an algorithm: steps are even in them too.
constexpr std::string_view kFrames[] = {"LSR", "HEL", "OBS"};

/// Longitudes and latitudes of other systems: xLON, xLAT, yzLN, yzLT.
AxisType OtherType(std::string_view word, const char* text)
{
    const bool isLongitude = word.size() == 4 && (word.ends_with("LON") || word.ends_with("LN"));
    const bool isLatitude = word.size() == 4 && (word.ends_with("LAT") || word.ends_with("LT"));
    if (isLongitude || isLatitude) {
        return {isLongitude ? "Longitude" : "Latitude", kCelestialAxis, "deg", true};
    }
    return {text, kUnknownAxis, "", true};
}

} // namespace

AxisType ParseAxisType(const char* text)
{
    std::string type = Upper(std::string(text));
    type.erase(type.find_last_not_of(' ') + 1);
    const std::string word = type.substr(0, type.find('-'));
    const std::string code = type.substr(type.find_last_of('-') + 1);
    const auto known =
        std::find_if(std::begin(kKnown), std::end(kKnown), [&](const Known& k) { return k.word == word; });
    AxisType result =
        known == std::end(kKnown) ? OtherType(word, text) : AxisType{known->name, known->kind, known->unit, true};
    result.isLinear =
        word.size() == type.size() || std::find(std::begin(kFrames), std::end(kFrames), code) != std::end(kFrames);
    return result;
}

int SpectralKindOfUnit(const std::string& base)
{
    constexpr std::pair<std::string_view, int> kKinds[] = {
        {"m", kWavelengthAxis}, {"Angstrom", kWavelengthAxis}, {"Hz", kFrequencyAxis},   {"J", kEnergyAxis},
        {"eV", kEnergyAxis},    {"erg", kEnergyAxis},          {"m-1", kWavenumberAxis},
    };
    const auto* const found =
        std::find_if(std::begin(kKinds), std::end(kKinds), [&](const auto& kind) { return kind.first == base; });
    return found == std::end(kKinds) ? kUnknownAxis : found->second;
}

} // namespace corvane
