// Tile-compressed and packed files: what another writer makes, and what damage makes of it.

#include <cmath>
#include <map>

#include <fitsio.h>

#include "corvane/core/threads.h"
#include "io/reader.h"
#include "tests/io/files.h"
#include "tests/support/storage.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;

struct Way {
    const char* name;
    int code;
    int bits;
    long tile[2];
    float level = 4.0F; ///< of quantisation; 0 keeps floats as they are
    int method = NO_DITHER;
    float scale = 0.0F; ///< of Hcompress
    int smooth = 0;
};

const Way kWays[] = {
    {"Rice of bytes", RICE_1, 8, {83, 1}},
    {"Rice of 16 bits", RICE_1, 16, {20, 17}},
    {"Rice of 32 bits", RICE_1, 32, {84, 61}},
    {"gzip of 16 bits", GZIP_1, 16, {84, 3}},
    {"shuffled gzip of 32 bits", GZIP_2, 32, {33, 9}},
    {"PLIO", PLIO_1, 16, {84, 5}},
    {"Hcompress", HCOMPRESS_1, 16, {16, 16}},
    {"Hcompress of 32 bits", HCOMPRESS_1, 32, {84, 61}},
    {"Hcompress, quantised", HCOMPRESS_1, 16, {20, 61}, 4, NO_DITHER, 12, 0},
    {"Hcompress, smooth", HCOMPRESS_1, 16, {27, 30}, 4, NO_DITHER, 24, 1},
    {"floats, Rice", RICE_1, -32, {84, 1}, 4, NO_DITHER},
    {"floats, dithered", RICE_1, -32, {84, 7}, 4, SUBTRACTIVE_DITHER_1},
    {"doubles, zeros kept", RICE_1, -64, {50, 50}, 8, SUBTRACTIVE_DITHER_2},
    {"floats, gzip", GZIP_1, -32, {84, 4}, 4, SUBTRACTIVE_DITHER_1},
    {"floats, shuffled gzip", GZIP_2, -32, {84, 4}, 4, NO_DITHER},
    {"floats, Hcompress", HCOMPRESS_1, -32, {21, 61}, 4, SUBTRACTIVE_DITHER_1},
    {"floats as they are", GZIP_1, -32, {84, 4}, 0},
    {"doubles as they are", GZIP_2, -64, {84, 4}, 0},
};

/// A sloping field with noise; of floats with NaN, zeros and a flat part, which no quantum fits.
std::vector<float> Field(const Way& way, int width, int height)
{
    Random random(3);
    std::vector<float> samples;
    for (int i = 0; i < width * height; ++i) {
        const int x = i % width;
        const int y = i / width;
        const int slope = 200 + 3 * x + 5 * y;
        const auto noise = static_cast<float>(random.Between(-30, 30));
        const float v =
            way.code == PLIO_1 ? static_cast<float>((x / 5 + y) % 4 * 900) : static_cast<float>(slope) + noise;
        samples.push_back(way.bits == 8 ? std::fmod(v, 256.0F) : way.bits > 0 ? std::floor(v) : v);
        if (way.bits < 0) {
            samples.back() = x == 3 ? NAN : x % 11 == 7 ? 0.0F : y > height - 8 ? 1.5F : samples.back();
        }
    }
    return samples;
}

class Compressed : public InFolder {
protected:
    /// Writes with the yardstick, and returns what that reads again.
    std::vector<float> WriteTiles(const std::string& name, const Way& way, int width, int height) const
    {
        fitsfile* file = nullptr;
        int status = 0;
        long sizes[] = {width, height};
        long tile[] = {std::min<long>(way.tile[0], width), std::min<long>(way.tile[1], height)};
        std::vector<float> samples = Field(way, width, height);
        float nan = NAN;
        std::filesystem::remove(Path(name));
        fits_create_diskfile(&file, Path(name).c_str(), &status);
        fits_set_compression_type(file, way.code, &status);
        fits_set_tile_dim(file, 2, tile, &status);
        if (way.bits < 0) {
            fits_set_quantize_level(file, way.level, &status);
            fits_set_quantize_method(file, way.method, &status);
            fits_set_dither_seed(file, 9999, &status);
        }
        fits_set_hcomp_scale(file, way.scale, &status);
        fits_set_hcomp_smooth(file, way.smooth, &status);
        fits_create_img(file, way.bits, 2, sizes, &status);
        const auto write = [&](auto undefined, int type) {
            std::vector<decltype(undefined)> values(samples.begin(), samples.end());
            fits_write_imgnull(file, type, 1, width * height, values.data(), type < TFLOAT ? nullptr : &undefined,
                               &status);
        };
        way.bits == 8    ? write(std::uint8_t{}, TBYTE)
        : way.bits == 16 ? write(std::int16_t{}, TSHORT)
        : way.bits == 32 ? write(std::int32_t{}, TINT)
        : way.bits < -32 ? write(static_cast<double>(NAN), TDOUBLE)
                         : write(NAN, TFLOAT);
        fits_close_file(file, &status);
        fits_open_image(&file, Path(name).c_str(), READONLY, &status);
        fits_read_img(file, TFLOAT, 1, width * height, way.bits < 0 ? &nan : nullptr, samples.data(), nullptr, &status);
        fits_close_file(file, &status);
        EXPECT_EQ(status, 0) << way.name;
        return samples;
    }

