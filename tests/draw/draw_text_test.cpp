#include "corvane/draw/draw_text.h"

#include <cmath>
#include <set>

#include "tests/support/plain.h"

using namespace corvane::test;

namespace {

constexpr int kSide = 120;

struct Written {
    double x = 60.0;
    double y = 60.0;
    double height = 24.0; // two pixels for a unit of the font's grid
    double angle = 0.0;
    int align = 0;
};

/// White text on black.
CImgDrawText Write(const char* text, const Written& how = {}, double thickness = 2.0)
{
    CStlImage image(-32, kSide, kSide, 1, 1.0, 0.0, 1);
    CImgDrawText result(image);
    result.Do(text, how.x, how.y, how.height, how.angle, how.align, {thickness, 1.0, 1}, &image, nullptr, 0);
    return result;
}

std::vector<float> Ink(const char* text, const Written& how = {}, double thickness = 2.0)
{
    return Samples(Write(text, how, thickness));
}

} // namespace

// F: its stem rises from the point it is put at, its longer arm is at the top, and to the right.
TEST(DrawText, TurnsAndMirrorsAsItIsRead)
{
    const struct {
        Written how;
        int alongX, alongY; // a step of a pixel to the right of the letter
        int upX, upY;
    } cases[] = {
        {{60, 60, 24, 0}, 1, 0, 0, -1},   {{60, 60, 24, 90}, 0, 1, 1, 0}, {{60, 60, 24, -90}, 0, -1, -1, 0},
        {{60, 60, 24, 180}, -1, 0, 0, 1}, {{60, 60, -24, 0}, 1, 0, 0, 1}, {{60, 60, -24, 90}, 0, -1, 1, 0},
    };
    for (const auto& c : cases) {
        const CImgDrawText image = Write("F", c.how);
        const auto ink = [&](int right, int up) {
            return image.GetPixelGrayRaw(60 + right * c.alongX + up * c.upX, 60 + right * c.alongY + up * c.upY, 0);
        };
        for (const auto& [right, up] : {std::pair(0, 0), {0, 12}, {0, 24}, {12, 24}, {10, 12}}) {
            EXPECT_GT(ink(right, up), 0.9F) << c.how.height << ' ' << c.how.angle << ": " << right << ' ' << up;
        }
        for (const auto& [right, up] : {std::pair(12, 12), {10, 0}, {-4, 12}, {6, 18}, {16, 24}}) {
            EXPECT_EQ(ink(right, up), 0.0F) << c.how.height << ' ' << c.how.angle << ": " << right << ' ' << up;
        }
    }
}

TEST(DrawText, HasAGlyphOfItsOwnForEachCharacterWithinItsPlace)
{
    std::set<std::vector<float>> glyphs;
    for (char c = '!'; c <= '~'; ++c) {
        const char text[] = {c, '\0'};
        const CImgDrawText image = Write(text);
        EXPECT_TRUE(glyphs.insert(Samples(image)).second) << text << " looks like another";
        const double width = CImgDrawText::GetTextWidth(text, 24.0);
        for (int i = 0; i < kSide * kSide; ++i) {
            const bool isPlace = i % kSide > 57 && i % kSide < 63.0 + width && i / kSide > 34 && i / kSide < 68;
            ASSERT_TRUE(isPlace || image.GetPixelGrayRaw(i % kSide, i / kSide, 0) < 0.5F)
                << text << " leaves its place";
        }
    }
    const std::vector<float> box = Ink("\x01");
    EXPECT_EQ(Ink("\xC3\xA9"), box) << "a letter of two bytes is one box";
    EXPECT_EQ(Ink(" "), Ink(nullptr));
    EXPECT_EQ(Ink("I", {60, 60, NAN}), Ink(""));
    EXPECT_EQ(Ink("I", {60, 60, 24, INFINITY}), Ink(""));
}

TEST(DrawText, StandsBeforeAboutOrBehindItsPoint)
{
    const double width = CImgDrawText::GetTextWidth("Ab j", 24.0);
    const double c = std::cos(0.5235987755982988);
    for (const int align : {1, 2}) {
        const double back = width * align / 2.0;
        const CImgDrawText moved = Write("Ab j", {90, 80, 24, 30, align});
        const Plain begun(Write("Ab j", {90 - back * c, 80 - back * 0.5, 24, 30, 0}));
        EXPECT_TRUE(Agree(moved, begun, 1, 1e-5));
    }
    EXPECT_EQ(CImgDrawText::GetTextWidth("", 24.0), 0.0);
    EXPECT_DOUBLE_EQ(CImgDrawText::GetTextWidth("-", -24.0), 10.0);
}

// Strokes that were laid one over the other would darken where they meet, and a curve of few pieces would not be round.
TEST(DrawText, DrawsStrokesAsOneShapeAndCurvesRound)
{
    const CImgDrawText ring = Write("o", {25, 100, 120}, 1.0);
    double ink = 0.0;
    for (const float v : Samples(ring)) {
        EXPECT_LE(v, 1.0F);
        ink += v;
    }
    double length = 0.0; // the quarters are parabolas of sides 35 and 40 pixels
    for (double t = 0.0005; t < 1.0; t += 0.001) {
        length += 0.002 * std::hypot(35.0 * t, 40.0 * (1.0 - t));
    }
    EXPECT_NEAR(ink, 4.0 * length, 0.02 * ink);
}
