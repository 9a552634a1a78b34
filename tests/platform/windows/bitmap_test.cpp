#include <algorithm>
#include <cstdlib>
#include <utility>

#include <gtest/gtest.h>

#include "corvane/corvane.h"
#include "tests/support/images.h"

namespace {

// Memory that the system draws into, 20 pixels square.
class Canvas {
public:
    Canvas() : dc_(CreateCompatibleDC(nullptr))
    {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), 20, 20, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        SelectObject(dc_, bitmap_);
    }
    ~Canvas()
    {
        DeleteDC(dc_);
        DeleteObject(bitmap_);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    HDC Dc() const { return dc_; }
    COLORREF At(int x, int y) const { return GetPixel(dc_, x, y); }

private:
    HDC dc_;
    HBITMAP bitmap_ = nullptr;
};

// Five by four samples from 0 to 255, no two alike.
CStlImage Picture(int planes)
{
    return corvane::test::Make(5, 4, planes, [](int x, int y, int p) { return 20 * x + 5 * y + 60 * p; });
}

// Equal, or within a step of the 32 that colours have in a table of 256.
bool AreAlike(COLORREF a, COLORREF b, int step)
{
    const int differences[] = {GetRValue(a) - GetRValue(b), GetGValue(a) - GetGValue(b), GetBValue(a) - GetBValue(b)};
    return std::ranges::all_of(differences, [step](int d) { return std::abs(d) < step; });
}

COLORREF Expected(const CStlImage& image, int x, int y)
{
    const auto sample = [&](int p) { return static_cast<BYTE>(image.GetPixelGrayRaw(x, y, p)); };
    return image.GetPlanes() == 1 ? RGB(sample(0), sample(0), sample(0)) : RGB(sample(0), sample(1), sample(2));
}

TEST(SystemBitmap, IsDrawnTheRightWayUpAndInItsColours)
{
    for (const auto& [planes, bitCount] : {std::pair{1, 8}, {1, 24}, {3, 8}, {3, 24}}) {
        SCOPED_TRACE(testing::Message() << planes << " planes, " << bitCount << " bits");
        const CStlImage image = Picture(planes);
        const HDIB block = image.GetDib(bitCount);
        const std::size_t table = bitCount == 8 ? 256 * sizeof(RGBQUAD) : 0;
        const std::size_t stride = bitCount == 8 ? 8 : 16;
        ASSERT_EQ(GlobalSize(block), sizeof(BITMAPINFOHEADER) + table + 4 * stride);
        const auto* const bitmap = static_cast<const BITMAPINFO*>(GlobalLock(block));
        const auto* const bits = reinterpret_cast<const BYTE*>(bitmap) + sizeof(BITMAPINFOHEADER) + table;
        const int step = planes == 3 && bitCount == 8 ? 8 : 1;
        const Canvas canvas;
        EXPECT_EQ(SetDIBitsToDevice(canvas.Dc(), 1, 2, 5, 4, 0, 0, 0, 4, bits, bitmap, DIB_RGB_COLORS), 4);
        EXPECT_NE(StretchDIBits(canvas.Dc(), 8, 8, 10, 8, 0, 0, 5, 4, bits, bitmap, DIB_RGB_COLORS, SRCCOPY), 0);
        for (int i = 0; i < 20; ++i) {
            const int x = i % 5;
            const int y = i / 5;
            EXPECT_TRUE(AreAlike(canvas.At(1 + x, 2 + y), Expected(image, x, y), step)) << x << ' ' << y;
            EXPECT_EQ(canvas.At(8 + 2 * x, 8 + 2 * y), canvas.At(1 + x, 2 + y)) << x << ' ' << y;
        }
        EXPECT_EQ(GlobalUnlock(block), 0);
        EXPECT_EQ(GlobalFree(block), nullptr);
    }
}

TEST(SystemBitmap, BlockThatTheSystemFillsIsTakenOver)
{
    const Canvas canvas;
    for (int i = 0; i < 400; ++i) {
        SetPixel(canvas.Dc(), i % 20, i / 20, RGB(i % 20, i / 20, 200));
    }
    const HDIB block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(BITMAPINFOHEADER) + 20 * 60);
    auto* const bitmap = static_cast<BITMAPINFO*>(GlobalLock(block));
    bitmap->bmiHeader = {sizeof(BITMAPINFOHEADER), 20, 20, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    const auto image = static_cast<HBITMAP>(GetCurrentObject(canvas.Dc(), OBJ_BITMAP));
    EXPECT_EQ(GetDIBits(canvas.Dc(), image, 0, 20, &bitmap->bmiColors, bitmap, DIB_RGB_COLORS), 20);
    GlobalUnlock(block);
    CStlImage taken;
    ASSERT_NE(taken.AttachDIB(block), 0);
    for (int i = 0; i < 400; ++i) {
        EXPECT_EQ(Expected(taken, i % 20, i / 20), RGB(i % 20, i / 20, 200)) << i;
    }
}

} // namespace