    /// True when the file is refused; anything but an image or an Error ends the test.
    bool IsRefused(const std::string& bytes) const
    {
        std::filesystem::remove(Path("damaged")); // some systems wait for the disk when a file is cut and written again
        try {
            Load(Write("damaged", bytes));
        } catch (const corvane::Error&) {
            return true;
        }
        return false;
    }
};

TEST_F(Compressed, ReadsWhatTheYardstickWrites)
{
    for (const Way& way : kWays) {
        const std::vector<float> expected = WriteTiles("a.fz", way, 84, 61);
        const std::vector<float> samples = Samples(Load(Path("a.fz")).image);
        int different = 0;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            different += Near(samples.at(i), expected[i], 0) ? 0 : 1;
        }
        EXPECT_EQ(different, 0) << way.name;
    }
}

TEST_F(Compressed, ReadsBandsOfAnyHeightWithLittleMemory)
{
    const std::vector<float> expected = WriteTiles("a.fz", {"", RICE_1, 16, {9, 10}}, 84, 61);
    const TightMemory tight(1 << 20);
    const auto reader = OpenFrame(Path("a.fz"));
    std::vector<float> band(84 * 61);
    for (const int rows : {1, 7, 61}) {
        for (int y = 0; y < 61; y += rows) {
            reader->ReadRows(0, y, std::min(rows, 61 - y), band.data() + 84 * y);
        }
        EXPECT_EQ(band, expected) << rows;
    }
    WriteTiles("b.fz", {"", HCOMPRESS_1, 16, {400, 300}}, 400, 300);
    ExpectError([&] { Load(Path("b.fz")); }, Path("b.fz"), "needs 3 MiB of memory for a tile of 400 x 300 samples");
}

TEST_F(Compressed, ReadsWithAnyNumberOfThreads)
{
    constexpr int kSide = 1100;
    const Way ways[] = {{"rows", RICE_1, 16, {kSide, 1}}, {"tiles", GZIP_1, -32, {300, 70}, 0}};
    for (const Way& way : ways) {
        const std::vector<float> expected = WriteTiles("large.fz", way, kSide, kSide);
        for (const int threads : {1, 3}) {
            corvane::SetThreads(threads);
            const auto reader = OpenFrame(Path("large.fz"));
            std::vector<float> samples(expected.size());
            for (int first = 0; first < kSide; first += 250) {
                reader->ReadRows(0, first, std::min(250, kSide - first),
                                 samples.data() + static_cast<std::size_t>(first) * kSide);
            }
            EXPECT_TRUE(SameSamples(samples, expected)) << way.name << " with " << threads;
        }
    }
    corvane::SetThreads(0);
}

TEST_F(Compressed, RefusesHeadersThatMakeNoSense)
{
    WriteTiles("a.fz", {"", HCOMPRESS_1, 16, {40, 10}}, 40, 20);
    const std::string good = Read("a.fz");
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"ZTILE1", "0", "ZTILE1 is '0'; it must be a whole number of 1 or more"},
        {"ZTILE2", "'not applicable for this image file'", "ZTILE2 is 'not applicable"},
        {"ZNAXIS1", "10", "is damaged in tile 1: the data are those of a tile of another size"},
        {"ZNAXIS2", "99999", "NAXIS2 is 2, but an image of 40 x 99999 in tiles of 40 x 10"},
        {"ZNAXIS", "1000", "ZNAXIS is '1000'"},
        {"ZBITPIX", "17", "ZBITPIX is '17'"},
        {"ZBITPIX", "-32", "ZSCALE is missing"},
        {"ZCMPTYPE", "'BZIP2'", "ZCMPTYPE is 'BZIP2'; it must be RICE_1"},
        {"ZCMPTYPE", "'RICE_1'", "is damaged in tile 1"},
        {"ZCMPTYPE", "'GZIP_1'", "is damaged in tile 1: incorrect header check"},
        {"ZCMPTYPE", "'NOCOMPRESS'", "bytes for 400 samples"},
        {"ZVAL2", "7", "ZVAL2 is '7'; it must be a whole number from 0 to 1"},
        {"NAXIS1", "9", "NAXIS1 is 9, but its columns have 8 bytes"},
        {"NAXIS2", "3", "another number of tiles"},
        {"PCOUNT", "8", "its data lie outside of the heap"},
        {"PCOUNT", "-1", "PCOUNT is '-1'"},
        {"PCOUNT", "9000000000000000000", "is truncated"},
        {"TFIELDS", "2", "TFORM2 is missing"},
        {"TFORM1", "'1PZ(9)'", "TFORM1 is '1PZ(9)'"},
        {"TFORM1", "'8B'", "an array in the heap"},
        {"TTYPE1", "'OTHER'", "no column COMPRESSED_DATA"},
    };
    for (const auto& [keyword, value, reason] : cases) {
        SCOPED_TRACE(std::string(keyword) + " = " + value);
        std::string bytes = good;
        std::string card = keyword;
        card.resize(8, ' ');
        const std::size_t at = bytes.find(card + "=", bytes.find("XTENSION"));
        ASSERT_NE(at, bytes.npos);
        card += "= " + std::string(value);
        card.resize(80, ' ');
        ExpectError([&] { Load(Write("b.fz", bytes.replace(at, 80, card))); }, Path("b.fz"), reason);
    }
}

