#include <algorithm>

#include "bench/support/bench.h"
#include "corvane/core/stl_image.h"

namespace corvane::bench {
namespace {

constexpr std::uint64_t kOtherSeed = 3;

/// A frame of its own of the large frame's size.
class OtherFrame : public Sky {
public:
    explicit OtherFrame(int planes = 1) : Sky(LargeFrame().GetWidth(), LargeFrame().GetHeight(), planes, kOtherSeed) {}
};

const Line dark("core/DarkClbrtn", TimesMemcpy(1.5), [](Run& run) {
    const CStlImage& light = LargeFrame();
    OtherFrame darkFrame;
    CStlImage result(light);
    result.DarkClbrtn(&darkFrame, 0);
    CheckSamples(result, [&](int x, int y, int) {
        const double left = static_cast<double>(light.GetPixelGrayRaw(x, y, 0)) - darkFrame.GetPixelGrayRaw(x, y, 0);
        return std::max(left, 0.0);
    });
    run.Time(light.GetImageSize(), [&] { result.DarkClbrtn(&darkFrame, 0); });
});

const Line flat("core/FlatClbrtn", TimesMemcpy(1.5), [](Run& run) {
    const CStlImage& light = LargeFrame();
    OtherFrame flatFrame;
    CStlImage result(light);
    result.FlatClbrtn(&flatFrame, 0);
    const double mean = flatFrame.GetAvrGrayRaw(0);
    CheckSamples(result, [&](int x, int y, int) {
        return static_cast<double>(light.GetPixelGrayRaw(x, y, 0)) * mean / flatFrame.GetPixelGrayRaw(x, y, 0);
    });
    run.Time(light.GetImageSize(), [&] { result.FlatClbrtn(&flatFrame, 0); });
});

const Line toGray("core/ToGray", {}, [](Run& run) {
    OtherFrame colour(3);
    const auto copy = [&] { return CStlImage(colour); };
    CStlImage result(colour);
    Require(result.ToGray(&colour, 0) != 0, "no grey image");
    CheckSamples(result, [&](int x, int y, int) {
        const auto shown = [&](int plane) { return colour.GetPixelGray256f(x, y, plane); };
        return result.ToRaw(0.587 * shown(1) + 0.299 * shown(0) + 0.114 * shown(2), 0);
    });
    run.Time(colour.GetImageSize(), copy, [&](CStlImage& image) { image.ToGray(&colour, 0); });
});

const Line toColor("core/ToColor", {}, [](Run& run) {
    const CStlImage& grey = LargeFrame();
    CStlImage result(grey);
    Require(result.ToColor() != 0, "no colour image");
    CheckSamples(result, [&](int x, int y, int) { return grey.GetPixelGrayRaw(x, y, 0); });
    run.Time(
        result.GetImageSize(), [&] { return CStlImage(grey); }, [](CStlImage& image) { image.ToColor(); });
});

const Line pixelBlt("core/PixelBlt/mapLevels", TimesMemcpy(1.5), [](Run& run) {
    CStlImage& source = LargeFrame();
    CStlImage target(-32, source.GetWidth(), source.GetHeight(), 1, 1.0, 0.0, 1);
    target.SetLevel(0, 20.0, 30000.0);
    const auto copy = [&] { target.PixelBlt(0, 0, source.GetWidth(), source.GetHeight(), &source, 0, 0, 1); };
    copy();
    CheckSamples(target, [&](int x, int y, int) {
        return target.ToRaw(source.To256(static_cast<double>(source.GetPixelGrayRaw(x, y, 0)), 0), 0);
    });
    run.Time(source.GetImageSize(), copy);
});

} // namespace
} // namespace corvane::bench
