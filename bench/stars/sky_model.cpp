#include "stars/sky_model.h"

#include <cmath>

#include "bench/support/bench.h"

namespace corvane::bench {
namespace {

/// A sky of noise 30 and bright samples that rises by 200 across the frame.
CStlImage RisingSky(int size)
{
    Sky sky(size, size, 1, 5);
    for (int y = 0; y < size; ++y) {
        float* const row = sky.GetImageAdr(0, y, 0);
        for (int x = 0; x < size; ++x) {
            row[x] += static_cast<float>(200.0 * x / size);
        }
    }
    return CStlImage(sky);
}

template <stars::SkyForm kForm>
void TimeSkyModel(Run& run)
{
    const int size = Size(2048, 200);
    const CStlImage frame = RisingSky(size);
    std::vector<double> row(static_cast<std::size_t>(size));
    const auto fit = [&] {
        const stars::SkyModel model = *stars::FitSkyModel(frame, 0, kForm, std::nullopt);
        for (int y = 0; y < size; ++y) {
            model.FillRow(y, row.data());
        }
        return row.back() - row.front();
    };
    Require(std::fabs(fit() - 200.0) < (kForm == stars::SkyForm::kPolynomial ? 5.0 : 60.0), "the gradient is wrong");
    run.Time(frame.GetImageSize(), [&] { benchmark::DoNotOptimize(fit()); });
}

const Line polynomialSky("stars/FitSkyModel/polynomial", {}, TimeSkyModel<stars::SkyForm::kPolynomial>);
const Line splineSky("stars/FitSkyModel/spline", {}, TimeSkyModel<stars::SkyForm::kSpline>);
const Line meshSky("stars/FitSkyModel/mesh", {}, TimeSkyModel<stars::SkyForm::kMesh>);

} // namespace
} // namespace corvane::bench
