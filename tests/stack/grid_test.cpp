#include <algorithm>
#include <cmath>
#include <filesystem>

#include "corvane/geometry/flip.h"
#include "stack/follow.h"
#include "stack/registered.h"
#include "tests/stack/test_night.h"
#include "tests/stars/star_at.h"
#include "tests/support/images.h"

namespace corvane::stack {

/// Lights of one field, each shifted by whole pixels, with an object that moves among the stars.
class GridTest : public Night {
protected:
    static constexpr int kWidth = 320;
    static constexpr int kHeight = 260;
    static constexpr PixelPlace kShifts[] = {{0, 0}, {12, -7}, {-9, 16}, {3, 3}};

    GridTest()
    {
        test::Random random(11);
        for (int i = 0; i < 90; ++i) {
            field_.push_back({random.Between(-40, 380), random.Between(-40, 320), 400.0 * (1 + i % 9)});
        }
        for (int i = 0; i < 4; ++i) {
            options_.lights.push_back(SaveLight(i));
        }
        options_.referenceFile = options_.lights[0];
    }

    /// Where the object is on the reference, light after light, five minutes apart.
    static Position ObjectAt(int i) { return {150.3 + 6.0 * i, 130.6 - 15.0 * i}; }
    FollowedPlace PlaceIn(int i, const std::string& light) const
    {
        return {ObjectAt(i).x - kShifts[i].x, ObjectAt(i).y - kShifts[i].y, light};
    }

    std::string SaveLight(int i)
    {
        std::vector<Place> places = field_;
        places.push_back({ObjectAt(i).x, ObjectAt(i).y, 6000.0});
        const CStlImage sky = Sky(kWidth, kHeight, 1, places, kShifts[i].x, kShifts[i].y);
        return Save(std::to_string(i) + ".fits", sky, 60.0, [=](io::Header& header) {
            header.Set("CRPIX1", 100.0);
            header.Set("CRPIX2", 50.0);
            header.Set("CRVAL1", 10.0 + i);
            header.Set(i == 3 ? "NODATE" : "DATE-OBS", "2024-07-30T22:0" + std::to_string(5 * i % 10) + ":00");
            header.Set(i == 2 ? "DATE-AVG" : "NOAVG", "2024-07-30T22:10:30");
        });
    }

    /// Saves a light or another frame again: with that order of rows, and turned so that it shows the same.
    void SaveInOrder(const std::string& path, const std::string& order, bool isTurned)
    {
        io::Frame frame = io::Load(path);
        CImgFlip turned(frame.image);
        turned.Do(0, &frame.image, 0);
        frame.header.Set("ROWORDER", order);
        io::Save(path, isTurned ? turned : frame.image, frame.header, {-32});
    }

    /// How many of the field's bright stars an image shows where they are, when its first pixel lies at (left, top).
    int StarsIn(const CStlImage& image, double left, double top) const
    {
        const stars::StarField found = stars::FindFieldStars(image, 0);
        return static_cast<int>(std::count_if(field_.begin(), field_.end(), [&](const Place& place) {
            const stars::FieldStar* const star = stars::StarAt(found, place.x - left, place.y - top);
            return place.peak > 1000.0 && star && star->IsUsable() &&
                   std::hypot(star->x + left - place.x, star->y + top - place.y) < 0.15;
        }));
    }

