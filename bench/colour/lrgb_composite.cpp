#include "corvane/colour/lrgb_composite.h"

#include <algorithm>

#include "bench/support/bench.h"
#include "corvane/core/color.h"
#include "corvane/core/display_scale.h"

namespace corvane::bench {
namespace {

struct Frames {
    Sky luminance{Size(2048, 61), Size(2048, 61), 1, 1};
    Sky colour{Size(2048, 61), Size(2048, 61), 3, 2};
};

double Channel(const CColor& colour, int plane)
{
    return plane == 0 ? colour.GetR() : (plane == 1 ? colour.GetG() : colour.GetB());
}

double Recombined(const Frames& frames, int x, int y, int plane)
{
    const auto unit = [&](const CStlImage& image, int p) {
        return std::clamp(image.To256(static_cast<double>(image.GetPixelGrayRaw(x, y, p)), p), 0.0, 5000.0) * kPer255;
    };
    const double grey = unit(frames.luminance, 0);
    CColor luminance;
    luminance.RgbToLab(grey, grey, grey);
    CColor colour;
    colour.RgbToLab(unit(frames.colour, 0), unit(frames.colour, 1), unit(frames.colour, 2));
    colour.LabToRgb(luminance.GetL(), colour.Geta(), colour.Getb());
    return DisplayScale(frames.luminance, 0).ToRaw(Channel(colour, plane) * 255.0);
}

double Mean(const Frames& frames, int x, int y, int plane)
{
    return (frames.luminance.GetPixelGrayRaw(x, y, 0) + frames.colour.GetPixelGrayRaw(x, y, plane)) * 0.5;
}

void TimeLrgbComposite(Run& run, int average)
{
    Frames frames;
    CImgLrgbCmpst result(frames.colour);
    const auto combine = [&] {
        result.DoLrgb(&frames.luminance, 0.0, 0.0, 0.0, &frames.colour, 0.0, 0.0, 0.0, 1.0, nullptr, average, 0);
    };
    combine();
    CheckSamples(result, [&](int x, int y, int plane) {
        return average != 0 ? Mean(frames, x, y, plane) : Recombined(frames, x, y, plane);
    });
    run.Time(result.GetImageSize(), combine);
}

const Line lab("colour/LrgbComposite/L*a*b*", {}, [](Run& run) { TimeLrgbComposite(run, 0); });
const Line average("colour/LrgbComposite/average", {}, [](Run& run) { TimeLrgbComposite(run, 1); });

} // namespace
} // namespace corvane::bench
