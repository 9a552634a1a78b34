#include <cmath>

#include "catalogue/statistics.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "tests/io/files.h"
#include "tests/support/error_of.h"

namespace corvane::catalogue {
namespace {

constexpr int kColumns = 5;
constexpr int kLines = 3;

// Samples tell their place: 100 * plane + 10 * y + x.
io::Frame FrameOfPlaces(int planes, int width = kColumns)
{
    io::Frame frame;
    frame.image = test::Make(width, kLines, planes, [](int x, int y, int p) { return 100 * p + 10 * y + x; });
    return frame;
}

io::Frame AfterStep(const std::string& step, int planes = 1)
{
    io::Frame frame = FrameOfPlaces(planes);
    RunStep(ParseStep(step), frame, {});
    return frame;
}

using RunWithFiles = test::InFolder;

/// What a step makes of a plane.
struct Samples {
    std::string step;
    int planes;
    int plane;
    float first; // sample (0, 0)
    float last;  // sample (4, 2), 24 above the first before
};

void Expect(const Samples& c, int ownLevel)
{
    io::Frame frame = FrameOfPlaces(c.planes);
    frame.image.SetOwnLevel(ownLevel);
    RunStep(ParseStep(c.step), frame, {});
    EXPECT_FLOAT_EQ(frame.image.GetPixelGrayRaw(0, 0, c.plane), c.first) << c.step;
    EXPECT_FLOAT_EQ(frame.image.GetPixelGrayRaw(4, 2, c.plane), c.last) << c.step;
    EXPECT_EQ(frame.header.History(), std::vector<std::string>{"corvane apply " + ToText(ParseStep(c.step))});
}

TEST(Run, ChangesTheSamplesThatItShould)
{
    const Samples cases[] = {
        {"invert", 1, 0, 255.0F, 231.0F},
        {"invert:rect=4:2:5:3", 1, 0, 0.0F, 231.0F},
        {"clip:min=3,max=20", 1, 0, 3.0F, 20.0F},
        {"clip:max=210", 3, 2, 200.0F, 210.0F},
        {"to-color", 1, 2, 0.0F, 24.0F},
        {"saturate:gain=1", 3, 1, 100.0F, 124.0F},
        {"lab", 3, 0, 0.7539094F, 3.999227F},
        {"mtf:mid=0.1,low=4,high=44", 1, 0, 0.0F, 229.5F},
        {"log:k=100,high=48", 3, 0, 0.0F, 217.2458F},
        {"ghs:D=0,SP=0.5", 3, 1, 100.0F, 124.0F},
        {"equalise:low=100,high=124,per-plane=yes", 3, 1, 0.0F, 255.0F},
        {"autostretch", 1, 0, -20.344568F, 24.0F},
        {"levels:min=3,max=5", 1, 0, 0.0F, 24.0F},
        {"add:value=1.5", 1, 0, 1.5F, 25.5F},
        {"subtract:value=20", 1, 0, -20.0F, 4.0F},
        {"subtract:value=20,clip-negative=yes", 3, 0, 0.0F, 4.0F},
        {"multiply:value=-2,rect=4:2:5:3", 3, 1, 100.0F, -248.0F},
        {"divide:value=4", 3, 1, 25.0F, 31.0F},
        {"mean", 1, 0, 22.0F / 3.0F, 20.0F},
        {"mean:type=0,weight=0", 1, 0, 0.0F, 24.0F},
        {"mean-keep-edges", 1, 0, 7.175663F, 20.044479F},
        {"median", 3, 1, 110.0F, 123.0F},
        {"median:type=0", 1, 0, 1.0F, 23.0F},
        {"rank", 1, 0, 1.0F, 14.0F},
        {"rank:shape=square5,rank=20", 1, 0, 21.0F, 24.0F},
        {"minimum", 1, 0, 0.0F, 13.0F},
        {"maximum:shape=cross", 1, 0, 10.0F, 24.0F},
        {"gaussian", 1, 0, 7.769932F, 19.515659F},
        {"star-sharpen", 1, 0, 1.0F, 24.0F},
        {"star-sharpen:rank=2.5,keep-peaks=no", 1, 0, 5.5F, 18.5F},
        {"sharpen", 1, 0, -8.25F, 28.5F},
        {"sharpen:shape=cross,strength=0", 1, 0, 0.0F, 24.0F},
        {"sharpen-edges", 1, 0, -0.03081827F, 24.004988F},
        {"laplacian", 1, 0, 22.0F, 12.0F},
        {"laplacian:shape=weighted", 3, 2, 0.0F, 0.0F},
        {"unsharp:shape=square3", 1, 0, -22.0F / 3.0F, 28.0F},
        {"unsharp:shape=1,threshold=0.2", 1, 0, -22.0F / 3.0F, 24.0F},
        {"hot-pixels:threshold=0.1", 1, 0, 10.0F, 24.0F},
        {"hot-pixels:threshold=0.01,cool=no", 1, 0, 0.0F, 23.0F},
        {"smooth-background:level=1000,shape=square3", 1, 0, 22.0F / 3.0F, 20.0F},
        {"ddp", 1, 0, 0.0F, 18.26256F},
        {"ddp:offset=1e30", 1, 0, 0.0F, 24.0F},
        {"posterize:steps=1", 1, 0, 3.7134647F, 12.729703F},
        {"contour:levels=1", 1, 0, 0.0F, 12.0F},
        {"contour:levels=1,overlay=no", 1, 0, 12.0F, 24.0F},
        {"overscan:rect=0:0:2:3", 1, 0, -10.5F, 13.5F},
        {"vignette:k=-0.1,base=2", 1, 0, 0.0F, 32.0F},
        {"vignette:k=-0.05,base=2,x=0,y=0", 3, 1, 100.0F, 248.0F},
        {"debayer:pattern=RGGB,method=bilinear", 1, 1, 5.5F, 18.5F},
        {"debayer:pattern=GBRG", 1, 1, 0.0F, 24.0F},
        {"fill", 1, 0, 0.0F, 24.0F},
        {"draw-line:x1=-9,y1=0,x2=9,y2=0,thickness=0.5,value=10,units=raw", 3, 1, 55.0F, 124.0F},
        {"draw-line:x1=4,y1=0,x2=4,y2=9,value=1000,units=raw,plane=2", 3, 2, 200.0F, 1000.0F},
        {"draw-line:x1=4,y1=0,x2=4,y2=9,value=1000,units=raw,plane=1", 3, 2, 200.0F, 224.0F},
        {"draw-text:text=/,, =,x=0,y=0,value=7,units=raw,align=right", 1, 0, 0.0F, 24.0F},
    };
    for (const Samples& c : cases) {
        Expect(c, 0);
    }
    const io::Frame grey = AfterStep("to-gray", 3);
    EXPECT_EQ(grey.image.GetPlanes(), 1);
    EXPECT_NEAR(grey.image.GetPixelGrayRaw(4, 2, 0), 0.299 * 24 + 0.587 * 124 + 0.114 * 224, 1e-3);
}

TEST_F(RunWithFiles, ChangesWhatTheLevelsOfTheFrameShow)
{
    const std::string curve = Write("curve.txt", "# lifted\n0, 0.2\n\n0.5 0.7 # half way\n1 1\r\n");
    const Samples cases[] = {
        {"brightness", 1, 0, 4.0F, 34.0F},
        {"contrast:contrast=-256,brightness=1,center=9", 3, 2, 10.0F, 10.0F},
        {"balance:red=3,green=-1,blue=2.5", 3, 2, 202.5F, 226.5F},
        {"balance:red=3,green=-1,blue=2.5,rect=4:2:5:3", 1, 0, 0.0F, 27.0F},
        {"curve:points=0:0/1:1,entries=6", 3, 2, 153.0F, 204.0F},
        {"curve:points=0:0.2/0.4:0.6/0.41:0.6,entries=6", 3, 1, 114.75F, 153.0F},
        {"curve:red=0:1/1:0,entries=6", 3, 0, 255.0F, 255.0F},
        {"curve:red=0:1/1:0,entries=6", 3, 1, 51.0F, 102.0F},
        {"curve:entries=5,file=" + curve, 3, 1, 118.734375F, 118.734375F},
        {"reduce-tone:levels=5", 3, 1, 51.0F, 102.0F},
        {"false-color", 1, 1, 0.0F, 96.0F},
        {"draw-line:x1=0,y1=0,x2=0,y2=9", 1, 0, 255.0F, 24.0F},
        {"false-color:map=3,low=60,high=0", 1, 1, 255.0F, 204.0F},
    };
    for (const Samples& c : cases) { // black is 0 and white is 255
        Expect(c, 1);
    }
}

TEST(Run, SaturatesEachHueByItsGain)
{
    // Red 0, green 100 and blue 200 have an a and a b below 0.
    for (const auto& [gains, changes] : {std::pair{"red=0,yellow=0", false}, {"green=0", true}, {"blue=0", true}}) {
        io::Frame frame = FrameOfPlaces(3);
        frame.image.SetOwnLevel(1);
        catalogue::RunStep(ParseStep(std::string("saturate:gain=1,") + gains), frame, {});
        EXPECT_EQ(std::fabs(frame.image.GetPixelGrayRaw(0, 0, 1) - 100.0) > 1.0, changes) << gains;
    }
}

TEST(Run, LeavesUndefinedWhatWasBlank)
{
    for (const char* const step : {"vignette:k=0.1", "lab"}) {
        io::Frame frame = FrameOfPlaces(3);
        frame.image.SetBlankUsed(1);
        frame.image.SetBlank(124); // the last sample of plane 1
        catalogue::RunStep(ParseStep(step), frame, {});
        EXPECT_TRUE(std::isnan(frame.image.GetPixelGrayRaw(4, 2, 1))) << step;
        EXPECT_FALSE(std::isnan(frame.image.GetPixelGrayRaw(3, 2, 1))) << step;
    }
}

TEST(Run, FillsWhatIsUndefined)
{
    const std::pair<const char*, float> cases[] = {{"fill", (123.0F + 114.0F + 113.0F / 2.0F) / 2.5F},
                                                   {"fill:with=sky", 112.0F},
                                                   {"fill:with=value,value=-3", -3.0F}};
    for (const auto& [step, filled] : cases) {
        io::Frame frame = FrameOfPlaces(3);
        frame.image.SetBlankUsed(1);
        frame.image.SetBlank(124); // the last sample of plane 1, in the corner
        frame.image.SetPixelGrayRaw(0, 1, INFINITY, 0);
        catalogue::RunStep(ParseStep(step), frame, {});
        EXPECT_NEAR(frame.image.GetPixelGrayRaw(4, 2, 1), filled, 1e-4) << step;
        EXPECT_TRUE(std::isfinite(frame.image.GetPixelGrayRaw(0, 1, 0))) << step;
        EXPECT_EQ(frame.image.GetPixelGrayRaw(3, 2, 1), 123.0F) << step;
    }
}

TEST(Run, SetsLevelsOfThePlanesThatItShould)
{
    const CStlImage every = AfterStep("levels:min=-1,max=9", 3).image;
    const CStlImage one = AfterStep("levels:min=-1,max=9,plane=1", 3).image;
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(every.GetLevelMin(plane), -1.0);
        EXPECT_EQ(every.GetLevelRange(plane), 10.0);
        EXPECT_EQ(one.GetLevelMax(plane), plane == 1 ? 9.0 : 255.0);
    }
    EXPECT_TRUE(every.HasOwnLevel());
    // The samples 0..4, 10..14, 20..24: mean 12, variance 68 + 2/3; 100 sigma are cut to the data.
    const CStlImage automatic = AfterStep("auto-levels:low=0.5,high=100").image;
    EXPECT_NEAR(automatic.GetLevelMin(0), 12.0 - 0.5 * std::sqrt(206.0 / 3.0), 1e-9);
    EXPECT_EQ(automatic.GetLevelMax(0), 24.0);
}

TEST_F(RunWithFiles, CalibratesWithFramesFromFiles)
{
    io::Frame one = FrameOfPlaces(1);
    one.image.SetLevel(0, 2.0, 4.0);
    one.image.CutOutOfLevel(); // 2, 2, 2, 3, 4, then all 4: mean 53 / 15
    io::Save(Path("calibration,1.fits"), one.image, {});
    const std::string argument = "file=" + Path("calibration,,1.fits");
    for (const int planes : {1, 3}) {
        const CStlImage dark = AfterStep("dark:" + argument, planes).image;
        EXPECT_FLOAT_EQ(dark.GetPixelGrayRaw(4, 2, planes - 1), static_cast<float>(100 * planes - 80));
        EXPECT_FLOAT_EQ(dark.GetPixelGrayRaw(1, 0, 0), 0.0F);
        const CStlImage flat = AfterStep("flat:" + argument, planes).image;
        EXPECT_FLOAT_EQ(flat.GetPixelGrayRaw(3, 0, 0), static_cast<float>(53.0 / 15.0));
    }
}

TEST_F(RunWithFiles, BringsCalibrationFramesIntoTheOrderOfRowsOfTheImage)
{
    io::Frame calibration = FrameOfPlaces(1); // the image upside down, one column to the left
    calibration.image =
        test::Make(kColumns, kLines, 1, [](int x, int y, int) { return 10 * (kLines - 1 - y) + x + 1; });
    for (const char* const order : {"TOP-DOWN", "BOTTOM-UP", ""}) {
        calibration.header.Set("ROWORDER", order);
        io::Save(Path("calibration.fits"), calibration.image, calibration.header);
        for (const char* const step : {"dark", "flat"}) {
            io::Frame frame = FrameOfPlaces(1);
            frame.header.Set("ROWORDER", "BOTTOM-UP");
            frame.image.SetOrgFileName("light.fits");
            std::string notes;
            catalogue::RunStep(ParseStep(step + (":file=" + Path("calibration.fits"))), frame,
                               {.diagnostics = [&](const Diagnostic& told) { notes += std::get<Note>(told).text; }});
            const bool isTurned = order == std::string("TOP-DOWN");
            const float divided = 24.0F * 13.0F / (isTurned ? 25.0F : 5.0F);
            EXPECT_FLOAT_EQ(frame.image.GetPixelGrayRaw(4, 2, 0), step[0] == 'f' ? divided : isTurned ? 0.0F : 19.0F);
            EXPECT_EQ(notes, isTurned ? Path("calibration.fits") + ": its rows are TOP-DOWN, those of light.fits are "
                                                                   "BOTTOM-UP; it was turned upside down"
                                      : "");
        }
    }
}

TEST_F(RunWithFiles, LeavesUndefinedSamplesOutOfTheFlat)
{
    for (const auto& [hole, bits] : {std::pair{NAN, -32}, {INFINITY, -32}, {-INFINITY, -32}, {NAN, 16}}) {
        io::Frame flat = FrameOfPlaces(3);
        flat.image.SetPixelGrayRaw(0, 0, 12.0F, 0); // no sample is 0, which integers keep for what is undefined
        flat.image.SetPixelGrayRaw(2, 1, hole, 0);
        flat.image.SetPixelGrayRaw(4, 2, hole, 2);
        io::Save(Path("flat.fits"), flat.image, {}, {bits});
        io::Frame frame = FrameOfPlaces(3);
        std::string notes;
        catalogue::RunStep(ParseStep("flat:file=" + Path("flat.fits")), frame,
                           {.diagnostics = [&](const Diagnostic& told) { notes += std::get<Note>(told).text; }});
        const std::vector<float> samples = test::Samples(frame.image);
        for (std::size_t i = 1; i < samples.size(); ++i) {
            const float v = samples[i];
            EXPECT_TRUE(i == 7 || i == 44 ? std::isnan(v) : std::fabs(v - 180.0 / 14.0) < 1e-5)
                << hole << i << ' ' << v;
        }
        EXPECT_EQ(notes, Path("flat.fits") + ": undefined samples: 2; the result is undefined there");
    }
}

// L rises from its foot to the top of the screen: towards the last row, unless the header says otherwise.
TEST(Run, WritesTextToBeReadOnTheScreen)
{
    for (const bool isTopDown : {false, true}) {
        io::Frame frame = FrameOfPlaces(1, 20);
        if (isTopDown) {
            frame.header.Set("ROWORDER", "TOP-DOWN");
        }
        catalogue::RunStep(ParseStep("draw-text:text=L,x=2,y=1,height=2,value=999,units=raw,thickness=1"), frame, {});
        EXPECT_EQ(frame.image.GetPixelGrayRaw(2, 0, 0) > 500.0F, isTopDown);
        EXPECT_EQ(frame.image.GetPixelGrayRaw(2, 2, 0) > 500.0F, !isTopDown);
    }
}

TEST(Run, DebayersByTheHeaderAndTakesItsCardsAway)
{
    io::Frame frame = FrameOfPlaces(1);
    frame.header.Set("BAYERPAT", "RGGB");
    frame.header.Set("XBAYROFF", 1); // the first pixel is green, with red beside it and blue below
    catalogue::RunStep(ParseStep("debayer:method=bilinear"), frame, {});
    EXPECT_EQ(frame.image.GetPixelGrayRaw(0, 0, 0), 1.0F);
    EXPECT_EQ(frame.image.GetPixelGrayRaw(0, 0, 2), 10.0F);
    EXPECT_FALSE(frame.header.Has("BAYERPAT") || frame.header.Has("XBAYROFF"));
    frame = FrameOfPlaces(1);
    frame.header.Set("BAYERPAT", "XTRANS");
    EXPECT_THROW(catalogue::RunStep(ParseStep("debayer"), frame, {}), Error);
}

TEST_F(RunWithFiles, RefusesWhatDoesNotFitTheFrame)
{
    const std::string wide = Path("wide.fits");
    const std::string colour = Path("colour.fits");
    io::Save(wide, FrameOfPlaces(1, 7).image, {});
    io::Save(colour, FrameOfPlaces(3).image, {});
    const std::string nothing = Path("nothing.fits");
    io::Save(nothing, test::Make(5, 3, 1, [](int, int, int) { return NAN; }), {});
    const std::tuple<std::string, int, std::string> cases[] = {
        {"invert:rect=0:0:6:3", 1, "invert: rect = 0:0:6:3: must lie within the image, 0:0:5:3"},
        {"auto-levels:rect=0:0:5:4", 1, "auto-levels: rect = 0:0:5:4: must lie within the image, 0:0:5:3"},
        {"levels:min=0,max=1,plane=1", 1, "levels: plane = 1: must be 0, since the image has 1 plane"},
        {"draw-text:text=a,x=0,y=0,plane=2", 1, "draw-text: plane = 2: must be 0, since the image has 1 plane"},
        {"curve:blue=0:0/1:1", 1, "curve: image: must have 3 planes for red, green and blue; it has 1"},
        {"false-color:low=7,high=7", 1, "false-color: high = 7: must differ from low"},
        {"false-color", 3, "false-color: image: must have 1 plane; it has 3"},
        {"clip:min=255", 1, "clip: max = 255: must be above min, 255"},
        {"to-color", 3, "to-color: image: must have 1 plane; it has 3"},
        {"bin:x=6", 1, "bin: image: has only 5 x 3 pixels; a block of 6 x 6 needs more"},
        {"debayer", 1,
         "debayer: pattern = auto: the header names no pattern (BAYERPAT); give pattern=RGGB, GRBG, GBRG or BGGR if "
         "this is a mosaic"},
        {"debayer:pattern=RGGB", 3, "debayer: image: must have 1 plane; it has 3"},
        {"resize:factor=0.001", 1, "resize: image: would become 0 x 0 pixels; at least 1 x 1 are needed"},
        {"resize:width=1000000,height=1000000", 1,
         "resize: image: would become 1000000 x 1000000 pixels; at most 1000000 either way and 1 TiB in all are "
         "allowed"},
        {"overscan:rect=0:0:1:1,clip=yes", 1,
         "overscan: clip = yes: all samples of the strip are equal, and clipping would leave none; leave it out"},
        {"vignette:k=-1", 1, "vignette: k = -1: must be above -0.2, or no brightness is left 2 pixels from the centre"},
        {"star-mask", 1, "star-mask: image: has no star of that kind; lower sigmas, or ask for other sizes"},
        {"fill:value=1", 1, "fill: value = 1: belongs to with = value, which needs it"},
        {"dark:file=" + wide, 1,
         "dark: file = " + wide + ": is 7 x 3 pixels, 1 plane; the image is 5 x 3 pixels, 1 plane"},
        {"flat:file=" + colour, 1,
         "flat: file = " + colour + ": is 5 x 3 pixels, 3 planes; the image is 5 x 3 pixels, 1 plane"},
        {"flat:file=" + nothing, 1, "flat: file = " + nothing + ": has no sample that is defined"},
    };
    for (const auto& [step, planes, error] : cases) {
        EXPECT_EQ(test::ErrorOf<Error>([&] { AfterStep(step, planes); }), error);
    }
}

TEST_F(RunWithFiles, StatisticsLeaveOutBlanksAndWhatIsNotFinite)
{
    io::Frame frame = FrameOfPlaces(3);
    frame.image.SetPixelGrayRaw(0, 0, NAN, 0);
    frame.image.SetPixelGrayRaw(1, 0, INFINITY, 0);
    io::Save(Path("statistics.fits"), frame.image, {});
    const std::vector<PlaneStatistics> planes = ReadStatistics(*io::OpenFrame(Path("statistics.fits")));
    ASSERT_EQ(planes.size(), 3U);
    EXPECT_EQ(planes[0].min, 2.0);
    EXPECT_EQ(planes[0].infinite, 2);
    EXPECT_DOUBLE_EQ(planes[0].mean, 179.0 / 13.0);
    EXPECT_EQ(planes[2].max, 224.0);
    EXPECT_DOUBLE_EQ(planes[2].mean, 212.0);
}

} // namespace
} // namespace corvane::catalogue
