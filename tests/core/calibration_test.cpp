#include "corvane/core/stl_image.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

using namespace corvane::test;

namespace {

/// The blank rule: true, and s replaced, when the sample is blank.
bool ApplyRule(const Plain& frame, const Plain& image, double f, double& s)
{
    const bool blank = (frame.blankUsed && frame.IsBlank(f)) || (image.blankUsed && image.IsBlank(s));
    s = blank ? (image.blankUsed ? image.blank : frame.blank) : s;
    return blank;
}

Plain PlainCalibration(const Plain& image, const Plain& frame, bool isDark, double mean)
{
    return image.Map([&](double s, int x, int y, int p) {
        const double f = frame.At(x, y, std::min(p, frame.planes - 1));
        if (isDark) {
            s = ApplyRule(frame, image, f, s) ? s : s - f;
            return s <= 0.0 ? 0.0 : s;
        }
        return !(f > 0.0) || ApplyRule(frame, image, f, s) ? s : s * mean / f;
    });
}

} // namespace

TEST(Calibration, DarkAndFlatEqualThePlainForm)
{
    ProgressWindow window;
    for (int kind = 0; kind < 12; ++kind) {
        const bool isDark = kind % 2 == 0;
        const bool frameBlank = kind / 2 % 2 == 0;
        const int smaller = kind % 3; // than the image
        ForEachImage([&](CStlImage& image) {
            const Size size{std::max(image.GetWidth() - smaller, 1), std::max(image.GetHeight() - smaller, 1)};
            CStlImage frame = RandomImage(size, kind / 4 + 1, 21);
            Sprinkle(frame, {-9.0F, -9.5F, 12.0F, 12.7F, 0.0F}, 22);
            frame.SetBlankUsed(frameBlank);
            frame.SetBlank(isDark ? -9 : 12);
            image.SetProgressHandle(window.Handle());
            const Plain expected = PlainCalibration(Plain(image), Plain(frame), isDark, frame.GetAvrGrayRaw(0));
            isDark ? image.DarkClbrtn(&frame, 1) : image.FlatClbrtn(&frame, 1);
            const int rows = image.GetPlanes() * image.GetHeight();
            EXPECT_EQ(window.Take(), Counted(isDark ? "Processing dark frame..." : "Processing flat field...", rows,
                                             std::vector<int>(static_cast<std::size_t>(rows), 1)));
            EXPECT_TRUE(Agree(image, expected, isDark ? 0 : 1)) << kind;
            EXPECT_EQ(image.IsBlankUsed(), expected.blankUsed || frameBlank);
            EXPECT_TRUE(!image.IsBlankUsed() || image.GetBlank() == (expected.blankUsed ? -7 : frame.GetBlank()));
        });
    }
}

TEST(Planes, GreyIsTheBrightnessAndColourCopiesSamples)
{
    ForEachImage([](CStlImage& source) {
        const Plain plain(source);
        CStlImage image(source);
        ASSERT_EQ(image.ToGray(&source, 0), 1);
        const Plain gray(image);
        ASSERT_EQ(gray.planes, 1);
        EXPECT_EQ(std::pair(gray.min[0], gray.max[0]), std::pair(plain.min[0], plain.max[0]));
        const Plain expected = gray.Map([&](double v, int x, int y, int) {
            const auto shown = [&](int p) { return static_cast<float>(plain.To256(plain.At(x, y, p), p)); };
            return plain.Colour() ? gray.ToRaw(plain.Bright(shown), 0) : v;
        });
        EXPECT_TRUE(Agree(image, expected, 1, 1e-13 * plain.range[0]));
        ASSERT_EQ(image.ToColor(&source, 0), 1);
        ASSERT_EQ(image.GetPlanes(), 3);
        const auto copied = [&](double, int x, int y, int p) { return plain.At(x, y, plain.Colour() ? p : 0); };
        EXPECT_TRUE(Agree(image, Plain(image).Map(copied)));
    });
    CStlImage pair = RandomImage({5, 4}, 2, 3); // has no third plane to read
    EXPECT_EQ(CStlImage(pair).ToGray(&pair, 0), 0);
}

TEST(PixelBlt, CopiesWhatLiesInBothImages)
{
    const struct {
        int dx, dy, w, h, sx, sy;
    } cases[] = {{2, 1, 3, 4, 5, 2},  {-3, -2, 4, 4, 1, 1}, {7, 6, 50, 50, 0, 0}, {0, 0, 50, 50, 9, 4},
                 {3, 3, -2, 5, 1, 1}, {30, 1, 5, 5, 1, 1},  {1, 1, 5, 5, 40, -1}};
    for (const auto& c : cases) {
        for (const int mapLevels : {0, 1}) {
            const int planes = mapLevels == 0 ? 1 : 3;
            CStlImage image = RandomImage({9, 8}, planes, 41);
            CStlImage source = RandomImage({11, 7}, planes, 42);
            CStlImage other = RandomImage({11, 7}, 4 - planes, 43);
            source.CImage::SetLevel(0, 3.0, 500.0);
            const Plain to(image);
            const Plain from(source);
            const CPoint at(std::clamp(c.dx, 0, 9), std::clamp(c.dy, 0, 8));
            const CPoint start(std::clamp(c.sx, 0, 11), std::clamp(c.sy, 0, 7));
            const CRect block(at.x, at.y, at.x + std::min<LONG>({c.w, 9 - at.x, 11 - start.x}),
                              at.y + std::min<LONG>({c.h, 8 - at.y, 7 - start.y}));
            const Plain expected = to.Map([&](double v, int x, int y, int p) {
                const double s = from.At(start.x + x - at.x, start.y + y - at.y, p);
                return !block.PtInRect({x, y}) ? v : mapLevels ? to.ToRaw(from.To256(s, p), p) : s;
            });
            image.PixelBlt(c.dx, c.dy, c.w, c.h, &source, c.sx, c.sy, mapLevels);
            image.PixelBlt(0, 0, 5, 5, &other, 0, 0, 0); // another number of planes: nothing happens
            EXPECT_TRUE(Agree(image, expected, mapLevels, 1e-10));
        }
    }
}
