// What the geometric steps make of a frame: samples, the sky under a star, the colour under a sample.

#include <array>
#include <cmath>
#include <sstream>
#include <tuple>

#include "catalogue/step.h"
#include "io/bayer.h"
#include "tests/io/files.h"

namespace corvane::catalogue {
namespace {

constexpr int kWidth = 90;
constexpr int kHeight = 64;

using Place = std::array<double, 2>;

double CardValue(const io::Header& header, const std::string& keyword, double otherwise)
{
    return header.Number(keyword).value_or(otherwise);
}

/// A polynomial of the SIP convention.
double Distortion(const io::Header& header, const std::string& name, double u, double v)
{
    double sum = 0.0;
    for (int i = 0; i < 100; ++i) {
        const std::string keyword = name + "_" + std::to_string(i / 10) + "_" + std::to_string(i % 10);
        sum += CardValue(header, keyword, 0.0) * std::pow(u, i / 10) * std::pow(v, i % 10);
    }
    return sum;
}

/// Where a pixel counted from 0 lies on the plane that touches the sky at the reference value [degrees].
Place OnSky(const io::Header& header, Place pixel)
{
    const double p = pixel[0] + 1.0 - CardValue(header, "CRPIX1", 0.0);
    const double q = pixel[1] + 1.0 - CardValue(header, "CRPIX2", 0.0);
    const double u = p + Distortion(header, "A", p, q);
    const double v = q + Distortion(header, "B", p, q);
    const double dx = CardValue(header, "CDELT1", 1.0);
    const double dy = CardValue(header, "CDELT2", 1.0);
    const double turn = CardValue(header, "CROTA2", 0.0) * 3.14159265358979323846 / 180.0;
    const auto element = [&](const std::string& place, double scale, double turned) {
        const double pc = header.Has("PC" + place) ? scale * CardValue(header, "PC" + place, 0.0) : turned;
        return CardValue(header, "CD" + place, pc);
    };
    return {element("1_1", dx, dx * std::cos(turn)) * u + element("1_2", dx, -dy * std::sin(turn)) * v,
            element("2_1", dy, dx * std::sin(turn)) * u + element("2_2", dy, dy * std::cos(turn)) * v};
}

/// A star on nothing, with these cards: keyword, number, keyword, number...
io::Frame StarFrame(bool isTopDown, const std::string& cards, Place star = {40.3, 28.6})
{
    io::Frame frame;
    frame.image = test::Make(kWidth, kHeight, 1, [&](int x, int y, int) {
        const double r = std::hypot(x - star[0], y - star[1]);
        return 1000.0 * std::exp(-r * r / 18.0);
    });
    std::istringstream words(cards);
    double value = 0.0;
    for (std::string keyword; words >> keyword >> value;) {
        frame.header.Set(keyword, value);
    }
    if (isTopDown) {
        frame.header.Set("ROWORDER", "TOP-DOWN");
    }
    return frame;
}

class Geometry : public test::InFolder {
protected:
    /// Saved and read again, as another program would.
    io::Frame Reread(const io::Frame& frame) const
    {
        io::Save(Path("a.fits"), frame.image, frame.header);
        return io::Load(Path("a.fits"));
    }
};

Place Centroid(const CStlImage& image)
{
    Place centre{};
    image.GetCenterOfGravity(centre[0], centre[1], nullptr);
    return centre;
}

TEST_F(Geometry, KeepsTheStarAtItsPlaceInTheSky)
{
    for (const std::string scale :
         {"CD1_1 -0.009 CD1_2 0.0045 CD2_1 0.004 CD2_2 0.0085", "CDELT1 -0.01 CDELT2 0.011",
          "CDELT1 -0.01 CDELT2 0.011 CROTA2 27",
          "CDELT1 -0.01 CDELT2 0.011 PC1_1 -0.9 PC1_2 0.45 PC2_1 0.4 PC2_2 0.85 A_ORDER 3 B_ORDER 2 "
          "A_2_0 2e-3 A_1_2 -3e-5 B_1_1 -4e-3 B_0_1 0.01"}) {
        const io::Frame original = Reread(StarFrame(true, scale + " CRPIX1 12.5 CRPIX2 50.25 CRVAL1 83.6 CRVAL2 57.3"));
        const Place star = OnSky(original.header, Centroid(original.image));
        for (const char* step :
             {"flip:direction=horizontal", "flip:direction=vertical", "rotate:angle=33.3,background=0",
              "rotate:angle=-120,expand=yes,background=0", "rotate90", "rotate90:direction=anticlockwise", "rotate180",
              "resize:factor=1.5", "resize:width=61,method=cubic", "bin:x=2,y=3", "bin:x=4,keep-partial=yes",
              "canvas:width=71,height=99", "canvas:width=70,height=99,anchor=bottom-right", "crop:rect=7:3:88:61",
              "scroll:x=-20,y=50", "expand:x=2,y=3"}) {
            io::Frame frame = original;
            frame.image.SetLevel(0, 0.0, 1000.0);
            catalogue::RunStep(ParseStep(step), frame, {});
            const io::Frame result = Reread(frame);
            EXPECT_FALSE(result.header.Has("CROTA2")) << step; // a matrix stands in its place
            const auto [x, y] = Centroid(result.image);
            const Place found = OnSky(result.header, {x, y});
            const Place right = OnSky(result.header, {x + 1.0, y});
            const double pixel = std::hypot(right[0] - found[0], right[1] - found[1]);
            EXPECT_LT(std::hypot(found[0] - star[0], found[1] - star[1]), 0.05 * pixel) << scale << ' ' << step;
        }
    }
}

TEST_F(Geometry, GivesNoCoordinatesToAnImageWithoutThem)
{
    io::Frame frame = StarFrame(true, "");
    catalogue::RunStep(ParseStep("rotate90"), frame, {});
    const io::Header header = Reread(frame).header;
    EXPECT_FALSE(header.Has("CRPIX1") || header.Has("CDELT1") || header.Has("PC1_1"));
}

/// The filter over a pixel, from the cards.
char FilterAt(const io::Header& header, int x, int y)
{
    const int i = (x + static_cast<int>(CardValue(header, "XBAYROFF", 0.0))) % 2;
    const int j = (y + static_cast<int>(CardValue(header, "YBAYROFF", 0.0))) % 2;
    return header.Text("BAYERPAT").value_or("????")[static_cast<std::size_t>(2 * j + i)];
}

// Each sample is the letter of its filter.
TEST_F(Geometry, KeepsTheColourOverEverySample)
{
    for (const char* step :
         {"flip:direction=horizontal", "flip:direction=vertical", "rotate90", "rotate180", "crop:rect=1:0:9:6",
          "crop:rect=2:3:9:7", "canvas:width=13,height=9", "canvas:width=6,height=5,anchor=top-right", "scroll:x=3"}) {
        for (const char* offset : {"XBAYROFF 0 YBAYROFF 1", "XBAYROFF 1 YBAYROFF 0"}) {
            io::Frame frame = StarFrame(false, offset);
            frame.header.Set("BAYERPAT", "GRBG");
            frame.image = test::Make(10, 8, 1, [&](int x, int y, int) { return FilterAt(frame.header, x, y); });
            catalogue::RunStep(ParseStep(step), frame, {});
            const int width = frame.image.GetWidth();
            for (int i = 0; i < width * frame.image.GetHeight(); ++i) {
                const float sample = frame.image.GetPixelGrayRaw(i % width, i / width, 0);
                const char filter = FilterAt(frame.header, i % width, i / width);
                EXPECT_TRUE(sample == 0.0F || sample == static_cast<float>(filter)) << step;
            }
        }
    }
}

TEST_F(Geometry, DropsThePatternWhereItSaysNothingAnyMore)
{
    const std::vector<std::tuple<const char*, const char*, bool>> cases{
        {"rotate:angle=0", "RGGB", true}, {"rotate:angle=1", "RGGB", false}, {"resize:factor=2", "RGGB", false},
        {"bin", "RGGB", false},           {"expand", "RGGB", false},         {"rotate180", "XTRANS", false}};
    for (const auto& [step, pattern, isLeft] : cases) {
        io::Frame frame = StarFrame(true, "XBAYROFF 0");
        frame.header.Set("BAYERPAT", pattern);
        catalogue::RunStep(ParseStep(step), frame, {});
        EXPECT_EQ(io::BayerPattern(frame.header).has_value(), isLeft) << step;
        EXPECT_EQ(frame.header.Has("XBAYROFF"), isLeft) << step;
    }
}

// Rows of a frame that says nothing of their order show from the bottom up.
TEST_F(Geometry, TurnsAndPlacesAsTheScreenShows)
{
    const std::vector<std::tuple<const char*, bool, Place>> cases{
        {"rotate90", true, {kHeight - 11, 20}},
        {"rotate90", false, {10, kWidth - 21}},
        {"rotate90:direction=anticlockwise", true, {10, kWidth - 21}},
        {"rotate:angle=90,expand=yes", true, {kHeight - 11, 20}},
        {"rotate:angle=90,expand=yes", false, {10, kWidth - 21}},
        {"canvas:width=100,height=70,anchor=top-left", true, {20, 10}},
        {"canvas:width=100,height=70,anchor=top-left", false, {20, 16}},
    };
    for (const auto& [step, isTopDown, place] : cases) {
        io::Frame frame = StarFrame(isTopDown, "", {20, 10});
        catalogue::RunStep(ParseStep(step), frame, {});
        EXPECT_NEAR(Centroid(frame.image)[0], place[0], 2) << step << isTopDown;
        EXPECT_NEAR(Centroid(frame.image)[1], place[1], 2) << step << isTopDown;
    }
}

TEST_F(Geometry, BinningScalesWhatTheHeaderSaysOfAPixel)
{
    io::Frame frame = StarFrame(true, "XBINNING 1 YPIXSZ 3.75");
    catalogue::RunStep(ParseStep("bin:x=2,y=4"), frame, {});
    EXPECT_EQ(frame.header.Number("XBINNING"), 2.0);
    EXPECT_EQ(frame.header.Number("YPIXSZ"), 15.0);
    EXPECT_FALSE(frame.header.Has("XPIXSZ"));
    EXPECT_EQ(frame.image.GetLevelMax(0), 255.0 * 8.0);
}

} // namespace
} // namespace corvane::catalogue