TEST_F(Compressed, DamageGivesAnErrorOrAnImage)
{
    Random random(1);
    for (const Way& way : kWays) {
        SCOPED_TRACE(way.name);
        WriteTiles("a.fz", way, 24, 19);
        const std::string good = Read("a.fz");
        const std::size_t header = good.find("XTENSION");
        const std::size_t data = (good.find("END     ", header) / 2880 + 1) * 2880;
        for (std::size_t length = 1; length < good.size(); length += length < data ? 997 : 11) {
            EXPECT_TRUE(IsRefused(good.substr(0, length))) << length;
        }
        // The tile's length in its descriptor, as if its data were cut.
        const auto full = static_cast<unsigned char>(good[data + 3]);
        int refused = 0;
        for (int length = 1; length < full; ++length) {
            std::string bytes = good;
            bytes[data + 3] = static_cast<char>(length);
            refused += IsRefused(bytes) ? 1 : 0;
        }
        EXPECT_TRUE(refused > 0 || way.code == PLIO_1 || full < 2);
        for (int i = 0; i < 150; ++i) {
            std::string bytes = good;
            for (int flips = random.Whole(1, 3); flips > 0; --flips) {
                const std::size_t from = random.Whole(0, 3) == 0 ? header : data;
                bytes[from + random.Next() % (good.size() - from)] = static_cast<char>(random.Next());
            }
            IsRefused(bytes);
        }
    }
}

TEST_F(Compressed, TellsOfSumsThatDoNotHold)
{
    const std::string path = Path("a.fits");
    Save(path, Numbered(9, 7, 1), {});
    fitsfile* file = nullptr;
    int status = 0;
    fits_open_diskfile(&file, path.c_str(), READWRITE, &status);
    fits_write_chksum(file, &status);
    fits_close_file(file, &status);
    ASSERT_EQ(status, 0);
    const std::string good = Read("a.fits");
    const auto contradiction = [&](std::size_t at) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(bytes[at] + 1);
        return OpenFrame(Write("b.fits", bytes))->Contradiction();
    };
    EXPECT_EQ(OpenFrame(path)->Contradiction(), "");
    EXPECT_NE(contradiction(good.find("CHECKSUM") + 70).find("header does not fit"), std::string::npos);
    EXPECT_NE(contradiction(2880).find("data do not have the sum"), std::string::npos);
}

/// A .Z file as the program compress writes it, with codes of at most 12 bits.
std::string Lzw(const std::string& bytes)
{
    std::map<std::string, unsigned> codes;
    for (unsigned i = 0; i < 256; ++i) {
        codes[std::string(1, static_cast<char>(i))] = i;
    }
    std::string packed("\x1f\x9d\x8c", 3);
    unsigned next = 257;
    int width = 9;
    int inGroup = 0;
    std::uint64_t window = 0;
    int held = 0;
    const auto put = [&](unsigned code) {
        window |= static_cast<std::uint64_t>(code) << held;
        held += width;
        for (; held >= 8; held -= 8, window >>= 8U) {
            packed += static_cast<char>(window);
        }
        inGroup = (inGroup + 1) % 8;
    };
    std::string present;
    for (const char c : bytes) {
        if (codes.count(present + c) != 0) {
            present += c;
            continue;
        }
        put(codes[present]);
        if (next < 1U << 12U) {
            codes[present + c] = next++;
        }
        present = c;
        if (next > 1U << static_cast<unsigned>(width) && width < 12) {
            while (inGroup != 0) {
                put(0);
            }
            ++width;
        }
    }
    put(codes[present]);
    return held == 0 ? packed : packed + static_cast<char>(window);
}

TEST_F(Compressed, UnpacksWholeFiles)
{
    Save(Path("a.fits"), Numbered(90, 70, 1), {}, {16});
    const std::string packed = Lzw(Read("a.fits"));
    const TightMemory tight(1 << 20);
    EXPECT_EQ(Samples(Load(Write("a.fits.Z", packed)).image), Samples(Load(Path("a.fits")).image));
    EXPECT_TRUE(std::filesystem::is_empty(tight.Folder())) << "what is unpacked has no name";
    Write("b.Z", packed.substr(0, 2000));
    ExpectError([&] { Load(Path("b.Z")); }, Path("b.Z"), "is truncated");
    Write("b.Z", std::string("\x1f\x9d\x8c\xff\xff", 5));
    ExpectError([&] { Load(Path("b.Z")); }, Path("b.Z"), "an LZW code has no meaning");
}

} // namespace
