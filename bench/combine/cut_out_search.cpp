#include "corvane/combine/cut_out_search.h"

#include <cmath>
#include <optional>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line inLarge("combine/cut-out/64 x 64 in 2048 x 2048", {}, [](Run& run) {
    const int size = Size(2048, 160);
    const int side = 64;
    const double offsetX = size / 3 + 0.3;
    const double offsetY = size / 3 + 0.7;
    CStlImage image(-32, size, size, 1, 1.0, 0.0, 1);
    DrawStars(image, 0.0, 0.0);
    CStlImage cutOut(-32, side, side, 1, 1.0, 0.0, 1);
    DrawStars(cutOut, offsetX, offsetY);
    const CRect places(0, 0, size - side + 1, size - side + 1);
    std::optional<CutOutPlace> found;
    const auto work = [&] { found = FindCutOut(cutOut, image, places, {}); };
    work();
    Require(found && std::fabs(found->x - offsetX) < 0.11 && std::fabs(found->y - offsetY) < 0.11, "the offset found");
    run.Time(image.GetImageSize(), work);
});

} // namespace
} // namespace corvane::bench
