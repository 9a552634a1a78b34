#include <cstring>
#include <functional>
#include <set>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "corvane/platform/global_memory.h"
#include "tests/support/images.h"
#include "tests/support/plain.h"

using namespace corvane::test;
using Bytes = std::vector<unsigned char>;

namespace {

/// The bytes of a global block, which is freed.
Bytes Take(HDIB dib)
{
    const auto* const data = static_cast<const unsigned char*>(GlobalLock(dib));
    Bytes bytes(data, data + GlobalSize(dib));
    GlobalUnlock(dib);
    GlobalFree(dib);
    return bytes;
}

HDIB Give(const Bytes& bytes)
{
    const HDIB dib = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    std::copy(bytes.begin(), bytes.end(), static_cast<unsigned char*>(GlobalLock(dib)));
    GlobalUnlock(dib);
    return dib;
}

/// A block in its plain form: header, the table given, then rows bottom up, each padded to four bytes.
Bytes Block(int width, int height, int bits, const Bytes& table, const std::function<Bytes(int x, int y)>& pixel)
{
    Bytes rows;
    for (int y = height - 1; y >= 0; --y) {
        for (int x = 0; x < width; ++x) {
            const Bytes bytes = pixel(x, y);
            rows.insert(rows.end(), bytes.begin(), bytes.end());
        }
        rows.resize((rows.size() + 3) / 4 * 4, 0);
    }
    const BITMAPINFOHEADER header{40, width, height, 1, static_cast<WORD>(bits), 0, static_cast<DWORD>(rows.size()),
                                  0,  0,     0,      0};
    Bytes block(sizeof header + table.size() + rows.size());
    std::memcpy(block.data(), &header, sizeof header);
    std::copy(rows.begin(), rows.end(), std::copy(table.begin(), table.end(), block.begin() + sizeof header));
    return block;
}

} // namespace

TEST(Dib, BytesOfEveryForm)
{
    Bytes greys;
    for (int i = 0; i < 1024; ++i) {
        greys.push_back(static_cast<unsigned char>(i % 4 == 3 ? 0 : i / 4));
    }
    ForEachImage([&](CStlImage& image) {
        const Plain plain(image);
        const auto rgb = [&](int x, int y) {
            return Bytes{plain.Byte(x, y, plain.planes - 1), plain.Byte(x, y, plain.planes / 2), plain.Byte(x, y, 0)};
        };
        EXPECT_EQ(Take(image.GetDib(24)), Block(plain.width, plain.height, 24, {}, rgb));
        const auto grey = [&](int x, int y) { return Bytes{plain.Byte(x, y, 0)}; };
        EXPECT_TRUE(plain.Colour() || Take(image.GetDib(8)) == Block(plain.width, plain.height, 8, greys, grey));
        for (const int bits : {0, 1, 16, 32, -8}) {
            EXPECT_EQ(image.GetDib(bits), nullptr);
        }
    });
    EXPECT_EQ(Take(CStlImage().GetDib(8)).size(), 1064U);
}

TEST(Dib, QuantiserReproducesFewColours)
{
    Random random(7);
    CStlImage image(-32, 16, 16, 3, 1.0, 0.0, 1);
    std::set<int> cells;
    for (int i = 0; i < 256; ++i) { // every pixel in a cell of its own
        int colour = 0;
        do {
            colour = random.Whole(0, 0xffffff);
        } while (!cells.insert(colour & 0xf8f8f8).second);
        for (int p = 0; p < 3; ++p) {
            *image.GetImageAdr(i % 16, i / 16, p) = static_cast<float>(colour >> 8 * p & 255);
        }
    }
    const Plain plain(image);
    const Bytes block = Take(image.GetDib(8));
    ASSERT_EQ(block.size(), 1064U + 256U);
    plain.ForEach([&](int x, int y, int p) {
        const int entry = block[static_cast<std::size_t>(1064 + (15 - y) * 16 + x)];
        EXPECT_LE(std::abs(block[static_cast<std::size_t>(42 + entry * 4 - p)] - plain.Byte(x, y, p)), 4);
    });
}

