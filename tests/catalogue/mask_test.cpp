#include "catalogue/mask.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "catalogue/apply.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

using test::Plain;

constexpr test::Size kMaskedSize{37, 23};

class MaskedStep : public test::InFolder {};

CStlImage OddImage(int planes)
{
    CStlImage image = test::RandomImage(kMaskedSize, planes, 3);
    test::SprinkleOddities(image, 4);
    return image;
}

CStlImage MaskOfSize(int width, int height)
{
    test::Random random(5);
    return test::Make(width, height, 1, [&](int, int, int) {
        const double part = random.Between(-0.3, 1.3);
        return part < -0.25 ? NAN : std::clamp(part, 0.0, 1.0);
    });
}

bool IsNumber(const Plain& image, float v)
{
    return std::isfinite(v) && !image.IsBlank(v);
}

/// The mean of two samples, or the one that counts.
float Mean(const Plain& before, const Plain& after, double part, int x, int y, int p)
{
    const float old = before.At(x, y, p);
    const float changed = after.At(x, y, p);
    const float kept = before.IsBlank(old) && !after.blankUsed ? NAN : old;
    if (part == 0.0 || part == 1.0 || !IsNumber(before, old) || !IsNumber(after, changed)) {
        return part < 0.5 ? kept : changed;
    }
    return static_cast<float>(old + part * (static_cast<double>(changed) - old));
}

TEST_F(MaskedStep, TakesAPartOfTheChangeOfEachSample)
{
    const CStlImage mask = MaskOfSize(kMaskedSize.width, kMaskedSize.height);
    const CStlImage image = OddImage(3);
    const Plain before(image);
    for (const std::string name : {"gaussian", "mtf", "scnr", "fill", "clip", "vignette"}) {
        for (const double strength : {1.0, 0.6, 0.0}) {
            SCOPED_TRACE(name + " " + std::to_string(strength));
            Settings settings = name == "fill"       ? Settings{{"with", "value"}, {"value", 7}}
                                : name == "vignette" ? Settings{{"k", 1e-3}}
                                                     : Settings{};
            const CStlImage whole = Apply(image, name, settings);
            settings.push_back({"mask", AsValue(mask)});
            const double taken = name == "scnr" ? 1.0 : strength; // its strength is its own
            if (taken != 1.0) {
                settings.push_back({"strength", strength});
            }
            const CStlImage result = Apply(image, name, settings);
            const Plain after(whole);
            EXPECT_TRUE(test::Agree(result, after.Map([&](double, int x, int y, int p) {
                const float part = mask.GetPixelGrayRaw(x, y, 0);
                return Mean(before, after, std::isnan(part) ? 0.0 : part * taken, x, y, p);
            })));
            EXPECT_EQ(result.GetLevelMax(2), whole.GetLevelMax(2));
            EXPECT_EQ(result.HasOwnLevel(), whole.HasOwnLevel());
        }
    }
}

TEST_F(MaskedStep, RefusesWhatIsNoMaskOfTheImage)
{
    const std::tuple<const char*, CStlImage, const char*> cases[] = {
        {"wide.fits", MaskOfSize(38, 23), "is 38 x 23 pixels, 1 plane; the image is 37 x 23 pixels, 3 planes"},
        {"colour.fits", test::Make(37, 23, 3, [](int, int, int) { return 0; }), "has 3 planes; it must have 1"},
        {"counts.png", test::Make(37, 23, 1, [](int x, int, int) { return 7 * x; }),
         "must hold samples from 0 to 1; it goes from 0 to 252"},
        {"low.fits", test::Make(37, 23, 1, [](int x, int, int) { return x == 3 ? -0.5 : NAN; }),
         "must hold samples from 0 to 1; it goes from -0.5 to -0.5"},
        {"endless.fits", test::Make(37, 23, 1, [](int x, int, int) { return x == 3 ? INFINITY : 0.0; }),
         "must hold samples from 0 to 1; it goes from 0 to inf"},
    };
    for (const auto& [name, image, reason] : cases) {
        io::Save(Path(name), image, {});
        io::Frame frame{test::RandomImage(kMaskedSize, 3, 1), {}};
        const Step step("invert:mask=" + Path(name));
        EXPECT_EQ(test::ErrorOf<Error>([&] { RunStep(step, frame, {}); }),
                  "invert: mask = " + Path(name) + ": " + reason);
    }
}

} // namespace
} // namespace corvane::catalogue
