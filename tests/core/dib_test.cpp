#include <array>
#include <cstring>
#include <functional>

#include "corvane/core/stl_image.h"
#include "corvane/platform/global_memory.h"
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

TEST(Dib, BytesOfEveryFormAndBack)
{
    Bytes greys;
    for (int i = 0; i < 1024; ++i) {
        greys.push_back(static_cast<unsigned char>(i % 4 == 3 ? 0 : i / 4));
    }
    ForEachImage([&](CStlImage& image) {
        const Plain plain(image);
        for (const int bits : plain.Colour() ? std::vector{24} : std::vector{24, 8}) {
            const Bytes block = Take(image.GetDib(bits));
            EXPECT_EQ(block, Block(plain.width, plain.height, bits, bits == 24 ? Bytes{} : greys, [&](int x, int y) {
                          const auto byte = [&](int p) { return plain.Byte(x, y, plain.Colour() ? p : 0); };
                          return bits == 24 ? Bytes{byte(2), byte(1), byte(0)} : Bytes{byte(0)};
                      }));
            CStlImage attached = RandomImage({2, 2}, 1, 9);
            ASSERT_EQ(attached.AttachDIB(Give(block)), 1);
            ASSERT_EQ(std::pair(attached.GetPlanes(), attached.GetBitsPixel()), std::pair(bits == 24 ? 3 : 1, -32));
            EXPECT_EQ(attached.GetWidth(), plain.width);
            EXPECT_TRUE(Agree(attached, Plain(attached).Map([&](double, int x, int y, int p) {
                return plain.Byte(x, y, plain.Colour() ? p : 0);
            })));
        }
        EXPECT_TRUE(image.GetDib(16) == nullptr && image.GetDib(-8) == nullptr);
    });
    EXPECT_EQ(Take(CStlImage().GetDib(8)).size(), 1064U);
}

TEST(Dib, QuantiserReproducesFewColours)
{
    const CStlImage image = Make(16, 16, 3, [](int x, int y, int p) { // every pixel in a cell of its own
        return std::array{16 * x + y % 7, 16 * y + x % 5, 3 * (x + y)}[static_cast<std::size_t>(p)];
    });
    const Plain plain(image);
    const Bytes block = Take(image.GetDib(8));
    ASSERT_EQ(block.size(), 1064U + 256U);
    plain.ForEach([&](int x, int y, int p) {
        const int entry = block[static_cast<std::size_t>(1064 + (15 - y) * 16 + x)];
        EXPECT_LE(std::abs(block[static_cast<std::size_t>(42 + entry * 4 - p)] - plain.Byte(x, y, p)), 4);
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
    Bytes tooManyColours = Block(1, 1, 8, Bytes(257 * 4), [](int, int) { return Bytes{1}; });
    tooManyColours[32] = tooManyColours[33] = 1;
    std::vector<Bytes> bads{{}, {good.begin(), good.begin() + 39}, {good.begin(), good.end() - 1}, tooManyColours};
    using Change = std::pair<std::size_t, std::uint32_t>;
    const Change changes[] = {{0, 39},         {0, 0xffffffff}, {4, 0},  {4, 0x80000000}, {8, 0},
                              {8, 0x80000000}, {8, 4},          {14, 2}, {16, 1},         {32, 1000}};
    for (const auto& [at, value] : changes) {
        bads.push_back(good);
        std::memcpy(bads.back().data() + at, &value, 4);
    }
    for (const auto& [width, height] : {std::pair{0x10000, 0x10000}, {0x8000001, 1}}) { // none or few bytes in 32 bits
        const int fields[] = {width, height, 1 | 32 << 16};
        bads.push_back(good);
        std::memcpy(bads.back().data() + 4, fields, sizeof fields);
    }
    for (const Bytes& bad : bads) {
        CStlImage image = RandomImage({2, 2}, 1, 1);
        const Plain before(image);
        const HDIB dib = Give(bad);
        EXPECT_EQ(image.AttachDIB(dib), 0);
        EXPECT_TRUE(Agree(image, before));
        EXPECT_EQ(GlobalFree(dib), nullptr); // a block that is refused stays the caller's
    }
    EXPECT_EQ(CStlImage().AttachDIB(nullptr), 0);
    EXPECT_EQ(CStlImage().AttachDIB(Give(good)), 1);
}