    std::vector<Place> field_;
    Options options_;
};

TEST_F(GridTest, CanvasShowsWhatWasAskedForAndCoordinatesFollow)
{
    const struct {
        Canvas canvas;
        int left, top, right, bottom;
    } cases[] = {
        {Canvas::kReference, 0, 0, 320, 260}, {Canvas::kUnion, -9, -7, 332, 276}, {Canvas::kCommon, 12, 16, 311, 253}};
    for (const auto& [canvas, left, top, right, bottom] : cases) {
        options_.canvas = canvas;
        options_.wantsCoverage = true;
        const Result result = stack::Stack(options_);
        double x = 0.0;
        double y = 0.0;
        result.image.GetCRPix(0, &x);
        result.image.GetCRPix(1, &y);
        EXPECT_NEAR(x, 100.0 - left, 1.0); // where stars are is known to parts of a pixel
        EXPECT_NEAR(y, 50.0 - top, 1.0);
        EXPECT_NEAR(result.image.GetWidth(), right - left, 2);
        EXPECT_NEAR(result.image.GetHeight(), bottom - top, 2);
        EXPECT_GT(StarsIn(result.image, 100.0 - x, 50.0 - y), 20);
        if (canvas == Canvas::kCommon) {
            EXPECT_EQ(MeasureFrame(result.coverage, 0).background, 4.0);
            EXPECT_EQ(result.coverage.GetPixelGrayRaw(0, 0, 0), 4.0);
            EXPECT_PRED2(Holds, result.header.History().at(0), " --canvas common ");
        }
    }
    options_.lights = {options_.lights[0]};
    EXPECT_EQ(stack::Stack(options_).image.GetWidth(), kWidth);
}

TEST_F(GridTest, FramesFromOutsideGiveTheirGridAndLightsAreWrittenOnIt)
{
    std::vector<Place> others(field_.begin(), field_.end());
    for (Place& place : others) {
        place.peak *= 2.0 + std::fmod(place.x, 3.0); // another filter
    }
    options_.onto = Save("onto.fits", Sky(400, 310, 3, others, -20.0, -30.0), 0.0, [](io::Header& header) {
        header.Set("CRVAL1", 77.0);
        header.Set("EQUINOX", 2000.0);
    });
    options_.registered = Path("registered");
    const Result result = stack::Stack(options_);
    EXPECT_EQ(result.image.GetWidth(), 400);
    EXPECT_EQ(result.image.GetPlanes(), 1);
    EXPECT_EQ(result.header.Number("EQUINOX"), 2000.0);
    EXPECT_EQ(result.header.Has("CRPIX1"), false);
    EXPECT_GT(StarsIn(result.image, -20.0, -30.0), 30);
    EXPECT_NEAR(stars::FindFieldStars(result.image, 0).sky, 200.0, 1.0) << "the light counts";
    const std::vector<std::string> files = RegisteredFiles(options_);
    for (std::size_t i = 0; i < files.size(); ++i) {
        EXPECT_NEAR(result.frames[i].fluxRatio.value_or(0.0), 1.0, 0.02);
        const io::Frame frame = io::Load(files[i]);
        EXPECT_EQ(frame.image.GetHeight(), 310);
        EXPECT_EQ(frame.header.Number("CRVAL1"), 77.0);
        EXPECT_GT(StarsIn(frame.image, -20.0, -30.0), 30);
    }
    std::filesystem::remove_all(options_.registered);
    bool isWriting = false;
    int done = 0;
    corvane::Run run;
    run.progress = [&](const Progress& progress) {
        isWriting |= Holds(progress.text, "Writing registered");
        done = progress.done;
    };
    run.cancelled = [&] { return isWriting && done == 2; };
    EXPECT_THROW(stack::Stack(options_, run), Cancelled);
    EXPECT_TRUE(std::filesystem::is_empty(options_.registered));
    options_.onto = Save("empty.fits", Sky(400, 310, 1, {}));
    EXPECT_PRED2(Holds, ErrorOf([&] { stack::Register(options_); }),
                 "empty.fits: the reference cannot be placed on it: ");
}

TEST_F(GridTest, FollowsWhatMovesAndStacksTheStarsBeside)
{
    options_.follow = {PlaceIn(0, options_.lights[0]), PlaceIn(2, options_.lights[2])};
    options_.wantsBoth = true;
    const Result result = stack::Stack(options_);
    EXPECT_PRED2(Holds, result.frames[3].reason, "does not say when it was taken");
    const Position at = ObjectAt(0);
    double light = 0.0; // its place by its own samples: where other stars are gone none tell the finder their width
    Position centre{0.0, 0.0};
    for (int i = 0; i < 13 * 13; ++i) {
        const double x = 144.0 + i % 13;
        const double y = 125.0 + i / 13;
        const double above = result.image.GetPixelGrayRaw(x, y, 0) - 200.0;
        light += above;
        centre = {centre.x + above * (x - at.x), centre.y + above * (y - at.y)};
    }
    EXPECT_NEAR(std::hypot(centre.x, centre.y) / light, 0.0, 0.1);
    EXPECT_NEAR(result.image.GetPixelGrayRaw(150, 131, 0), 5750.0, 300.0);
    EXPECT_LT(StarsIn(result.image, 0.0, 0.0), 10) << "some in corners that one light has";
    EXPECT_GT(StarsIn(result.stars, 0.0, 0.0), 30);
    EXPECT_EQ(stars::StarAt(stars::FindFieldStars(result.stars, 0), at.x, at.y), nullptr);
    EXPECT_PRED2(Holds, result.header.History().at(0), " --follow 150.3,130.6@" + options_.lights[0] + " 171.3,84.6@");
    EXPECT_FALSE(Holds(result.starsHeader.History().at(0), "follow"));

    const std::pair<FollowedPlace, const char*> wrong[] = {
        {{1.0, 2.0, "other.fits"}, "follow = 1,2@other.fits: it takes places in lights"},
        {PlaceIn(3, options_.lights[3]), "the light is left out: "},
        {{320.0, 3.0, options_.lights[1]}, "must lie within the light, 320 x 260 pixels"},
        {PlaceIn(0, options_.lights[0]), "both lights are of one time"},
    };
    for (const auto& [place, reason] : wrong) {
        options_.follow[1] = place;
        EXPECT_PRED2(Holds, ErrorOf([&] { stack::Register(options_); }), reason);
    }
    EXPECT_PRED2(Holds, ErrorOf([] { ReadFollowedPlace("12,3@"); }), "must be X,Y@FILE");
    options_.align = AlignMethod::kNone;
    EXPECT_PRED2(Holds, ErrorOf([&] { CheckOptions(options_); }), "it takes align = stars");
}

TEST_F(GridTest, PlacesAreThoseOfEachFileWhicheverWayItsRowsRun)
{
    const std::string& turned = options_.lights[2];
    options_.follow = {PlaceIn(0, options_.lights[0]), PlaceIn(2, turned)};
    for (const std::string& light : options_.lights) {
        SaveInOrder(light, "BOTTOM-UP", false);
    }
    const auto expected = test::Samples(stack::Stack(options_).image);
    SaveInOrder(turned, "TOP-DOWN", true);
    options_.follow[1].y = kHeight - 1.0 - options_.follow[1].y;
    EXPECT_EQ(test::Samples(stack::Stack(options_).image), expected);

    options_.follow = {};
    options_.onto = Save("onto.fits", Sky(400, 310, 1, field_, -20.0, -30.0));
    const Result upright = stack::Stack(options_);
    SaveInOrder(options_.onto, "TOP-DOWN", true);
    const Result result = stack::Stack(options_);
    EXPECT_EQ(result.header.Text("ROWORDER"), "TOP-DOWN");
    for (int i = 0; i < 4; ++i) {
        EXPECT_NEAR(result.frames[i].dx, upright.frames[i].dx, 0.02);
        EXPECT_NEAR(result.frames[i].dy, 310 - kHeight - upright.frames[i].dy, 0.02);
    }
    CStlImage shown = result.image;
    CImgFlip again(shown);
    again.Do(0, &shown, 0);
    EXPECT_GT(StarsIn(again, -20.0, -30.0), 30);
}

} // namespace corvane::stack
