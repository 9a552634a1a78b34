#include <cmath>
#include <functional>

#include "corvane/core/stl_image.h"
#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

constexpr double kNone = NAN;

/// Reference pixels, increments (NaN when absent), matrix and its kind.
using Coordinates = std::vector<double>;

Coordinates After(const Coordinates& c, const std::function<void(CStlImage&)>& change)
{
    CStlImage image(-32, 100, 60, 1, 1.0, 0.0, 1);
    image.SetStdCtr(50.75, 40.25); // only the whole part counts
    for (std::size_t axis : {0, 1}) {
        image.SetCRPix(static_cast<int>(axis), c[axis]);
        if (!std::isnan(c[2 + axis])) {
            image.SetCDelt(static_cast<int>(axis), c[2 + axis]);
        }
    }
    tagMATRIX2_2 m{c[4], c[5], c[6], c[7]};
    image.SetLTMtx(&m, static_cast<int>(c[8]));
    change(image);
    Coordinates after(4);
    for (std::size_t axis : {0, 1}) {
        image.GetCRPix(static_cast<int>(axis), &after[axis]);
        after[2 + axis] = image.GetCDelt(static_cast<int>(axis), &after[2 + axis]) ? after[2 + axis] : kNone;
    }
    const int kind = image.GetLTMtx(&m);
    after.insert(after.end(), {m.m11, m.m12, m.m21, m.m22, static_cast<double>(kind)});
    return after;
}

} // namespace

TEST(Coordinates, FollowThePixels)
{
    const auto horizontal = [](CStlImage& image) { image.FlipHorzPhysicalCoords(); };
    const auto vertical = [](CStlImage& image) { image.FlipVertPhysicalCoords(); };
    const auto translate = [](CStlImage& image) { image.TranslatePhysicalCoords(1.5, -2.5); };
    const auto scale = [](CStlImage& image) { image.ScalePhysicalCoords(0.5, 0.25); };
    const auto turn = [](double angle) {
        return [=](CStlImage& image) { image.RotatePhysicalCoords(angle, 3.0, -4.0); };
    };
    const double c = std::cos(33.3 * 0.017453292522222223);
    const double s = std::sin(33.3 * 0.017453292522222223);
    const double x = 10.0 * c - 10.0 * s + 53.0;
    const double y = 10.0 * s + 10.0 * c + 36.0;
    const Coordinates bare{1.0, 50.5, kNone, kNone, 1, 0, 0, 1, 0};
    const Coordinates steps{60.0, 50.0, -0.5, 0.25, 1, 0, 0, 1, 0};
    const Coordinates full{60.0, 50.0, -0.5, 0.25, 1, 2, 3, 4, 1};
    const std::vector<std::tuple<Coordinates, std::function<void(CStlImage&)>, Coordinates>> cases{
        {bare, horizontal, {100.0, 50.5, -1.0, kNone, 1, 0, 0, 1, 0}},
        {steps, horizontal, {41.0, 50.0, 0.5, 0.25, 1, 0, 0, 1, 0}},
        {full, horizontal, {41.0, 50.0, -0.5, 0.25, -1, 2, -3, 4, 1}},
        {steps, vertical, {60.0, 11.0, -0.5, -0.25, 1, 0, 0, 1, 0}},
        {full, vertical, {60.0, 11.0, -0.5, 0.25, 1, -2, 3, -4, 1}},
        {full, translate, {61.5, 47.5, -0.5, 0.25, 1, 2, 3, 4, 1}},
        {steps, scale, {30.0, 12.5, -0.5, 0.25, 2, 0, 0, 4, 2}},
        {full, scale, {30.0, 12.5, -0.5, 0.25, 2, 8, 6, 16, 1}},
        {full, turn(0.0), full},
        {full, turn(kNone), full},
        {steps, turn(33.3), {x, y, -0.5, 0.25, c, s, -s, c, 2}},
        {full, turn(33.3), {x, y, -0.5, 0.25, c - 2 * s, s + 2 * c, 3 * c - 4 * s, 3 * s + 4 * c, 1}},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto& [before, change, expected] = cases[i];
        const Coordinates after = After(before, change);
        for (std::size_t k = 0; k < expected.size(); ++k) {
            EXPECT_TRUE(Same(after[k], expected[k], 1e-14)) << "case " << i << ", value " << k << ": " << after[k];
        }
    }
}
