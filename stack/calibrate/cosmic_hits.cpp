#include "stack/calibrate/cosmic_hits.h"

#include "catalogue/cosmic_rays.h"
#include "stack/calibrate/light_frames.h"

namespace corvane::stack {

namespace {

/// The noise of a plane, or of each filter in a mosaic; none where that cannot be told.
std::vector<SampleNoise> NoisesOf(const CStlImage& image, int plane, bool isMosaic, const io::Header& header)
{
    const int step = isMosaic ? 2 : 1;
    std::vector<SampleNoise> noises;
    for (int i = 0; i < step * step; ++i) {
        const auto noise = catalogue::MeasureSampleNoise(image, plane, header, {i % step, i / step, step});
        if (!noise) {
            return {};
        }
        noises.push_back(*noise);
    }
    return noises;
}

} // namespace

LightHits FindCosmicHits(CalibratedFrames& lights, int light, bool isMosaic, const Run& run)
{
    const CStlImage image = LightFrames(lights, {}, DemosaicMethod::kBilinear).ReadImage(light, run);
    const io::Header& header = lights.Stored().Info(light).header;
    const Run silent{.threads = run.threads};
    LightHits hits;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const std::vector<SampleNoise> noises = NoisesOf(image, plane, isMosaic, header);
        hits.push_back(noises.empty() ? std::vector<CosmicHit>() : FindCosmicRays(image, plane, {}, noises, silent));
    }
    return hits;
}

bool AreTooMany(const LightHits& hits, const FrameFacts& light)
{
    constexpr double kMost = 0.01;
    return static_cast<double>(CountOf(hits)) > kMost * light.width * light.height * light.planes;
}

} // namespace corvane::stack
