#include "catalogue/background.h"

#include <cmath>

#include "catalogue/apply.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

class BackgroundStep : public test::InFolder {};

/// A sky that rises from left to right, steeper in each plane, with samples that are blank or not a number.
CStlImage Sloping()
{
    CStlImage image = test::Make(97, 61, 3, [](int x, int y, int p) { return 500.0 + (p + 1) * x - 0.5 * y; });
    image.SetBlank(-7);
    image.SetBlankUsed(1);
    image.SetPixelGrayRaw(40, 30, -7.0F, 0);
    image.SetPixelGrayRaw(41, 30, NAN, 1);
    return image;
}

TEST_F(BackgroundStep, BringsTheMedianBackAndWritesTheModel)
{
    for (const std::string mode : {"subtract", "divide"}) {
        SCOPED_TRACE(mode);
        const CStlImage image = Sloping();
        const CStlImage flat = Apply(image, "background", {{"mode", mode}, {"model-file", Path("sky.fits")}});
        const CStlImage sky = io::Load(Path("sky.fits")).image;
        for (int i = 0; i < 97 * 61 * 3; ++i) {
            const int x = i % 97;
            const int y = i / 97 % 61;
            const int p = i / 97 / 61;
            const double median = 500.0 + (p + 1) * 48 - 15.0;
            const float before = image.GetPixelGrayRaw(x, y, p);
            if (std::isnan(before) || before == -7.0F) {
                EXPECT_TRUE(test::SameSamples({flat.GetPixelGrayRaw(x, y, p)}, {before}));
            } else {
                EXPECT_NEAR(flat.GetPixelGrayRaw(x, y, p), median, 1.0) << x << ", " << y << ", " << p;
            }
            EXPECT_NEAR(sky.GetPixelGrayRaw(x, y, p), 500.0 + (p + 1) * x - 0.5 * y, 1e-3);
        }
    }
}

TEST_F(BackgroundStep, RefusesWhatHasNoSky)
{
    const auto refused = [](double value, const Settings& settings) {
        return test::ErrorOf(
            [&] { Apply(test::Make(9, 9, 1, [=](int x, int, int) { return value + x; }), "background", settings); });
    };
    EXPECT_EQ(refused(NAN, {}), "background: image: has a plane without any sky to measure");
    EXPECT_EQ(refused(-100.0, {{"mode", "divide"}}).substr(0, 55),
              "background: mode = divide: must be subtract, since the ");
}

} // namespace
} // namespace corvane::catalogue
