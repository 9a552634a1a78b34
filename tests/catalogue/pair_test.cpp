#include <cmath>
#include <complex>
#include <tuple>
#include <utility>

#include "catalogue/apply.h"
#include "catalogue/placement.h"
#include "corvane/core/error.h"
#include "corvane/geometry/flip.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

using Star = std::complex<double>; ///< column + i row
using Stars = std::vector<Star>;

const Stars kStars = {{40.3, 52.8}, {171.6, 30.2}, {120.1, 90.7}, {60.4, 130.9}, {180.2, 140.4}};

/// Stars of sigma 2 on a level.
io::Frame DrawnField(int width, int height, const Stars& stars, int planes = 1, double level = 100.0)
{
    io::Frame frame;
    frame.image = test::Make(width, height, planes, [&](int x, int y, int) {
        double v = level;
        for (const Star& star : stars) {
            v += 1000.0 * std::exp(-std::norm(Star(x, y) - star) / 8.0);
        }
        return v;
    });
    frame.image.SetOrgFileName("field.fits");
    return frame;
}

/// What becomes of two images.
struct Joined {
    io::Frame frame;
    Fit fit;
};

Joined Join(const char* operation, io::Frame first, io::Frame second, const Settings& settings, const Run& run = {})
{
    const bool isMosaic = operation == std::string("mosaic");
    Inputs inputs;
    inputs[isMosaic ? "first" : "base"].push_back(std::move(first));
    inputs[isMosaic ? "second" : "overlay"].push_back(std::move(second));
    Outputs outputs = Apply(operation, std::move(inputs), settings, run);
    return {std::get<io::Frame>(std::move(outputs.at("image"))), FitsOf(std::get<Table>(outputs.at("fit"))).front()};
}

/// Column and row at which a cut-out is found.
std::vector<double> Match(io::Frame reference, io::Frame image, const Settings& settings, const Run& run = {})
{
    Inputs inputs;
    inputs["reference"].push_back(std::move(reference));
    inputs["image"].push_back(std::move(image));
    const Outputs outputs = Apply("match", std::move(inputs), settings, run);
    const std::vector<Cell> row = std::get<Table>(outputs.at("place")).rows.front();
    return {std::get<double>(row[0]), std::get<double>(row[1])};
}

/// The stars after a turn about a place, clockwise with rows that run down, and with that place moved.
Stars Moved(double degrees, Star to)
{
    Stars moved;
    for (const Star& star : kStars) {
        moved.push_back(to + (star - Star(110.0, 90.0)) * std::polar(1.0, degrees * std::acos(-1.0) / 180.0));
    }
    return moved;
}

/// The first stars of a list as a person gives them, some pixels off.
std::vector<double> About(const Stars& stars, int count)
{
    std::vector<double> points;
    for (int i = 0; i < count; ++i) {
        points.insert(points.end(), {std::round(stars[i].real()) + 3.0, std::round(stars[i].imag()) - 2.0});
    }
    return points;
}

/// Expects the stars in their places in an image, moved by whole pixels.
void ExpectStars(const CStlImage& image, int ox, int oy)
{
    for (const Star& star : kStars) {
        const int left = static_cast<int>(star.real()) + ox - 7;
        const int top = static_cast<int>(star.imag()) + oy - 7;
        CRect box(left, top, left + 16, top + 16);
        double x = 0.0;
        double y = 0.0;
        image.GetCenterOfGravity(x, y, &box);
        EXPECT_LT(std::abs(Star(x - ox, y - oy) - star), 0.05) << star;
    }
}

TEST(Placement, BringsTheStarsOfATurnedFieldIntoTheirPlaces)
{
    const std::tuple<double, int, int, int> cases[] = {{0.0, 2, 0, 0},    {0.07, 2, 0, 0}, {-3.33, 2, 0, 0},
                                                       {12.34, 2, 0, 0},  {90.0, 2, 0, 0}, {179.5, 2, 0, 0},
                                                       {-120.0, 2, 0, 0}, {0.0, 1, 2, -3}};
    std::vector<std::string> history;
    for (const auto& [degrees, stars, dx, dy] : cases) {
        SCOPED_TRACE(degrees);
        const Stars moved = Moved(degrees, {140.3, 155.8});
        const auto [base, fit] = Join("composite", DrawnField(220, 180, kStars), DrawnField(300, 310, moved),
                                      {{"mode", "blend"},
                                       {"ratio", 1}, // the overlay alone
                                       {"dx", dx},
                                       {"dy", dy},
                                       {"points", About(kStars, stars)},
                                       {"overlay-points", About(moved, stars)}});
        EXPECT_EQ(fit.stars, stars);
        EXPECT_NEAR(std::remainder(fit.angle + degrees, 360.0), 0.0, 0.02);
        ExpectStars(base.image, dx, dy);
        history = base.header.History();
    }
    EXPECT_EQ(history, (std::vector<std::string>{"corvane composite field.fits field.fits --mode blend --ratio 1 "
                                                 "--points 43,51 --overlay-points 74,117 --dx 2 --dy -3",
                                                 "aligned by 1 star: dx -28.300, dy -68.800, angle 0.0000"}));
}

