#include <algorithm>
#include <cmath>
#include <memory>

#include "bench/support/bench.h"
#include "corvane/colour/lab_color_enhance.h"
#include "corvane/core/color.h"

namespace corvane::bench {
namespace {

/// The frame that all lines work on.
Sky MakeFrame()
{
    return {Size(2048, 67), Size(2048, 45), 3, 8};
}

/// The colour of a pixel as the levels show it.
CColor ColourAt(const CStlImage& image, int x, int y)
{
    const auto unit = [&](int p) {
        const double shown = image.To256(static_cast<double>(image.GetPixelGrayRaw(x, y, p)), p);
        return (shown > 0.0 ? shown : 0.0) / 255.0;
    };
    CColor colour;
    colour.RgbToLab(unit(0), unit(1), unit(2));
    return colour;
}

const Line lightness("core/Lab/L of RGB", {}, [](Run& run) {
    Sky frame = MakeFrame();
    CheckSamples(*std::unique_ptr<CStlImage>(frame.MakeLPlane()),
                 [&](int x, int y, int) { return ColourAt(frame, x, y).GetL(); });
    run.Time(frame.GetImageSize(), [&] { delete frame.MakeLPlane(); });
});

const Line planes("core/Lab/Lab of RGB", {}, [](Run& run) {
    Sky frame = MakeFrame();
    CheckSamples(*std::unique_ptr<CStlImage>(frame.MakeLabPlane()), [&](int x, int y, int p) {
        const CColor colour = ColourAt(frame, x, y);
        return p == 0 ? colour.GetL() : p == 1 ? colour.Geta() : colour.Getb();
    });
    run.Time(frame.GetImageSize(), [&] { delete frame.MakeLabPlane(); });
});

const Line thereAndBack("core/Lab/RGB to Lab and back", Seconds(0.12), [](Run& run) {
    Sky frame = MakeFrame();
    CImgLabColorEnhance result(frame);
    const auto convert = [&] {
        const std::unique_ptr<CStlImage> lab(frame.MakeLabPlane());
        result.Do(lab.get(), 1.0, 1.0, nullptr, 0);
    };
    convert();
    VisitSome(frame.GetWidth(), frame.GetHeight(), [&](int x, int y) {
        for (int p = 0; p < 3; ++p) {
            const double sample = std::max(static_cast<double>(frame.GetPixelGrayRaw(x, y, p)), frame.GetLevelMin(p));
            Require(std::fabs(result.GetPixelGrayRaw(x, y, p) - sample) < 1e-3, "a colour does not come back");
        }
    });
    run.Time(frame.GetImageSize(), convert);
});

} // namespace
} // namespace corvane::bench
