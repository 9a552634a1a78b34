#include "corvane/colour/plane_mix.h"

#include <cmath>

#include <gtest/gtest.h>

#include "tests/support/images.h"

namespace corvane {
namespace {

TEST(PlaneMix, IsThePlainSum)
{
    test::ForEachImage([](CStlImage& image) {
        const CStlImage other = test::RandomImage({image.GetWidth(), image.GetHeight()}, image.GetPlanes(), 9);
        const CStlImage before(image);
        const int plane = image.GetPlanes() - 1;
        const corvane::Run run;
        Stage stage(run, "", image.GetHeight());
        MixPlanes({{&other, 0, 0.25}, {&image, plane, -1.5}, {&image, 0, 0.0}}, 3.0, image, plane, stage);
        for (int i = 0; i < image.GetWidth() * image.GetHeight(); ++i) {
            const int x = i % image.GetWidth();
            const int y = i / image.GetWidth();
            const double sum =
                (3.0 + 0.25 * other.GetPixelGrayRaw(x, y, 0)) + -1.5 * before.GetPixelGrayRaw(x, y, plane);
            const float v = image.GetPixelGrayRaw(x, y, plane);
            EXPECT_TRUE(std::isnan(sum) ? std::isnan(v) : v == static_cast<float>(sum)) << x << ',' << y;
        }
    });
}

} // namespace
} // namespace corvane
