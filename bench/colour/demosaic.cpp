#include "corvane/colour/demosaic.h"

#include "bench/support/bench.h"
#include "corvane/geometry/flip.h"

namespace corvane::bench {
namespace {

/// A mosaic turned over gives the colours turned over, and no sample of a filter changes.
void CheckColours(CStlImage& mosaic, const CStlImage& colour, DemosaicMethod method)
{
    CImgFlip turned(mosaic);
    turned.Do(1, &mosaic, 0);
    CStlImage turnedColour;
    Demosaic(turned, BayerPattern::kGrbg, method, turnedColour, {});
    CheckSamples(colour, [&](int x, int y, int plane) {
        const bool isOwn = plane == x % 2 + y % 2;
        return isOwn ? mosaic.GetPixelGrayRaw(x, y, 0)
                     : turnedColour.GetPixelGrayRaw(mosaic.GetWidth() - 1 - x, y, plane);
    });
}

void TimeDemosaic(Run& run, DemosaicMethod method)
{
    Sky mosaic(Size(6000, 66), Size(4000, 44), 1, 3);
    CStlImage colour;
    const auto demosaic = [&] { Demosaic(mosaic, BayerPattern::kRggb, method, colour, {}); };
    demosaic();
    CheckColours(mosaic, colour, method);
    run.Time(mosaic.GetImageSize(), demosaic);
}

const Line bilinear("colour/Demosaic/bilinear", Seconds(0.15),
                    [](Run& run) { TimeDemosaic(run, DemosaicMethod::kBilinear); });
const Line linear("colour/Demosaic/linear", Seconds(0.15),
                  [](Run& run) { TimeDemosaic(run, DemosaicMethod::kLinear); });
const Line edgeAware("colour/Demosaic/edge-aware", Seconds(0.35),
                     [](Run& run) { TimeDemosaic(run, DemosaicMethod::kEdgeAware); });

} // namespace
} // namespace corvane::bench
