#include <array>
#include <cmath>
#include <complex>
#include <stdexcept>
#include <tuple>
#include <utility>

#include "catalogue/composite.h"
#include "catalogue/match.h"
#include "catalogue/mosaic.h"
#include "corvane/geometry/flip.h"
#include "tests/support/error_of.h"
#include "tests/support/images.h"

namespace corvane::catalogue {
namespace {

using Star = std::complex<double>; ///< column + i row
using Stars = std::vector<Star>;

const Stars kStars = {{40.3, 52.8}, {171.6, 30.2}, {120.1, 90.7}, {60.4, 130.9}, {180.2, 140.4}};

/// Stars of sigma 2 on a level.
io::Frame Field(int width, int height, const Stars& stars, int planes = 1, double level = 100.0)
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
        io::Frame base = Field(220, 180, kStars);
        io::Frame overlay = Field(300, 310, moved);
        CompositeOptions options{.mode = "blend", .ratio = 1.0}; // the overlay alone
        options.placement = {
            .dx = 1.0 * dx, .dy = 1.0 * dy, .points = About(kStars, stars), .secondPoints = About(moved, stars)};
        const Fit fit = RunComposite(base, overlay, options, {});
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
    const std::pair<Placement, CRect> cases[] = {{{}, CRect(0, 0, 220, 180)},
                                                 {{.dx = -30.5, .dy = 20.0}, CRect(-31, 0, 220, 180)},
                                                 {{.dx = 250.0, .dy = -7.25}, CRect(0, -8, 350, 180)},
                                                 {{.angle = 90.0}, CRect(0, -10, 220, 180)},
                                                 {{.angle = 180.0}, CRect(0, 0, 220, 180)}};
    for (const auto& [placement, canvas] : cases) { // counted from the first image's corner
        SCOPED_TRACE(testing::Message() << placement.dx << ' ' << placement.angle);
        io::Frame first = Field(220, 180, kStars);
        first.image.SetType("RA---TAN", 0);
        first.image.SetType("DEC--TAN", 1);
        first.image.SetCRVal(0, 10.0);
        first.image.SetCRVal(1, 20.0);
        first.image.SetCRPix(0, 5.0);
        io::Frame second = Field(100, 80, {});
        RunMosaic(first, second, {.placement = placement, .mode = "under"}, {});
        EXPECT_EQ(first.image.GetWidth(), canvas.Width());
        EXPECT_EQ(first.image.GetHeight(), canvas.Height());
        ExpectStars(first.image, -static_cast<int>(canvas.left), -static_cast<int>(canvas.top));
        double pixel = 0.0;
        first.image.GetCRPix(0, &pixel);
        EXPECT_EQ(pixel, 5.0 - canvas.left);
    }
}

TEST(Pair, BringsTheSecondImageIntoTheOrderOfRowsOfTheFirst)
{
    const auto field = [](bool isTurned, int width, int height, const Stars& stars) {
        io::Frame frame = Field(width, height, stars);
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
        const Context context{.note = [&](const std::string&) { ++notes; }};
        std::vector<double> points = About(moved, 2);
        for (double* y : {&points[1], &points[3]}) {
            *y = isTurned ? 189.0 - *y : *y; // where they are in the file
        }
        const Placement placement{.points = About(kStars, 2), .secondPoints = points};
        io::Frame base = field(false, 220, 180, kStars);
        io::Frame overlay = field(isTurned, 230, 190, moved);
        RunComposite(base, overlay, {.placement = placement, .mode = "blend", .ratio = 1.0}, context);
        ExpectStars(base.image, 0, 0);
        io::Frame first = field(false, 220, 180, kStars);
        io::Frame second = field(isTurned, 230, 190, moved);
        RunMosaic(first, second, {.placement = placement, .mode = "over"}, context);
        ExpectStars(first.image, 3, 4);
        io::Frame image = field(false, 220, 180, kStars);
        io::Frame cut = field(isTurned, 40, 40, Moved(0.0, {9.7, 19.2}));
        EXPECT_NEAR(RunMatch(cut, image, {.start = std::array{98.0, 73.0}, .range = 16}, context).y, 70.8, 0.11);
        EXPECT_EQ(notes, isTurned ? 3 : 0);
    }
}

TEST(Mosaic, FollowsItsOptions)
{
    // What becomes of 10 in the first image and 30 in the second, and of what neither has.
    const std::tuple<MosaicOptions, float, float> cases[] = {
        {{.mode = "over"}, 30.0F, 0.0F},
        {{.mode = "under"}, 10.0F, 0.0F},
        {{.mode = "lighter"}, 30.0F, 0.0F},
        {{.mode = "darker"}, 10.0F, 0.0F},
        {{.mode = "key", .key = {30.0}}, 10.0F, 0.0F},
        {{.mode = "key", .key = {7.0, 7.0, 30.0}}, 30.0F, 0.0F},
        {{.mode = "over", .average = true}, 20.0F, 0.0F},
        {{.mode = "over", .background = 5.0, .display = true}, 30.0F, 5.0F}};
    for (auto [options, both, nowhere] : cases) {
        for (const int planes : {1, 3}) {
            io::Frame first = Field(4, 4, {}, planes, 10.0);
            io::Frame second = Field(4, 4, {}, planes, 30.0);
            options.placement = {.dx = 2.0, .dy = 2.0};
            RunMosaic(first, second, options, {});
            EXPECT_FLOAT_EQ(first.image.GetPixelGrayRaw(3, 3, planes - 1), both) << options.mode << planes;
            EXPECT_FLOAT_EQ(first.image.GetPixelGrayRaw(5, 0, planes - 1), nowhere) << options.mode << planes;
        }
    }
}

TEST(Composite, FollowsItsOptions)
{
    // What becomes of 10 in the base and 30 in the overlay.
    const std::pair<CompositeOptions, float> cases[] = {
        {{.mode = "sum"}, 40.0F},
        {{.mode = "mean"}, 20.0F},
        {{.mode = "blend", .ratio = 0.25}, 15.0F},
        {{.mode = "difference"}, -20.0F},
        {{.mode = "difference", .clamp = true}, 0.0F},
        {{.mode = "product"}, 300.0F},
        {{.mode = "product", .display = true}, 300.0F / 255.0F},
        {{.mode = "quotient"}, 1.0F / 3.0F},
        {{.mode = "absdiff"}, 20.0F},
        {{.mode = "max"}, 30.0F},
        {{.mode = "min"}, 10.0F},
        {{.mode = "desaturate", .ratio = 0.1, .fraction = 1.0, .radius = 1}, 3.0F},
        {{.mode = "sum", .rect = CRect(0, 0, 1, 1)}, 10.0F}};
    for (const auto& [options, expected] : cases) {
        io::Frame base = Field(5, 5, {}, 3, 10.0);
        io::Frame overlay = Field(5, 5, {}, 3, 30.0);
        RunComposite(base, overlay, options, {});
        EXPECT_FLOAT_EQ(base.image.GetPixelGrayRaw(2, 2, 2), expected) << options.mode;
    }
}

TEST(Match, FindsACutOutToATenthOfAPixel)
{
    io::Frame image = Field(220, 180, kStars);
    io::Frame reference = Field(40, 40, Moved(0.0, {9.7, 19.2}));
    const Match match = RunMatch(reference, image, {.start = std::array{98.0, 73.0}, .range = 16}, {});
    EXPECT_NEAR(match.x, 100.3, 0.11);
    EXPECT_NEAR(match.y, 70.8, 0.11);
    EXPECT_EQ(test::Samples(image.image), test::Samples(Field(220, 180, kStars).image));
}

TEST(Pair, RefusesWhatMakesNoSense)
{
    const std::pair<CompositeOptions, const char*> cases[] = {
        {{.placement = {.dx = NAN}, .mode = "sum"}, "--dx = nan: must be -1e+06 to 1e+06"},
        {{.placement = {.dy = -2e6}, .mode = "sum"}, "--dy = -2e+06: must be -1e+06 to 1e+06"},
        {{.placement = {.box = 4}, .mode = "sum"}, "--box = 4: must be 5 to 255"},
        {{.placement = {.points = {1.0}}, .mode = "sum"}, "--points = 1: must be X,Y or X1,Y1,X2,Y2"},
        {{.placement = {.points = {1.0, 2.0}, .secondPoints = {-1.0, 2.0}}, .mode = "sum"},
         "--overlay-points = -1: must be 0 to 1e+06"},
        {{.placement = {.points = {40, 53, 172, 30}, .secondPoints = {40, 53, 60, 131}}, .mode = "sum"},
         "field.fits: the two stars are 80.65 pixels apart here, but 133.23 in field.fits: not the same stars, or not "
         "the same scale"},
        {{.placement = {.points = {40, 53, 40, 53}, .secondPoints = {40, 53, 40, 53}}, .mode = "sum"},
         "field.fits: the two stars are 0.00 pixels apart; a turn needs stars that are at least one box, 21 pixels, "
         "apart"},
        {{.mode = "blend", .ratio = 1.5}, "--ratio = 1.5: must be 0 to 1"},
        {{.placement = {.angle = 91.0}, .mode = "desaturate", .ratio = 2.0},
         "angle = 91: must be -90 to 90 with --mode desaturate"},
        {{.mode = "sum", .fraction = NAN}, "--fraction = nan: must be 0 to 1"},
        {{.mode = "sum", .radius = 3}, "--radius = 3: must be 0 to 2"},
    };
    for (const auto& [options, error] : cases) {
        io::Frame base = Field(220, 180, kStars);
        io::Frame overlay = base;
        EXPECT_EQ(test::ErrorOf<std::runtime_error>([&] { RunComposite(base, overlay, options, {}); }), error);
    }
}

} // namespace
} // namespace corvane::catalogue
