#include "corvane/combine/matching.h"

#include <cmath>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line matching("combine/Matching/64 x 64 within 64 pixels", {}, [](Run& run) {
    const int size = Size(2048, 120);
    const int side = Size(64, 40);
    const int range = Size(128, 8);
    const double offsetX = size / 3 + 0.3;
    const double offsetY = size / 3 + 0.7;
    CImgMatching searched(CStlImage(-32, size, size, 1, 1.0, 0.0, 1));
    DrawStars(searched, 0.0, 0.0);
    CStlImage reference(-32, side, side, 1, 1.0, 0.0, 1);
    DrawStars(reference, offsetX, offsetY);
    double x = 0.0;
    double y = 0.0;
    const auto search = [&] {
        x = size / 3 + range / 4;
        y = size / 3 - range / 4;
        Require(searched.Do(&reference, &x, &y, range, 1, 0) == 1, "nothing found");
    };
    search();
    Require(std::fabs(x - offsetX) < 0.11 && std::fabs(y - offsetY) < 0.11, "the offset found");
    run.Time(searched.GetImageSize(), search);
});

} // namespace
} // namespace corvane::bench
