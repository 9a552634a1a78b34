#include "stars/find_stars.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "bench/support/bench.h"
#include "stars/psf.h"
#include "stars/sky_mesh.h"
#include "stars/star_extent.h"

namespace corvane::bench {
namespace {

constexpr double kSky = 1000.0;
constexpr double kNoise = 12.0;
constexpr double kSigma = 1.4; // of the stars: a FWHM of 3.3 pixels

struct DrawnStar {
    double x;
    double y;
    double peak;
};

/// Stars of 5 to 1000 times the sky's noise, the fainter the more.
std::vector<DrawnStar> DrawnStars(int count, int width, int height)
{
    std::mt19937_64 random(1);
    const auto uniform = [&] { return static_cast<double>(random() >> 11) * 0x1p-53; };
    std::vector<DrawnStar> stars(static_cast<std::size_t>(count));
    for (DrawnStar& star : stars) {
        star.x = uniform() * width;
        star.y = uniform() * height;
        star.peak = 5.0 * kNoise / std::max(uniform(), 0.005);
    }
    return stars;
}

CStlImage StarFrame(int width, int height, const std::vector<DrawnStar>& stars)
{
    CStlImage frame(-32, width, height, 1, 1.0, 0.0, 1);
    std::mt19937_64 random(2);
    std::normal_distribution<float> sky(kSky, kNoise);
    for (int y = 0; y < height; ++y) {
        float* const row = frame.GetImageAdr(0, y, 0);
        std::generate_n(row, width, [&] { return sky(random); });
    }
    for (const DrawnStar& star : stars) {
        const int left = std::max(static_cast<int>(star.x) - 8, 0);
        const int top = std::max(static_cast<int>(star.y) - 8, 0);
        for (int y = top; y < std::min(top + 17, height); ++y) {
            for (int x = left; x < std::min(left + 17, width); ++x) {
                const double square = (x - star.x) * (x - star.x) + (y - star.y) * (y - star.y);
                *frame.GetImageAdr(x, y, 0) +=
                    static_cast<float>(star.peak * std::exp(-square / 2.0 / kSigma / kSigma));
            }
        }
    }
    return frame;
}

/// Most of the stars must be found: some hide in the wings of others.
void Check(const stars::StarField& field, const std::vector<DrawnStar>& stars)
{
    const auto isFound = [&](const DrawnStar& star) {
        return std::any_of(field.stars.begin(), field.stars.end(),
                           [&](const stars::FieldStar& s) { return std::hypot(s.x - star.x, s.y - star.y) < 0.5; });
    };
    const auto found = std::count_if(stars.begin(), stars.end(), isFound);
    Require(found * 10 >= static_cast<std::ptrdiff_t>(stars.size()) * 9, "a tenth of the stars was not found");
}

void TimeFindStars(Run& run)
{
    const int size = Size(4096, 200);
    const std::vector<DrawnStar> stars = DrawnStars(Size(6000, 15), size, size);
    const CStlImage frame = StarFrame(size, size, stars);
    Check(stars::FindFieldStars(frame, 0), stars);
    run.Time(frame.GetImageSize(), [&] { benchmark::DoNotOptimize(stars::FindFieldStars(frame, 0).stars.data()); });
}

void TimeSkyMesh(Run& run)
{
    const int size = Size(4096, 200);
    const CStlImage frame = StarFrame(size, size, {});
    const stars::SkyMesh mesh = stars::MeasureSkyMesh(frame, 0);
    Require(std::fabs(mesh.level.Median() - kSky) < 0.1 * kNoise, "the sky's level is wrong");
    Require(std::fabs(mesh.noise.Median() - kNoise) < 0.05 * kNoise, "the sky's noise is wrong");
    run.Time(frame.GetImageSize(), [&] { benchmark::DoNotOptimize(stars::MeasureSkyMesh(frame, 0).level.At(0, 0)); });
}

void TimeExtents(Run& run)
{
    constexpr double kLimit = 2.0;
    const int size = Size(4096, 200);
    const std::vector<DrawnStar> stars = DrawnStars(Size(6000, 15), size, size);
    const CStlImage frame = StarFrame(size, size, stars);
    const stars::StarField field = stars::FindFieldStars(frame, 0);
    const auto covers = [&](const stars::StarExtent& extent) {
        return extent.radius < 30.0 && extent.radius >= kSigma;
    };
    const std::vector<stars::StarExtent> extents = stars::MeasureExtents(frame, 0, field, kLimit, {});
    Require(std::count_if(extents.begin(), extents.end(), covers) * 10 >= static_cast<std::ptrdiff_t>(stars.size()) * 8,
            "a fifth of the stars is not covered");
    run.Time(frame.GetImageSize(),
             [&] { benchmark::DoNotOptimize(stars::MeasureExtents(frame, 0, field, kLimit, {}).data()); });
}

void TimePsf(Run& run)
{
    const int size = Size(4096, 200);
    const CStlImage frame = StarFrame(size, size, DrawnStars(Size(6000, 15), size, size));
    const stars::FieldPsf psf = stars::MeasurePsf(frame, 0, {});
    Require(psf.zones.size() == 1 && std::fabs(psf.zones.front().widths.major.value / (2.3548 * kSigma) - 1.0) < 0.03,
            "the stars' width is wrong");
    run.Time(frame.GetImageSize(), [&] { benchmark::DoNotOptimize(stars::MeasurePsf(frame, 0, {}).zones.data()); });
}

const Line findStars("stars/FindFieldStars/6,000 stars", Seconds(0.5), TimeFindStars);
const Line extents("stars/MeasureExtents/6,000 stars", Seconds(0.2), TimeExtents);
const Line measurePsf("stars/MeasurePsf/6,000 stars", {}, TimePsf);
const Line skyMesh("stars/MeasureSkyMesh", {}, TimeSkyMesh);

} // namespace
} // namespace corvane::bench