TEST(Mosaic, HoldsBothImagesWhole)
{
    const std::pair<Settings, CRect> cases[] = {{{}, CRect(0, 0, 220, 180)},
                                                {{{"dx", -30.5}, {"dy", 20}}, CRect(-31, 0, 220, 180)},
                                                {{{"dx", 250}, {"dy", -7.25}}, CRect(0, -8, 350, 180)},
                                                {{{"angle", 90}}, CRect(0, -10, 220, 180)},
                                                {{{"angle", 180}}, CRect(0, 0, 220, 180)}};
    for (auto [settings, canvas] : cases) { // counted from the first image's corner
        io::Frame first = DrawnField(220, 180, kStars);
        first.image.SetType("RA---TAN", 0);
        first.image.SetType("DEC--TAN", 1);
        first.image.SetCRVal(0, 10.0);
        first.image.SetCRVal(1, 20.0);
        first.image.SetCRPix(0, 5.0);
        settings.push_back({"mode", "under"});
        const CStlImage image = Join("mosaic", std::move(first), DrawnField(100, 80, {}), settings).frame.image;
        SCOPED_TRACE(ToText(settings.front().value));
        EXPECT_EQ(image.GetWidth(), canvas.Width());
        EXPECT_EQ(image.GetHeight(), canvas.Height());
        ExpectStars(image, -static_cast<int>(canvas.left), -static_cast<int>(canvas.top));
        double pixel = 0.0;
        image.GetCRPix(0, &pixel);
        EXPECT_EQ(pixel, 5.0 - canvas.left);
    }
}

TEST(Pair, BringsTheSecondImageIntoTheOrderOfRowsOfTheFirst)
{
    const auto field = [](bool isTurned, int width, int height, const Stars& stars) {
        io::Frame frame = DrawnField(width, height, stars);
        CImgFlip turned(frame.image);
        turned.Do(0, &frame.image, 0);
        frame.header.Set("ROWORDER", isTurned ? "TOP-DOWN" : "BOTTOM-UP");
        if (isTurned) {
            frame.image.Swap(&turned);
        }
        return frame;
    };
    const Stars moved = Moved(0.0, {113.0, 94.0});
    for (const bool isTurned : {false, true}) {
        int notes = 0;
        const corvane::Run run{.diagnostics = [&](const Diagnostic&) { ++notes; }};
        std::vector<double> points = About(moved, 2);
        for (double* y : {&points[1], &points[3]}) {
            *y = isTurned ? 189.0 - *y : *y; // where they are in the file
        }
        const io::Frame base = field(false, 220, 180, kStars);
        const io::Frame overlay = field(isTurned, 230, 190, moved);
        const Settings blend = {
            {"mode", "blend"}, {"ratio", 1}, {"points", About(kStars, 2)}, {"overlay-points", points}};
        ExpectStars(Join("composite", base, overlay, blend, run).frame.image, 0, 0);
        const Settings over = {{"points", About(kStars, 2)}, {"second-points", points}};
        ExpectStars(Join("mosaic", base, overlay, over, run).frame.image, 3, 4);
        const io::Frame cut = field(isTurned, 40, 40, Moved(0.0, {9.7, 19.2}));
        EXPECT_NEAR(Match(cut, base, {{"start", std::vector{98.0, 73.0}}, {"range", 16}}, run)[1], 70.8, 0.11);
        EXPECT_EQ(notes, isTurned ? 3 : 0);
    }
}

TEST(Mosaic, FollowsItsOptions)
{
    // What becomes of 10 in the first image and 30 in the second, and of what neither has.
    const std::tuple<Settings, float, float> cases[] = {{{}, 30.0F, 0.0F},
                                                        {{{"mode", "under"}}, 10.0F, 0.0F},
                                                        {{{"mode", "lighter"}}, 30.0F, 0.0F},
                                                        {{{"mode", "darker"}}, 10.0F, 0.0F},
                                                        {{{"mode", "key"}, {"key", 30}}, 10.0F, 0.0F},
                                                        {{{"mode", "key"}, {"key", "7,7,30"}}, 30.0F, 0.0F},
                                                        {{{"average", true}}, 20.0F, 0.0F},
                                                        {{{"background", 5}, {"display", true}}, 30.0F, 5.0F}};
    for (auto [settings, both, nowhere] : cases) {
        settings.insert(settings.end(), {{"dx", 2}, {"dy", 2}});
        for (const int planes : {1, 3}) {
            const CStlImage image =
                Join("mosaic", DrawnField(4, 4, {}, planes, 10.0), DrawnField(4, 4, {}, planes, 30.0), settings)
                    .frame.image;
            SCOPED_TRACE(ToText(settings.front().value));
            EXPECT_FLOAT_EQ(image.GetPixelGrayRaw(3, 3, planes - 1), both) << planes;
            EXPECT_FLOAT_EQ(image.GetPixelGrayRaw(5, 0, planes - 1), nowhere) << planes;
        }
    }
}

