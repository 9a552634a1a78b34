#include "stack/calibrate/raw_lights.h"

#include "stack/calibrate/light_frames.h"

namespace corvane::stack {

RawLights::RawLights(FrameSet& lights)
    : lights_(lights), uncalibrated_(lights, {{Masters()}}, 0.0, std::vector<double>(lights.Count(), 1.0))
{}

CStlImage RawLights::Read(int light, const Run& run)
{
    return WithRecord(light, LightFrames(uncalibrated_, {}, DemosaicMethod::kBilinear).ReadImage(light, run));
}

CStlImage RawLights::WithRecord(int light, CStlImage samples) const
{
    lights_.Describe(light, samples);
    return samples;
}

} // namespace corvane::stack
