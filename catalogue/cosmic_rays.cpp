#include "catalogue/cosmic_rays.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "catalogue/image_beside.h"
#include "catalogue/restoration.h"
#include "corvane/core/defined.h"
#include "corvane/core/error.h"
#include "io/metadata.h"
#include "stars/robust.h"

namespace corvane::catalogue {
namespace {

/// What a sky shows.
struct SkyNoise {
    double level;
    double noise; ///< standard deviation
};

SkyNoise MeasureSkyNoise(const CStlImage& image, int plane, const SampleLattice& samples)
{
    constexpr int kMostDraws = 1 << 18;
    constexpr int kApart = 2; // so that the blur of a neighbour hides little
    const long long count = 1LL * (image.GetWidth() / samples.step) * (image.GetHeight() / samples.step);
    const int rowStep = samples.step * static_cast<int>(count / kMostDraws + 1);
    const int apart = samples.step * kApart;
    const DefinedTest isDefined(image);
    std::vector<double> values;
    std::vector<double> differences;
    for (int y = samples.top; y < image.GetHeight(); y += rowStep) {
        const float* const row = image.GetImageAdr(0, y, plane, 1);
        for (int x = samples.left; x < image.GetWidth(); x += samples.step) {
            if (isDefined(row[x])) {
                values.push_back(row[x]);
                if (x >= apart && isDefined(row[x - apart])) {
                    differences.push_back(static_cast<double>(row[x]) - row[x - apart]);
                }
            }
        }
    }
    return {stars::MedianOf(values), stars::MeasureLevel(std::move(differences)).deviation / std::sqrt(2.0)};
}

/// The noise of a plane whose electrons per count may be known.
std::optional<SampleNoise> NoiseBySky(const CStlImage& image, int plane, const std::optional<double>& gain,
                                      const SampleLattice& samples = {})
{
    const SkyNoise sky = MeasureSkyNoise(image, plane, samples);
    const double variance = sky.noise * sky.noise;
    const double bySky = sky.level > 0.0 ? variance / sky.level : 0.0;
    const SampleNoise noise{variance, gain ? 1.0 / *gain : bySky, sky.level};
    return variance > 0.0 ? std::optional(noise) : std::nullopt;
}

/// Electrons per count, where the header tells.
std::optional<double> StatedGain(const io::Header& header)
{
    const bool isStated = io::ElectronsPerCount(header).value_or(0.0) > 0.0;
    return isStated ? std::optional(GainOf(header)) : std::nullopt;
}

SampleNoise NoiseOf(const io::Frame& frame, int plane, const Arguments& arguments)
{
    constexpr double kLeastNoise = 1e-5; // electrons; of a frame without light
    const std::optional<double> gain =
        arguments.Has("gain") ? std::optional(arguments.Number("gain")) : StatedGain(frame.header);
    if (arguments.Has("read-noise")) {
        const double noise = std::max(arguments.Number("read-noise"), kLeastNoise) / *gain;
        return {noise * noise, 1.0 / *gain, 0.0};
    }
    const std::optional<SampleNoise> noise = NoiseBySky(frame.image, plane, gain);
    if (!noise) {
        throw InputError("image", "shows no noise to measure; give gain and read-noise");
    }
    return *noise;
}

void SaveMask(const std::string& path, const std::vector<std::vector<CosmicHit>>& hits, const io::Frame& frame)
{
    CStlImage mask = EmptyLike(frame.image);
    for (std::size_t plane = 0; plane < hits.size(); ++plane) {
        for (const CosmicHit& hit : hits[plane]) {
            mask.SetPixelGrayRaw(hit.x, hit.y, 1.0F, static_cast<int>(plane));
        }
    }
    SaveBeside(path, mask, frame, 8);
}

void RunCosmicRays(io::Frame& frame, const Arguments& arguments, const Run& run)
{
    const CosmicRayLimits limits{.sigma = arguments.Number("sigma"),
                                 .fraction = arguments.Number("fraction"),
                                 .limit = arguments.Number("limit"),
                                 .iterations = arguments.Whole("iterations")};
    std::vector<std::vector<CosmicHit>> hits;
    std::size_t count = 0;
    for (int plane = 0; plane < frame.image.GetPlanes(); ++plane) {
        hits.push_back(FindCosmicRays(frame.image, plane, limits, {NoiseOf(frame, plane, arguments)}, run));
        count += hits.back().size();
    }
    if (arguments.Has("mask-file")) {
        SaveMask(arguments.Text("mask-file"), hits, frame);
    }
    for (std::size_t plane = 0; plane < hits.size(); ++plane) {
        for (const CosmicHit& hit : hits[plane]) {
            frame.image.SetPixelGrayRaw(hit.x, hit.y, hit.mended, static_cast<int>(plane));
        }
    }
    run.TellFinding("samples that cosmic rays had hit: " + std::to_string(count));
}

void CheckNoise(const Arguments& arguments)
{
    if (arguments.Has("read-noise") && !arguments.Has("gain")) {
        throw arguments.Refusal("read-noise", "must come with gain, since it counts electrons");
    }
}

} // namespace

std::optional<SampleNoise> MeasureSampleNoise(const CStlImage& image, int plane, const io::Header& header,
                                              const SampleLattice& samples)
{
    return NoiseBySky(image, plane, StatedGain(header), samples);
}

Operation CosmicRays()
{
    const CosmicRayLimits usual;
    return {
        .name = "cosmic-rays",
        .summary = "take cosmic rays out of a single frame",
        .help = "Finds samples whose edges are sharper than those of anything that comes through the optics, and "
                "gives them the median of those about them. The frame must be as the camera took it, calibrated "
                "but not resized, turned or smoothed; of a filter mosaic `stack --cosmic` takes each colour by "
                "itself. A lower sigma finds fainter hits, a higher limit spares the cores of stars that cover few "
                "pixels. Saturated stars stay.",
        .parameters =
            {NumberParameter("sigma", "how far a hit stands out", "standard deviations of the noise", {1.0, 1000.0},
                             usual.sigma),
             NumberParameter("fraction", "part of sigma that suffices beside a hit", "", {0.0, 1.0}, usual.fraction),
             NumberParameter("limit", "how many times sharper a hit is than what lies beneath it", "", {0.0, 1000.0},
                             usual.limit),
             NumberParameter("gain", "electrons that make one count", "electrons per count", {1e-6, 1e12},
                             "EGAIN of the header times NCOMBINE, else by the sky: its noise is that of its light"),
             NumberParameter("read-noise",
                             "noise of reading out a pixel, of a frame whose counts are light alone; needs gain",
                             "electrons", {0.0, 1e9}, "the noise of the sky is measured"),
             WholeParameter("iterations", "most rounds, each of which may uncover more", "", {1, 20}, usual.iterations),
             {.name = "mask-file",
              .kind = Kind::Output,
              .summary = "an image to write, 1 where a cosmic ray has hit and 0 elsewhere",
              .whenAbsent = "none is written"}},
        .footprint = Always(kWholeImage), // the noise of its sky is measured
        .check = CheckNoise,
        .run = RunCosmicRays};
}

} // namespace corvane::catalogue
