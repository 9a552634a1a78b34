#include "catalogue/cosmic_rays.h"

#include <cmath>

#include "catalogue/apply.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

class CosmicRaysStep : public test::InFolder {};

CStlImage HitOnce()
{
    test::Random random(3);
    CStlImage image = test::Make(40, 30, 1, [&](int, int, int) { return 100.0 + random.Between(-5.0, 5.0); });
    image.SetPixelGrayRaw(12, 17, 4000.0F, 0);
    return image;
}

TEST_F(CosmicRaysStep, WritesAMaskOfWhatItMends)
{
    const CStlImage mended = Apply(HitOnce(), "cosmic-rays", {{"fraction", 1.0}, {"mask-file", Path("mask.png")}});
    const CStlImage mask = io::Load(Path("mask.png")).image;
    for (int i = 0; i < 40 * 30; ++i) {
        const bool isHit = i == 17 * 40 + 12;
        EXPECT_EQ(mask.GetPixelGrayRaw(i % 40, i / 40, 0), isHit ? 1.0F : 0.0F) << i;
        EXPECT_EQ(mended.GetPixelGrayRaw(i % 40, i / 40, 0) == HitOnce().GetPixelGrayRaw(i % 40, i / 40, 0), !isHit);
    }
    EXPECT_EQ(WrittenFilesOf(Step("cosmic-rays:mask-file=m.fits").arguments), std::vector<std::string>{"m.fits"});
    EXPECT_EQ(test::ErrorOf([] { CheckFiles(Step("cosmic-rays:mask-file=m.jpg").arguments); }).substr(0, 5), "m.jpg");
}

TEST_F(CosmicRaysStep, JudgesByWhatIsKnownOfTheNoise)
{
    io::Header header;
    const std::optional<SampleNoise> bySky = MeasureSampleNoise(HitOnce(), 0, header);
    EXPECT_NEAR(std::sqrt(bySky->variance), 2.9, 0.9);
    EXPECT_DOUBLE_EQ(bySky->perCount, bySky->variance / bySky->sky);
    header.Set("EGAIN", 1.6);
    header.Set("NCOMBINE", 5);
    EXPECT_DOUBLE_EQ(MeasureSampleNoise(HitOnce(), 0, header)->perCount, 1.0 / 8.0);
    const Settings noisy{{"gain", 1.0}, {"read-noise", 2000.0}};
    EXPECT_EQ(test::Samples(Apply(HitOnce(), "cosmic-rays", noisy)), test::Samples(HitOnce()));
    EXPECT_EQ(test::ErrorOf([] {
                  Apply(HitOnce(), "cosmic-rays", {{"read-noise", 1.0}});
              }),
              "cosmic-rays: read-noise = 1: must come with gain, since it counts electrons");
    EXPECT_EQ(test::ErrorOf([] { Apply(test::Make(9, 9, 1, [](int, int, int) { return 7; }), "cosmic-rays", {}); }),
              "cosmic-rays: image: shows no noise to measure; give gain and read-noise");
}

} // namespace
} // namespace corvane::catalogue
