#include "corvane/measure/psf.h"

#include <cmath>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

const Line stars("measure/Psf/1,000 stars", {}, [](Run& run) {
    constexpr double kFwhm = 2.5 * 2.354820045829508;
    const int side = Size(32, 4); // stars in a row and in a column
    const int cell = 24;          // one star to each in DrawStars
    CStlImage image(-32, cell * side, cell * side, 1, 1.0, 0.0, 1);
    DrawStars(image, 0.0, 0.0);
    const auto measure = [&] {
        PSF psf(&image);
        for (int i = 0; i < side * side; ++i) {
            psf.Add({i % side * cell + cell / 2, i / side * cell + cell / 2});
        }
        double width = 0.0;
        psf.GetMedianFWHM(&width);
        Require(psf.GetCount() > side * side / 2, "the number of stars");
        Require(std::fabs(width - kFwhm) < 0.25, "the median width");
    };
    measure();
    run.Time(image.GetImageSize(), measure);
});

} // namespace
} // namespace corvane::bench
