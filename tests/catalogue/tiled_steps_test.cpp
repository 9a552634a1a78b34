#include "catalogue/tiled_steps.h"

#include "catalogue/operations.h"
#include "tests/io/files.h"
#include "tests/variants/named_frame.h"
#include "tests/variants/step_texts.h"

namespace corvane::catalogue {
namespace {

const RowSpan kRowsOfTiles[]{{0, 1}, {0, 30}, {29, 46}, {47, 48}, {90, kFrameHeight}};

std::vector<float> RowsOf(const CStlImage& image, const RowSpan& rows)
{
    std::vector<float> samples;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        const float* const first = image.GetImageAdr(0, rows.first, plane, 1);
        const auto count = static_cast<std::ptrdiff_t>(rows.end - rows.first) * image.GetWidth();
        samples.insert(samples.end(), first, first + count);
    }
    return samples;
}

/// Rows of a frame as they are read from a file of it: with the header of the whole.
io::Frame RowsFrom(const io::Frame& frame, const RowSpan& rows)
{
    io::Frame part{CStlImage(frame.image), frame.header};
    RunStep(ParseStep("crop:rect=0:" + std::to_string(rows.first) + ":" + std::to_string(kFrameWidth) + ":" +
                      std::to_string(rows.end)),
            part, {});
    part.header = frame.header;
    part.image.SetCoordinates(frame.image.GetCoordinates());
    return part;
}

/// Expects tiles to make the rows and the header that the steps make of the whole; false when they are refused.
bool ExpectTiles(const std::vector<Step>& steps, const io::Frame& frame)
{
    try {
        const TiledSteps tiled(steps, kFrameWidth, kFrameHeight, frame.image.HasOwnLevel() != 0);
        io::Frame whole = frame;
        for (const Step& step : steps) {
            RunStep(step, whole, {});
        }
        for (const RowSpan& rows : kRowsOfTiles) {
            io::Frame part = RowsFrom(frame, tiled.NeededFor(rows));
            tiled.Make(rows, part, {});
            EXPECT_TRUE(test::SameSamples(RowsOf(part.image, {0, part.image.GetHeight()}), RowsOf(whole.image, rows)))
                << rows.first;
            EXPECT_TRUE(rows.first > 0 || io::FitsHead(part.image, part.header, kFrameHeight) ==
                                              io::FitsHead(whole.image, whole.header, kFrameHeight));
        }
        return true;
    } catch (const Error&) {
        return false;
    }
}

} // namespace

class TiledStepsTest : public test::InFolder {};

TEST_F(TiledStepsTest, EveryStepThatMayBeCutMakesTheWhole)
{
    StepFiles files{{}, Write("curve.txt", "0 0.05\n0.2 0.5\n1 0.95\n"), Path("mask.fits")};
    for (const char* name : {"other", "other colour", "other undefined"}) {
        files.images.push_back(Path(std::string(name) + ".fits")); // steps that read another image are refused
    }
    int done = 0;
    for (const char* name : {"mono", "undefined colour"}) {
        const io::Frame frame = MakeNamedFrame(name);
        for (const std::string& text : StepTexts(files)) {
            SCOPED_TRACE(text + " of " + name);
            try {
                done += ExpectTiles({ParseStep(text)}, frame) ? 1 : 0;
            } catch (const Error&) { // a step that does not stand by itself
            }
        }
    }
    EXPECT_GT(done, 100);
}

TEST_F(TiledStepsTest, ChainsReachAsFarAsAllTheirSteps)
{
    const io::Frame frame = MakeNamedFrame("mono");
    EXPECT_TRUE(ExpectTiles({"median", "gaussian:sigma=2", "unsharp"}, frame));
    EXPECT_TRUE(ExpectTiles({"invert:rect=10:20:100:60", "mean", "clip:min=1000,max=1500", "maximum"}, frame));
    const TiledSteps tiled({"median", "gaussian:sigma=2", "add:value=1"}, kFrameWidth, kFrameHeight, false);
    const RowSpan needed = tiled.NeededFor({40, 41});
    const RowSpan last = TiledSteps({"gaussian:sigma=2"}, kFrameWidth, kFrameHeight, false).NeededFor({40, 41});
    EXPECT_LT(needed.first, last.first);
    EXPECT_GT(needed.end, last.end);
    EXPECT_LE(needed.end - needed.first, last.end - last.first + 8);
    EXPECT_FALSE(tiled.ReadLevels());
    EXPECT_TRUE(TiledSteps({"median", "invert"}, kFrameWidth, kFrameHeight, false).ReadLevels());
}

TEST_F(TiledStepsTest, MosaicsKeepTheirFilters)
{
    for (const char* order : {"TOP-DOWN", "BOTTOM-UP"}) {
        for (const char* pattern : {"RGGB", "GBRG"}) {
            io::Frame frame = MakeNamedFrame("mono");
            frame.header.Set("ROWORDER", order);
            frame.header.Set("BAYERPAT", pattern);
            EXPECT_TRUE(ExpectTiles({"debayer", "median"}, frame)) << order << pattern;
            EXPECT_TRUE(ExpectTiles({"add:value=5"}, frame)) << "the pattern of the whole stays in the header";
        }
    }
}

TEST_F(TiledStepsTest, RefusesInTheNameOfTheStep)
{
    const io::Frame dark = MakeNamedFrame("mono");
    io::Save(Path("dark.fits"), dark.image, dark.header);
    const std::pair<std::string, const char*> cases[] = {
        {"equalise", "statistics of all samples"},
        {"flip:direction=vertical", "samples of other places"},
        {"lucy", "the whole image"},
        {"dark:file=" + Path("dark.fits"), "when another one is read or written"},
        {"median:mask=" + Path("dark.fits"), "when another one is read or written"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            TiledSteps({"median", Step(text)}, kFrameWidth, kFrameHeight, false);
            ADD_FAILURE() << text;
        } catch (const Error& error) {
            EXPECT_EQ(error.Operation(), text.substr(0, text.find(':')));
            EXPECT_NE(error.Reason().find(reason), std::string::npos) << error.what();
        }
    }
}

TEST_F(TiledStepsTest, PartsOfAFitsFileAreThoseOfTheWhole)
{
    for (const char* name : {"mono", "undefined colour"}) {
        const io::Frame frame = MakeNamedFrame(name);
        io::Save(Path("whole.fits"), frame.image, frame.header);
        std::string bytes = io::FitsHead(RowsFrom(frame, {0, 9}).image, frame.header, kFrameHeight);
        for (int plane = 0; plane < frame.image.GetPlanes(); ++plane) {
            for (const RowSpan& rows : {RowSpan{0, 50}, RowSpan{50, kFrameHeight}}) {
                bytes += io::FitsPart(RowsFrom(frame, rows).image, plane);
            }
        }
        bytes.append((2880 - bytes.size() % 2880) % 2880, '\0');
        EXPECT_TRUE(Read("whole.fits") == bytes) << name;
    }
}

} // namespace corvane::catalogue
