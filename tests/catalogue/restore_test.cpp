#include <cmath>
#include <memory>
#include <utility>

#include "catalogue/apply.h"
#include "catalogue/restoration.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "corvane/platform/application.h"
#include "corvane/restore/lucy.h"
#include "tests/restore/field.h"
#include "tests/support/error_of.h"
#include "tests/support/storage.h"

namespace corvane::catalogue {
namespace {

using namespace corvane::test;

/// A sky of 100 with a star of sigma 1.5 at (40, 50), others about it, and noise.
io::Frame FrameWithStar(int planes = 1)
{
    Random random(6);
    Field field = StarField(96, 9);
    field.At(40, 50) += 60000.0;
    field = Blurred(field, GaussTaps(1.5));
    io::Frame frame;
    CStlImage image(-32, 96, 96, planes, 1.0, 0.0, 1);
    for (int plane = 0; plane < planes; ++plane) {
        Write(Exposed(field, 1.6, 6.0, random), image, plane);
        image.SetLevel(plane, 90.0 + plane, 300.0);
    }
    frame.image.Swap(&image);
    return frame;
}

CStlImage Restored(const std::string& step, io::Frame frame = FrameWithStar())
{
    RunStep(ParseStep(step), frame, {});
    return frame.image;
}

/// Where the star lies, by its centroid along one axis.
double StarPlace(const CStlImage& image, int axis)
{
    CRect box(36, 46, 45, 55);
    double at[2] = {};
    image.GetCenterOfGravity(at[0], at[1], &box);
    return at[axis];
}

std::string ErrorOf(const std::string& step, const io::Frame& frame = FrameWithStar())
{
    return test::ErrorOf<Error>([&] { Restored(step, frame); });
}

TEST(Restoration, LucyTakesItsNumbersFromTheStepOrTheHeader)
{
    io::Frame frame = FrameWithStar(3);
    CImgLucy expected(frame.image);
    CRect rect(10, 20, 80, 90);
    ASSERT_EQ(expected.Do(1.5, 1.6, 6.0, 4, &rect, 0), 1);
    const std::string rest = ",iterations=4,rect=10:20:80:90";
    EXPECT_EQ(Samples(Restored("lucy:sigma=1.5,gain=1.6,read-noise=6" + rest, frame)), Samples(expected));
    EXPECT_NE(Samples(Restored("lucy:sigma=1.5" + rest, frame)), Samples(expected));
    frame.header.Set("EGAIN", 0.4);
    frame.header.Set("RDNOISE", 3.0);
    frame.header.Set("NCOMBINE", 4);
    EXPECT_EQ(Samples(Restored("lucy:sigma=1.5" + rest, frame)), Samples(expected));
    EXPECT_NEAR(Restored("lucy:fwhm=3.5322" + rest, frame).GetPixelGrayRaw(40, 50, 1),
                expected.GetPixelGrayRaw(40, 50, 1), 2.0);
}

TEST(Restoration, MeasuresTheStarsThatCount)
{
    io::Frame frame = FrameWithStar();
    EXPECT_NEAR(MeasureNoise(frame.image), std::sqrt(100.0 / 1.6 + 36.0 / 1.6 / 1.6), 1.5);
    for (int i = 0; i < 96; ++i) { // a trail, hot pixels, and a column that is saturated
        for (int d = -1; d <= 1; ++d) {
            frame.image.SetPixelGrayRaw(i, (i + d + 96) % 96, 2000.0F + static_cast<float>(i * 37 % 11), 0);
        }
        frame.image.SetPixelGrayRaw(i * 31 % 96, i * 57 % 96, 3000.0F, 0);
        frame.image.SetPixelGrayRaw(93, i, 9000.0F, 0);
    }
    EXPECT_NEAR(MeasureStarSigma(frame.image), 1.6, 0.15); // a pixel adds to the blur
    EXPECT_EQ(Samples(Restored("lucy")), Samples(Restored("lucy:fwhm=auto")));
}

TEST(Restoration, WienerKeepsFluxLevelsAndPlaces)
{
    const io::Frame before = FrameWithStar(3);
    for (const std::string rect : {"", ",rect=8:8:90:93"}) {
        const CStlImage after = Restored("wiener:sigma=1.5" + rect, before);
        EXPECT_NEAR(after.GetAvrGrayRaw(2) / before.image.GetAvrGrayRaw(2), 1.0, rect.empty() ? 5e-3 : 0.02) << rect;
        EXPECT_EQ(after.GetLevelMin(2), 92.0);
        EXPECT_EQ(after.GetLevelMax(2), 300.0);
        EXPECT_GT(after.GetPixelGrayRaw(40, 50, 2), 1.5F * before.image.GetPixelGrayRaw(40, 50, 2));
        EXPECT_NEAR(StarPlace(after, 0), 40.0, 0.05);
        EXPECT_EQ(after.GetPixelGrayRaw(7, 50, 1) == before.image.GetPixelGrayRaw(7, 50, 1), !rect.empty());
    }
}

TEST(Restoration, TakesTheFunctionOfAFileOrOfItsStars)
{
    const io::Frame frame = FrameWithStar();
    io::Frame psf;
    const std::vector<float> samples = GaussPsf(1.5, 31);
    psf.image = Make(31, 31, 1, [&](int x, int y, int) { return 7.0 * samples[y * 31 + x]; }); // of any sum
    for (const std::string name : {"lucy", "maxent", "wiener"}) {
        SCOPED_TRACE(name);
        const float before = frame.image.GetPixelGrayRaw(40, 50, 0);
        const bool isIterative = name != "wiener";
        Settings settings{{"psf", std::make_shared<const io::Frame>(psf)}};
        if (isIterative) {
            settings.push_back({"iterations", 10});
        }
        const CStlImage after = Apply(frame.image, name, settings);
        const CStlImage ofStars = Restored(name + (isIterative ? ":psf=auto,iterations=10" : ":psf=auto"), frame);
        for (const CStlImage* image : {&after, &ofStars}) {
            EXPECT_GT(image->GetPixelGrayRaw(40, 50, 0), 1.3F * before);
            EXPECT_NEAR(StarPlace(*image, 0), 40.0, 0.05);
            EXPECT_NEAR(StarPlace(*image, 1), 50.0, 0.05);
            EXPECT_NEAR(image->GetAvrGrayRaw(0) / frame.image.GetAvrGrayRaw(0), 1.0, 0.02);
        }
        EXPECT_NE(Samples(after), Samples(ofStars));
    }
    EXPECT_NE(Samples(Restored("lucy:fwhm=3.5,damping=0.01")), Samples(Restored("lucy:fwhm=3.5")));
    EXPECT_NE(Samples(Restored("lucy:fwhm=3.5,protect=yes")), Samples(Restored("lucy:fwhm=3.5")));
}

// By the plateau of a plane, or where a person says; in the other planes, too.
TEST(Restoration, LeavesSaturatedCoresAsTheyAre)
{
    io::Frame frame = FrameWithStar(3);
    for (int i = 0; i < 96 * 96; ++i) {
        const float cut = std::min(frame.image.GetPixelGrayRaw(i % 96, i / 96, 1), 3000.0F);
        frame.image.SetPixelGrayRaw(i % 96, i / 96, cut, 1);
    }
    for (const auto& [step, isKept] : {std::pair("lucy:sigma=1.5,iterations=5", false),
                                       {"lucy:sigma=1.5,iterations=5,protect=yes", true},
                                       {"lucy:sigma=1.5,iterations=5,saturation=2990", true}}) {
        const CStlImage after = Restored(step, frame);
        for (int plane = 0; plane < 3; ++plane) {
            EXPECT_EQ(after.GetPixelGrayRaw(40, 50, plane) == frame.image.GetPixelGrayRaw(40, 50, plane), isKept);
            EXPECT_NE(after.GetPixelGrayRaw(44, 50, plane), frame.image.GetPixelGrayRaw(44, 50, plane));
        }
    }
}

TEST(Restoration, TurnsAFunctionOfTheOtherOrderOfRows)
{
    io::Frame frame = FrameWithStar();
    frame.header.Set("ROWORDER", "TOP-DOWN");
    io::Frame psf;
    psf.image = Make(5, 5, 1, [](int x, int y, int) { return x == 2 ? 1.0 + y * y : 0.0; });
    io::Frame turned = psf;
    turned.image = Make(5, 5, 1, [](int x, int y, int) { return x == 2 ? 1.0 + (4 - y) * (4 - y) : 0.0; });
    psf.header.Set("ROWORDER", "TOP-DOWN");
    turned.header.Set("ROWORDER", "BOTTOM-UP");
    const auto restored = [&](const io::Frame& function) {
        return Samples(
            Apply(frame, "lucy", {{"psf", std::make_shared<const io::Frame>(function)}, {"iterations", 3}}).image);
    };
    EXPECT_EQ(restored(psf), restored(turned));
    turned.header.Set("ROWORDER", "TOP-DOWN");
    EXPECT_NE(restored(psf), restored(turned));
}

TEST(Restoration, RefusesWhatIsNoFunction)
{
    const auto errorOf = [](const CStlImage& psf) {
        return test::ErrorOf<Error>([&] { Apply(FrameWithStar().image, "lucy", {{"psf", AsValue(psf)}}); });
    };
    const auto ofValue = [](int width, int planes, double value) {
        return Make(width, 5, planes, [=](int x, int y, int) { return x == 2 && y == 2 ? value : -0.1; });
    };
    EXPECT_EQ(errorOf(ofValue(97, 1, 5.0)),
              "lucy: psf: must not be larger than the image, 96 x 96 pixels; it is 97 x 5");
    EXPECT_EQ(errorOf(ofValue(5, 3, 5.0)), "lucy: psf: must have 1 plane; it has 3");
    EXPECT_EQ(errorOf(ofValue(5, 1, NAN)), "lucy: psf: has an undefined sample at column 2, row 2");
    EXPECT_EQ(errorOf(ofValue(5, 1, 0.5)).find("lucy: psf: must have samples whose sum is above 0; it is -1.9"), 0U);
    EXPECT_EQ(errorOf(ofValue(5, 1, 9.0)), "no error");
    EXPECT_EQ(ErrorOf("lucy:sigma=2,psf=auto"), "lucy: psf = auto: sigma says the same; give one of them");
    EXPECT_EQ(ErrorOf("wiener:fwhm=2,psf=auto"), "wiener: psf = auto: fwhm says the same; give one of them");
    EXPECT_EQ(ErrorOf("lucy:psf=none.fits"), "none.fits: no such file");
    io::Frame blank = FrameWithStar();
    Write(Field(96, 96, 7.0), blank.image);
    EXPECT_EQ(ErrorOf("lucy:psf=auto", blank),
              "lucy: psf = auto: there is no star to measure; give psf, sigma or fwhm");
    EXPECT_EQ(test::ErrorOf<Error>([&] {
                  Inputs inputs;
                  inputs["image"].push_back(blank);
                  Apply("psf", std::move(inputs), {});
              }),
              "psf: image: has no star to measure");
}

TEST(Restoration, MaxentKeepsStarsWhereTheCoordinatesHaveThem)
{
    io::Frame before = FrameWithStar();
    double is = 0.0;
    EXPECT_EQ(Restored("maxent:sigma=1.5,iterations=3", before).GetCRPix(0, &is), 0);
    before.image.SetCRPix(0, 31.0);
    before.image.SetCRPix(1, 31.0);
    for (const char* kept : {"", ",resample=yes", ",rect=8:8:90:93", ",strength=0.8"}) {
        const CStlImage after = Restored(std::string("maxent:sigma=1.5,iterations=30") + kept, before);
        for (int axis = 0; axis < 2; ++axis) {
            after.GetCRPix(axis, &is);
            EXPECT_NEAR(is, *kept == '\0' ? 30.5 : 31.0, 1e-12) << kept;
            EXPECT_NEAR(StarPlace(after, axis) - is, StarPlace(before.image, axis) - 31.0, 0.04) << kept;
        }
        EXPECT_GT(after.GetPixelGrayRaw(40, 50, 0), 1.2F * before.image.GetPixelGrayRaw(40, 50, 0));
    }
}

TEST(Restoration, RefusesWhatItWouldSpoil)
{
    io::Frame odd = FrameWithStar(3);
    odd.image.SetPixelGrayRaw(12, 7, INFINITY, 1);
    odd.image.SetPixelGrayRaw(0, 8, NAN, 1);
    io::Frame blank = FrameWithStar();
    Write(Field(96, 96, 7.0), blank.image);
    EXPECT_EQ(ErrorOf("lucy", blank), "lucy: fwhm = auto: there is no star to measure; give sigma or fwhm");
    EXPECT_EQ(ErrorOf("maxent:sigma=2", blank), "maxent: image: shows no noise to measure; give noise");
    EXPECT_TRUE(ErrorOf("maxent:sigma=2,noise=1e-30", blank)
                    .starts_with("maxent: image: gives a chi-square that is not a number"));
    Write(Field(96, 96, 1e38), odd.image);
    EXPECT_TRUE(
        ErrorOf("lucy:sigma=2,rect=0:0:9:7", odd).starts_with("lucy: image: gives a chi-square that is not a number"));
    Write(Field(96, 96, 100.0), odd.image);
    blank.image.SetBlank(7);
    blank.image.SetBlankUsed(1);
    for (const std::string step : {"lucy", "maxent", "wiener"}) {
        const std::string fault = step + ": image: has an undefined sample, which would spoil all others, at column ";
        EXPECT_TRUE(ErrorOf(step, odd).starts_with(fault + "12, row 7, plane 1"));
        EXPECT_EQ(ErrorOf(step + ":sigma=1.5,rect=13:0:96:96", odd), "no error");
        EXPECT_TRUE(ErrorOf(step, blank).starts_with(fault + "0, row 0, plane 0"));
        const TightMemory memory(1 << 20);
        EXPECT_TRUE(ErrorOf(step).starts_with( // a filter takes less than an engine
            step == "wiener" ? "no error" : step + ": image: needs 0.00127 GB of memory for a region of 96 x 96"));
    }
}

TEST(Restoration, LeavesTheFrameAsItWasWhenItIsCancelled)
{
    const CStlImage image = RandomImage({520, 510}, 3, 2); // enough for several threads
    for (const char* step :
         {"lucy:sigma=2,iterations=1", "lucy:sigma=2,iterations=1,protect=yes,damping=0.01",
          "maxent:sigma=2,noise=9,iterations=1", "wiener:sigma=2", "wiener:sigma=2,rect=4:0:520:510"}) {
        bool isDone = false;
        for (int last = 1; !isDone; last *= 4) {
            SCOPED_TRACE(testing::Message() << step << ", poll " << last);
            io::Frame frame;
            frame.image = image;
            int polls = 0;
            try {
                RunStep(ParseStep(step), frame, {.cancelled = [&] { return ++polls == last; }, .threads = 3});
                isDone = true;
            } catch (const Cancelled&) {
            }
            EXPECT_EQ(isDone, polls < last);
            EXPECT_NE(isDone, Samples(frame.image) == Samples(image));
            EXPECT_EQ(frame.image.GetLevelMax(2), image.GetLevelMax(2));
        }
    }
    EXPECT_THROW(MeasureStarSigma(image, {.cancelled = [] { return true; }}), Cancelled);
}

TEST(Restoration, TellsItsIterationsAndStopsWithoutAMessageBox)
{
    bool isTold = false;
    platform::SetMessageBoxHandler([&](const char*, UINT) { return (isTold = true) ? 1 : 0; });
    for (const std::string step :
         {"lucy:sigma=1.5,gain=1e6,iterations=3", "maxent:sigma=1.5,noise=1e-3,iterations=3"}) {
        RestoreState last;
        bool isCancelled = false;
        const corvane::Run run{.cancelled = [&] { return isCancelled; },
                               .diagnostics =
                                   [&](const Diagnostic& told) {
                                       if (const auto* event = std::get_if<RestoreEvent>(&told)) {
                                           last = StateOf(*event);
                                       }
                                   }};
        io::Frame frame = FrameWithStar();
        io::Frame other = frame;
        RunStep(ParseStep(step), frame, run);
        EXPECT_EQ(last.iteration, 3) << step;
        EXPECT_EQ(last.limit, 3) << step;
        EXPECT_GT(last.chiSquare, 1.0) << step;
        isCancelled = true;
        EXPECT_THROW(RunStep(ParseStep(step), other, run), Cancelled) << step;
        EXPECT_TRUE(other.header.History().empty());
    }
    EXPECT_FALSE(isTold);
    platform::SetMessageBoxHandler({});
}

} // namespace
} // namespace corvane::catalogue
