// make-night: writes a night of raw frames whose truth is known, and the truth beside them.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "corvane/core/error.h"
#include "examples/night/night.h"
#include "io/frame.h"

namespace {

using corvane::night::Frame;
using corvane::night::Night;
using corvane::night::NightSettings;
using corvane::night::Profile;

struct Request {
    NightSettings night;
    std::string folder;
    std::string size = "2048x2048";
    int darks = 10;
    double darkExposure = 0.0; // 0: that of the lights
    int flats = 10;
    int flatDarks = 0;
    int biases = 10;
    std::vector<int> cloudy; // counted from 1, as file names are
    std::vector<int> stray;
    std::vector<int> trailed;
};

/// The options under one heading of the help.
class Group {
public:
    Group(CLI::App& app, const char* title) : app_(app), title_(title) {}

    template <typename T>
    CLI::Option* Add(const char* name, T& value, const char* text)
    {
        return app_.add_option(name, value, text)->capture_default_str()->group(title_);
    }
    void AddCount(const char* name, int& value, const char* text)
    {
        Add(name, value, text)->check(CLI::Range(0, 100000).description(""));
    }
    void AddNumbers(const char* name, std::vector<int>& values, const char* text)
    {
        app_.add_option(name, values, text)->delimiter(',')->allow_extra_args(false)->group(title_);
    }

private:
    CLI::App& app_;
    const char* title_;
};

void AddFrameOptions(Group group, Request& request)
{
    NightSettings& night = request.night;
    group.Add("--lights", night.lights, "Lights");
    group.AddCount("--darks", request.darks, "Darks");
    group.AddCount("--flats", request.flats, "Flats");
    group.AddCount("--flat-darks", request.flatDarks, "Darks of the flats' exposure");
    group.AddCount("--bias", request.biases, "Bias frames");
    group.Add("--size", request.size, "Width and height [pixels]");
    group.Add("--seed", night.seed, "Where chance begins: another seed, another night")
        ->check(CLI::Range(0LL, std::numeric_limits<long long>::max()).description(""));
    group.Add("--exposure", night.exposure, "Exposure of a light [s]");
    group.Add("--dark-exposure", request.darkExposure, "Exposure of a dark [s]; 0: that of the lights")
        ->check(CLI::Range(0.0, 86400.0).description(""));
    group.Add("--flat-exposure", night.flatExposure, "Exposure of a flat [s]");
    group.Add("--filter", night.filter, "Filter in the headers of lights and flats");
    group.AddCount("--camera-gain", night.cameraGain, "Gain setting in the headers");
    group.Add("--temperature", night.temperature, "Sensor temperature in the headers [degrees Celsius]");
    group.AddCount("--day", night.day, "Days after 2024-03-09 in the headers");
}

void AddSensorOptions(Group group, NightSettings& night)
{
    group.Add("--bits", night.bits, "Bits of the converter");
    group.Add("--gain", night.gain, "Gain [electrons per count]");
    group.Add("--bias-level", night.biasLevel, "Bias level [counts]");
    group.Add("--bias-pattern", night.biasPattern, "Deviation of the columns' and rows' offsets [counts]");
    group.Add("--read-noise", night.readNoise, "Read noise [electrons]");
    group.Add("--dark-current", night.darkCurrent, "Dark current [electrons / s]");
    group.Add("--hot-pixels", night.hotPixels, "Share of hot pixels");
    group.Add("--hot-current", night.hotCurrent, "Mean dark current of hot pixels [electrons / s]");
    group.Add("--pixel-spread", night.pixelResponseSpread, "Deviation of the pixels' sensitivity, as a share");
    group.Add("--vignetting", night.vignetting, "Share of the light lost in the corners");
    group.Add("--dust", night.dustShadows, "Dust shadows");
    group.Add("--flat-level", night.flatLevel, "Mean of the first flat above the bias [counts]");
    group.Add("--bayer", night.bayer, "Colour filters of the first 2 x 2 pixels, as RGGB");
}

void AddSkyOptions(Group group, NightSettings& night)
{
    group.Add("--stars", night.stars, "Stars in a frame");
    group.Add("--profile", night.profile, "Shape of a star")
        ->transform(CLI::CheckedTransformer(
            std::map<std::string, Profile>{{"gaussian", Profile::kGaussian}, {"moffat", Profile::kMoffat}}))
        ->option_text("gaussian|moffat=moffat");
    group.Add("--fwhm", night.fwhm, "Full width at half maximum of a star [pixels]");
    group.Add("--faintest", night.faintest, "Least flux of a star [electrons / s]");
    group.Add("--brightest", night.brightest, "Greatest flux of a star [electrons / s]");
    group.Add("--sky", night.sky, "Sky background [electrons / s in a pixel]");
    group.Add("--sky-gradient", night.skyGradient, "Its change from left to right, as a share");
    group.Add("--light-gradient", night.lightGradient, "The greatest that each light has of its own, across and down");
    group.Add("--galaxy", night.galaxy,
              "Brightness of the core of a spiral galaxy in the middle [electrons / s in a pixel]; 0: there is none");
    group.Add("--cosmics", night.cosmicHits, "Mean number of cosmic hits in a light");
    group.Add("--trails", night.trails, "Satellite trails in the whole night");
}

void AddMotionOptions(Group group, Request& request)
{
    NightSettings& night = request.night;
    group.Add("--drift", night.driftX, "Movement of the stars to the right [pixels]");
    group.Add("--drift-y", night.driftY, "Movement of the stars downwards [pixels]");
    group.Add("--jitter", night.jitter, "Deviation of the guiding error [pixels]");
    group.Add("--turn", night.turn, "Turn of the field, clockwise on screen [degrees]");
    group.Add("--distortion", night.distortion, "How far the optics move stars outwards in the corners [pixels]");
    group.AddNumbers("--clouds", request.cloudy, "Lights spoiled by clouds, as 3,7; the first is 1");
    group.AddNumbers("--stray", request.stray, "Lights that show another field, as 3,7; the first is 1");
    group.AddNumbers("--trailed", request.trailed, "Lights during which the mount moved, as 3,7; the first is 1");
}

/// "640x480"
void ReadSize(const std::string& text, NightSettings& night)
{
    char behind = 0;
    if (std::sscanf(text.c_str(), "%6dx%6d%c", &night.width, &night.height, &behind) != 2) {
        throw std::invalid_argument("size is '" + text + "', must be WIDTHxHEIGHT");
    }
}

/// Numbers as people count lights become numbers from 0.
std::vector<int> FromZero(const char* option, std::vector<int> lights, int count)
{
    for (int& light : lights) {
        if (light < 1 || light > count) {
            throw std::invalid_argument(std::string(option) + " is " + std::to_string(light) + ", must be in 1.." +
                                        std::to_string(count));
        }
        --light;
    }
    return lights;
}

/// "dark_001.fits"
std::string FileName(const char* kind, int i)
{
    char name[64];
    std::snprintf(name, sizeof name, "%s_%03d.fits", kind, i + 1);
    return name;
}

void WriteFrames(const std::string& folder, const char* kind, int count, const std::function<Frame(int)>& render)
{
    for (int i = 0; i < count; ++i) {
        const Frame frame = render(i);
        const std::string path = (std::filesystem::path(folder) / FileName(kind, i)).string();
        corvane::io::Save(path, ToImage(frame.counts), frame.header, {.bits = 16});
    }
}

void WriteTable(const std::string& folder, const char* name, const std::function<void(std::ostream&)>& write)
{
    const std::string path = (std::filesystem::path(folder) / name).string();
    std::ofstream file(path);
    file.precision(12);
    write(file);
    if (!file.flush()) {
        throw corvane::FileError(path, "cannot be written");
    }
}

void WriteStars(const Night& night, std::ostream& file)
{
    const bool isColour = !night.Settings().bayer.empty();
    file << "file,x,y,electrons,fwhm" << (isColour ? ",redness\n" : "\n");
    for (int i = 0; i < night.Settings().lights; ++i) {
        for (const auto& star : night.StarsOf(i)) {
            file << FileName("light", i) << ',' << star.x << ',' << star.y << ',' << star.flux << ',' << star.fwhm;
            isColour ? file << ',' << star.redness << '\n' : file << '\n';
        }
    }
}

void WriteOffsets(const Night& night, const Request& request, std::ostream& file)
{
    const auto isListed = [](const std::vector<int>& lights, int number) {
        return std::find(lights.begin(), lights.end(), number) != lights.end() ? 1 : 0;
    };
    file << "file,dx,dy,degrees,cloudy,stray,trailed\n";
    for (int i = 0; i < night.Settings().lights; ++i) {
        const auto placement = night.PlacementOf(i);
        file << FileName("light", i) << ',' << placement.dx << ',' << placement.dy << ',' << placement.degrees << ','
             << isListed(request.cloudy, i + 1) << ',' << isListed(request.stray, i + 1) << ','
             << isListed(request.trailed, i + 1) << '\n';
    }
}

void WriteStreaks(const Night& night, std::ostream& file)
{
    file << "file,kind,x0,y0,x1,y1\n";
    const auto write = [&](int i, const char* kind, const auto& streak) {
        file << FileName("light", i) << ',' << kind << ',' << streak.x0 << ',' << streak.y0 << ',' << streak.x1 << ','
             << streak.y1 << '\n';
    };
    for (int i = 0; i < night.Settings().lights; ++i) {
        for (const auto& trail : night.TrailsOf(i)) {
            write(i, "trail", trail);
        }
        for (const auto& hit : night.CosmicHitsOf(i)) {
            write(i, "cosmic", hit);
        }
    }
}

void MakeNight(Request& request)
{
    ReadSize(request.size, request.night);
    request.night.cloudyLights = FromZero("--clouds", request.cloudy, request.night.lights);
    request.night.strayLights = FromZero("--stray", request.stray, request.night.lights);
    request.night.trailedLights = FromZero("--trailed", request.trailed, request.night.lights);
    const Night night(request.night);
    const double darkExposure = request.darkExposure > 0.0 ? request.darkExposure : request.night.exposure;
    std::filesystem::create_directories(request.folder);
    WriteFrames(request.folder, "light", request.night.lights, [&](int i) { return night.Light(i); });
    WriteFrames(request.folder, "dark", request.darks, [&](int i) { return night.Dark(i, darkExposure); });
    WriteFrames(request.folder, "flat", request.flats, [&](int i) { return night.Flat(i); });
    WriteFrames(request.folder, "flatdark", request.flatDarks, [&](int i) { return night.FlatDark(i); });
    WriteFrames(request.folder, "bias", request.biases, [&](int i) { return night.Bias(i); });
    WriteTable(request.folder, "truth.csv", [&](std::ostream& file) { WriteStars(night, file); });
    WriteTable(request.folder, "offsets.csv", [&](std::ostream& file) { WriteOffsets(night, request, file); });
    WriteTable(request.folder, "streaks.csv", [&](std::ostream& file) { WriteStreaks(night, file); });
}

} // namespace

int main(int argc, char** argv)
{
    CLI::App app(
        "Writes a night of raw 16-bit FITS frames whose truth is known. The truth comes with them: truth.csv has\n"
        "the stars of each light, offsets.csv how each light is placed onto the first, streaks.csv satellite\n"
        "trails and cosmic hits. The same options give the same bits on every machine.",
        "make-night");
    Request request;
    app.get_formatter()->column_width(34);
    app.add_option("OUTDIR", request.folder, "Folder to write to; made when missing")->required();
    AddFrameOptions({app, "Frames"}, request);
    AddSensorOptions({app, "Sensor"}, request.night);
    AddSkyOptions({app, "Sky"}, request.night);
    AddMotionOptions({app, "From light to light"}, request);
    try {
        app.parse(argc, argv);
        MakeNight(request);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 2;
    } catch (const std::invalid_argument& error) {
        std::fprintf(stderr, "make-night: %s\n", error.what());
        return 2;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make-night: %s\n", error.what());
        return 1;
    }
    return 0;
}