TEST(Dib, AttachTakesWhatGetDibMade)
{
    ForEachImage([](CStlImage& image) {
        const Plain plain(image);
        for (const int bits : plain.Colour() ? std::vector{24} : std::vector{24, 8}) {
            CStlImage attached = RandomImage({2, 2}, 1, 9);
            ASSERT_EQ(attached.AttachDIB(image.GetDib(bits)), 1);
            ASSERT_EQ(attached.GetBitsPixel(), -32);
            const Plain read(attached);
            ASSERT_EQ(read.planes, bits == 24 ? 3 : 1);
            read.ForEach(
                [&](int x, int y, int p) { EXPECT_EQ(read.At(x, y, p), plain.Byte(x, y, plain.Colour() ? p : 0)); });
        }
    });
}

TEST(Dib, AttachReadsPackedPixelsAndTopDownRows)
{
    const Bytes table{1, 2, 3, 0, 40, 50, 60, 0}; // blue, green, red
    const Bytes bit = Block(9, 1, 1, table, [](int x, int) { return x == 0 ? Bytes{0xa5, 0x80} : Bytes{}; });
    Bytes nibble = Block(3, 2, 4, table, [](int x, int y) {
        return x != 0 ? Bytes{} : y == 0 ? Bytes{0x10, 0x10} : Bytes{0, 0};
    });
    nibble[32] = 2; // colours used
    Bytes topDown = Block(1, 2, 32, {}, [](int, int y) { return Bytes{7, 8, static_cast<unsigned char>(y), 9}; });
    std::memcpy(topDown.data() + 8, "\xfe\xff\xff\xff", 4);
    CStlImage image;
    ASSERT_EQ(image.AttachDIB(Give(bit)), 1);
    EXPECT_EQ(Samples(image), (std::vector<float>{60, 3, 60, 3,  3,  60, 3,  60, 60, 50, 2, 50, 2, 2,
                                                  50, 2, 50, 50, 40, 1,  40, 1,  1,  40, 1, 40, 40}));
    ASSERT_EQ(image.AttachDIB(Give(nibble)), 1);
    EXPECT_EQ(Samples(image), (std::vector<float>{60, 3, 60, 3, 3, 3, 50, 2, 50, 2, 2, 2, 40, 1, 40, 1, 1, 1}));
    ASSERT_EQ(image.AttachDIB(Give(topDown)), 1);
    EXPECT_EQ(Samples(image), (std::vector<float>{1, 0, 8, 8, 7, 7}));
}

TEST(Dib, AttachRefusesWhatIsNoBitmap)
{
    const Bytes good = Block(5, 3, 24, {}, [](int, int) { return Bytes{1, 2, 3}; });
    const auto with = [&](Bytes bytes, std::size_t at, std::uint32_t value) {
        std::memcpy(bytes.data() + at, &value, 4);
        return bytes;
    };
    // Sizes whose product with the colours used no longer fits 64 bits.
    const Bytes huge = with(with(with(with(good, 4, 0x7fffffff), 8, 0x7fffffff), 14, 32), 32, 0xffffffff);
    for (const Bytes& bad :
         {Bytes{}, Bytes(good.begin(), good.begin() + 39), Bytes(good.begin(), good.end() - 1), huge, with(good, 0, 39),
          with(good, 0, 0xffffffff), with(good, 4, 0), with(good, 4, 0x80000000), with(good, 8, 0),
          with(good, 8, 0x80000000), with(good, 8, 4), with(good, 14, 2), with(good, 16, 1), with(good, 32, 1000)}) {
        CStlImage image = RandomImage({2, 2}, 1, 1);
        const std::vector<float> before = Samples(image);
        const HDIB dib = Give(bad);
        EXPECT_EQ(image.AttachDIB(dib), 0);
        EXPECT_EQ(Samples(image), before);
        EXPECT_EQ(GlobalFree(dib), nullptr); // a block that is refused stays the caller's
    }
    EXPECT_EQ(CStlImage().AttachDIB(nullptr), 0);
    EXPECT_EQ(CStlImage().AttachDIB(Give(good)), 1);
}