TEST(Composite, FollowsItsOptions)
{
    // What becomes of 10 in the base and 30 in the overlay.
    const std::pair<Settings, float> cases[] = {
        {{{"mode", "sum"}}, 40.0F},
        {{{"mode", "mean"}}, 20.0F},
        {{{"mode", "blend"}, {"ratio", 0.25}}, 15.0F},
        {{{"mode", "difference"}}, -20.0F},
        {{{"mode", "difference"}, {"clamp", true}}, 0.0F},
        {{{"mode", "product"}}, 300.0F},
        {{{"mode", "product"}, {"display", true}}, 300.0F / 255.0F},
        {{{"mode", "quotient"}}, 1.0F / 3.0F},
        {{{"mode", "absdiff"}}, 20.0F},
        {{{"mode", "max"}}, 30.0F},
        {{{"mode", "min"}}, 10.0F},
        {{{"mode", "desaturate"}, {"ratio", 0.1}, {"fraction", 1}, {"radius", 1}}, 3.0F},
        {{{"mode", "sum"}, {"rect", CRect(0, 0, 1, 1)}}, 10.0F}};
    for (const auto& [settings, expected] : cases) {
        const Joined joined = Join("composite", DrawnField(5, 5, {}, 3, 10.0), DrawnField(5, 5, {}, 3, 30.0), settings);
        EXPECT_FLOAT_EQ(joined.frame.image.GetPixelGrayRaw(2, 2, 2), expected) << ToText(settings.front().value);
    }
}

TEST(Match, FindsACutOutToATenthOfAPixel)
{
    const std::vector<double> place = Match(DrawnField(40, 40, Moved(0.0, {9.7, 19.2})), DrawnField(220, 180, kStars),
                                            {{"start", std::vector{98.0, 73.0}}, {"range", 16}});
    EXPECT_NEAR(place[0], 100.3, 0.11);
    EXPECT_NEAR(place[1], 70.8, 0.11);
}

TEST(Pair, RefusesWhatMakesNoSense)
{
    const std::pair<Settings, const char*> cases[] = {
        {{{"dx", NAN}}, "composite: dx = nan: is not a finite number"},
        {{{"dy", -2e6}}, "composite: dy = -2e+06: must be -1e+06 to 1e+06"},
        {{{"box", 4}}, "composite: box = 4: must be 5 to 255"},
        {{{"points", 1}}, "composite: points = 1: must be X,Y or X1,Y1,X2,Y2"},
        {{{"points", "1,2"}, {"overlay-points", "-1,2"}}, "composite: overlay-points = -1: must be 0 to 1e+06"},
        {{{"points", "1,2"}}, "composite: overlay-points: must name the same stars as points, one or two"},
        {{{"points", "40,53,172,30"}, {"overlay-points", "40,53,60,131"}},
         "field.fits: the two stars are 80.65 pixels apart here, but 133.23 in field.fits: not the same stars, or not "
         "the same scale"},
        {{{"points", "40,53,40,53"}, {"overlay-points", "40,53,40,53"}},
         "field.fits: the two stars are 0.00 pixels apart; a turn needs stars that are at least one box, 21 pixels, "
         "apart"},
        {{{"ratio", 1.5}}, "composite: ratio = 1.5: must be 0 to 1"},
        {{{"fraction", NAN}}, "composite: fraction = nan: is not a finite number"},
        {{{"radius", 3}}, "composite: radius = 3: must be 0 to 2"},
        {{{"rect", CRect(0, 0, 999, 9)}}, "composite: rect = 0:0:999:9: must lie within the image, 0:0:220:180"},
    };
    const io::Frame field = DrawnField(220, 180, kStars);
    for (auto [settings, error] : cases) {
        settings.push_back({"mode", "sum"});
        EXPECT_EQ(test::ErrorOf<Error>([&] { Join("composite", field, field, settings); }), error);
    }
    const Settings turned = {{"mode", "desaturate"}, {"ratio", 2}, {"angle", 91}};
    EXPECT_EQ(test::ErrorOf<Error>([&] { Join("composite", field, field, turned); }),
              "composite: angle = 91: must be -90 to 90 with mode = desaturate");
    EXPECT_EQ(test::ErrorOf<Error>([] { Apply("composite", {}, {{"mode", "sum"}}); }), "composite: base: is missing");
}

} // namespace
} // namespace corvane::catalogue
