#include "corvane/colour/lab_color_enhance.h"

#include <memory>

#include "bench/support/bench.h"
#include "corvane/core/color.h"

namespace corvane::bench {
namespace {

const Line enhance("colour/LabColorEnhance", {}, [](Run& run) {
    Sky frame(Size(2048, 67), Size(2048, 45), 3, 8);
    const std::unique_ptr<CStlImage> lab(frame.MakeLabPlane());
    CImgLabColorEnhance result(frame);
    const auto saturate = [&] { result.Do(lab.get(), 1.5, 1.25, nullptr, 0); };
    saturate();
    CheckSamples(result, [&](int x, int y, int p) {
        CColor colour;
        colour.LabToRgb(lab->GetPixelGrayRaw(x, y, 0), lab->GetPixelGrayRaw(x, y, 1) * 1.5,
                        lab->GetPixelGrayRaw(x, y, 2) * 1.25);
        return frame.ToRaw((p == 0 ? colour.GetR() : p == 1 ? colour.GetG() : colour.GetB()) * 255.0, p);
    });
    run.Time(frame.GetImageSize(), saturate);
});

} // namespace
} // namespace corvane::bench
