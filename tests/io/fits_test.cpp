#include <cmath>
#include <limits>

#include "io/frame.h"
#include "io/reader.h"
#include "tests/io/files.h"
#include "tests/support/storage.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Equal numbers, or both NaN.
void ExpectSame(const std::vector<float>& got, const std::vector<float>& expected, const std::string& what)
{
    ASSERT_EQ(got.size(), expected.size()) << what;
    for (std::size_t i = 0; i < got.size(); ++i) {
        EXPECT_TRUE(got[i] == expected[i] || (std::isnan(got[i]) && std::isnan(expected[i])))
            << what << ", sample " << i << ": " << got[i] << " instead of " << expected[i];
    }
}

class Fits : public InFolder {};

TEST_F(Fits, ReadsEveryKindOfSample)
{
    struct Case {
        const char* name;
        int bits;
        std::vector<std::string> cards;
        std::string data; // 2 x 2
        std::vector<float> samples;
        int blank; // 0: none
    };
    const auto bytes = [](auto values) { return Bytes(values, true); };
    using I16 = std::vector<std::int16_t>;
    using I32 = std::vector<std::int32_t>;
    using I64 = std::vector<std::int64_t>;
    using F32 = std::vector<float>;
    using F64 = std::vector<double>;
    constexpr float k31 = 2147483648.0F;
    const Case cases[] = {
        {"bytes", 8, {}, "\x01\x7f\x80\xff", {1, 127, 128, 255}, 0},
        {"signed bytes", 8, {"BZERO   = -128"}, std::string("\0\x7f\x80\xff", 4), {-128, -1, 0, 127}, 0},
        {"16 bits", 16, {}, bytes(I16{1, -2, 32767, -32768}), {1, -2, 32767, -32768}, 0},
        {"unsigned 16", 16, {"BZERO = 32768.0"}, bytes(I16{1, -2, 32767, -32768}), {32769, 32766, 65535, 0}, 0},
        {"unsigned 32", 32, {"BZERO = 2147483648"}, bytes(I32{INT32_MIN, 0, 1, -1}), {0, k31, k31, k31}, 0},
        {"scaled 32", 32, {"BSCALE = 0.5", "BZERO = 10"}, bytes(I32{0, 1, -1, 3}), {10, 10.5, 9.5, 11.5}, 0},
        {"64 bits", 64, {}, bytes(I64{1LL << 40, -1, 0, 7}), {1099511627776.F, -1, 0, 7}, 0},
        {"floats", -32, {}, bytes(F32{kNan, kInfinity, 1e-42F, -2.5}), {kNan, kInfinity, 1e-42F, -2.5}, 0},
        {"floats with BZERO", -32, {"BZERO = 32768"}, bytes(F32{kNan, 0, 1, 2}), {kNan, 32768, 32769, 32770}, 0},
        {"doubles", -64, {}, bytes(F64{1e300, -1e300, 0.1, 1e-300}), {kInfinity, -kInfinity, 0.1F, 0}, 0},
        {"blank", 16, {"BLANK = -9"}, bytes(I16{-9, 1, 2, -9}), {-9, 1, 2, -9}, -9},
        {"blank, BZERO", 16, {"BLANK = -9", "BZERO = 10"}, bytes(I16{-9, 0, 1, 2}), {1, 10, 11, 12}, 1},
        {"blank, fine scale", 16, {"BLANK = 0", "BSCALE = 0.1"}, bytes(I16{0, 1, 10, 20}), {kNan, 0.1F, 1, 2}, 0},
        {"blank, no whole number", 32, {"BLANK = 2", "BZERO = 0.5"}, bytes(I32{2, 1, 0, 3}), {kNan, 1.5, 0.5, 3.5}, 0},
        {"blank beyond int", 64, {"BLANK = 99999999999"}, bytes(I64{99999999999, 1, 2, 3}), {kNan, 1, 2, 3}, 0},
        {"blank of floats", -32, {"BLANK = 1"}, bytes(F32{1, 2, 3, 4}), {1, 2, 3, 4}, 0},
    };
    for (const Case& c : cases) {
        const Frame frame = Load(Write("a.fits", Hdu(Cards(c.bits, {2, 2}, c.cards), c.data)));
        ExpectSame(Samples(frame.image), c.samples, c.name);
        EXPECT_EQ(frame.image.GetOrgBitsPixel(), c.bits) << c.name;
        EXPECT_EQ(frame.image.GetBitsPixel(), -32) << c.name;
        EXPECT_EQ(frame.image.IsBlankUsed(), c.blank != 0) << c.name;
        EXPECT_EQ(frame.image.GetBlank(), c.blank) << c.name;
    }
}

TEST_F(Fits, SavesEveryKindOfSample)
{
    struct Case {
        int bits;
        int blank; // 0: none
        std::vector<float> samples;
        std::vector<float> loaded;
        int loadedBlank;
    };
    const Case cases[] = {
        {-32, 0, {kNan, -kInfinity, 0.1F, 1e-42F}, {kNan, -kInfinity, 0.1F, 1e-42F}, -1},
        {-32, 7, {7.9F, 6.9F, 8, kNan}, {kNan, 6.9F, 8, kNan}, -1},
        {-64, 0, {kNan, kInfinity, 0.1F, -3}, {kNan, kInfinity, 0.1F, -3}, -1},
        {8, 0, {-5, 2.5, 3.5, 1e9F}, {0, 2, 4, 255}, -1},
        {8, 0, {kNan, 0, -kInfinity, 7}, {0, 1, 1, 7}, 0},
        {16, 0, {-1, 0.6F, 65535, 70000}, {0, 1, 65535, 65535}, -1},
        {16, 100, {100.5, 99, kNan, 0}, {0, 99, 0, 1}, 0},
        {32, 0, {0, 16777216, 4294967040.F, 1e20F}, {0, 16777216, 4294967040.F, 4294967296.F}, -1},
        {32, 0, {kNan, 0, 1, 2}, {0, 1, 1, 2}, 0},
    };
    for (const Case& c : cases) {
        CStlImage image = Numbered(4, 1, 1);
        std::copy(c.samples.begin(), c.samples.end(), image.GetImageAdr(0, 0, 0));
        image.SetBlankUsed(c.blank != 0);
        image.SetBlank(c.blank);
        Save(Path("a.fits"), image, {}, {c.bits});
        const Frame frame = Load(Path("a.fits"));
        const std::string name = std::to_string(c.bits) + " bits, first sample " + std::to_string(c.samples[0]);
        ExpectSame(Samples(frame.image), c.loaded, name);
        EXPECT_EQ(frame.image.IsBlankUsed() != 0 ? frame.image.GetBlank() : -1, c.loadedBlank) << name;
        EXPECT_EQ(Read("a.fits").size() % 2880, 0U);
    }
}

TEST_F(Fits, CarriesCardsCoordinatesAndLevels)
{
    const std::vector<std::string> cards{"OBJECT  = 'M 31'",     "HIERARCH ESO DET DIT = 1.0 / s",
                                         "CRPIX1  = 1.500D+00",  "CRPIX2  = 2",
                                         "CRVAL1  = 10.5",       "CTYPE1  = 'RA---TAN'",
                                         "CTYPE2  = 'DEC--TAN'", "CUNIT1  = 'deg'",
                                         "CD1_1   = -0.5",       "CD2_2   = 0.5",
                                         "A_ORDER =  2 / SIP",   "CBLACK  = 10",
                                         "CWHITE  = 90",         "CWHITE3 = 80",
                                         "CBLACK3 = 20"};
    std::vector<std::string> all = cards;
    all.insert(all.end(), {"CHECKSUM= 'abc'", "EXTEND  = T", "BSCALE  = 1", "", ""});
    const Frame frame = Load(Write("a.fits", Hdu(Cards(16, {3, 2, 3}, all), std::string(36, '\1'))));
    ASSERT_EQ(frame.header.Cards().size(), cards.size()) << "layout cards and blanks at the end are left behind";
    EXPECT_EQ(frame.image.GetLevelMax(1), 90.0);
    EXPECT_EQ(frame.image.GetOrgDefaultLevelMin(2), 20.0);

    CStlImage image = frame.image;
    image.FlipHorzPhysicalCoords();
    Save(Path("b.fits"), image, frame.header);
    const Frame second = Load(Path("b.fits"));
    double x = 0.0;
    tagMATRIX2_2 matrix{};
    image.GetCRPix(0, &x);
    EXPECT_EQ(second.header.Number("CRPIX1"), x) << "the record's coordinates replace the cards";
    EXPECT_EQ(second.image.GetLTMtx(&matrix), 1);
    image.GetLTMtx(&matrix);
    EXPECT_EQ(second.header.Number("CD1_1"), matrix.m11);
    for (const char* same : {"OBJECT", "ESO DET DIT", "CRPIX2", "CTYPE2", "A_ORDER", "CBLACK3"}) {
        EXPECT_EQ(second.header.Text(same), frame.header.Text(same)) << same;
    }
    EXPECT_EQ(second.image.GetLevelMax(2), 80.0);
    image.SetOwnLevel(0);
    Save(Path("c.fits"), image, frame.header);
    EXPECT_FALSE(Load(Path("c.fits")).header.Has("CBLACK3"));

    Save(Path("d.fits"), frame.image, frame.header);
    std::vector<std::string> kept = Load(Path("d.fits")).header.Cards();
    kept.resize(cards.size());
    EXPECT_EQ(kept[2], frame.header.Cards()[2]) << "an unchanged coordinate keeps its text";
}

TEST_F(Fits, LevelsShowEverythingUnlessTheFileSaysMore)
{
    const auto levels = [&](int bits, const std::string& data) {
        const Frame frame = Load(Write("a.fits", Hdu(Cards(bits, {2, 1}), data)));
        return std::pair(frame.image.GetLevelMin(0), frame.image.GetLevelMax(0));
    };
    EXPECT_EQ(levels(8, "\x05\x06"), std::pair(0.0, 255.0));
    EXPECT_EQ(levels(-32, Bytes<float>({-1.5, kNan}, true)), std::pair(-1.5, -0.5));
    EXPECT_EQ(levels(16, Bytes<std::int16_t>({300, 20}, true)), std::pair(20.0, 300.0));
}

TEST_F(Fits, FindsTheImage)
{
    const std::string head = Hdu(Cards(8, {}, {"EXTEND = T", "EXPTIME = 5", "OBJECT = 'primary'"}), "");
    const auto extension = [](const char* name, const char* sample) {
        return Hdu({"XTENSION= 'IMAGE   '", "BITPIX = 8", "NAXIS = 2", "NAXIS1 = 1", "NAXIS2 = 1", "PCOUNT = 0",
                    "GCOUNT = 1", std::string("EXTNAME = '") + name + "'", "INHERIT = T", "OBJECT = 'own'"},
                   sample);
    };
    Write("m.fits", head + extension("SCI", "\1") + extension("ERR", "\2"));
    Write("m.fits[9]", head + extension("SCI", "\3"));
    const auto first = [&](const std::string& name) { return Samples(Load(Path(name)).image)[0]; };
    EXPECT_EQ(first("m.fits"), 1.0F);
    EXPECT_EQ(first("m.fits[2]"), 2.0F);
    EXPECT_EQ(first("m.fits[err,1]"), 2.0F);
    EXPECT_EQ(first("m.fits[9]"), 3.0F) << "a file of that name goes first";
    const Header header = Load(Path("m.fits")).header;
    EXPECT_EQ(header.Number("EXPTIME"), 5.0) << "inherited";
    EXPECT_EQ(header.Text("OBJECT"), "own");
    for (const char* name : {"m.fits[3]", "m.fits[-1]", "m.fits[DQ]", "m.fits[1:1,1:1]", "m.fits[ERR,2]"}) {
        ExpectError([&] { Load(Path(name)); }, Path(name), "it has HDU 0: NAXIS = 0; 1 SCI: 1 x 1; 2 ERR");
    }
    ExpectError([&] { Load(Path("m.fits[0]")); }, Path("m.fits[0]"), "no image of two axes");
}

/// A gzip file of one stored block.
std::string Gzip(const std::string& bytes)
{
    std::uint32_t crc = ~0U;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) {
            crc = crc >> 1 ^ (0xEDB88320U & (0U - (crc & 1U)));
        }
    }
    const auto size = static_cast<std::uint16_t>(bytes.size());
    return std::string("\x1f\x8b\x08\0\0\0\0\0\0\x03\1", 11) +
           Bytes<std::uint16_t>({size, static_cast<std::uint16_t>(~size)}, false) + bytes +
           Bytes<std::uint32_t>({~crc, size}, false);
}

/// A 3 x 2 image in gzipped tiles of one row.
std::string Tiled(const std::string& width, const std::string& card = "")
{
    const std::string first = Gzip(Bytes<std::int16_t>({1, 2, 3}, true));
    const std::string heap = first + Gzip(Bytes<std::int16_t>({4, 5, -6}, true));
    const auto length = static_cast<std::int32_t>(first.size());
    const std::vector<std::string> cards{"XTENSION= 'BINTABLE'",
                                         "BITPIX  = 8",
                                         "NAXIS   = 2",
                                         "NAXIS1  = 8",
                                         "NAXIS2  = 2",
                                         "PCOUNT  = " + std::to_string(heap.size()),
                                         "GCOUNT  = 1",
                                         "TFIELDS = 1",
                                         "TTYPE1  = 'COMPRESSED_DATA'",
                                         "TFORM1  = '1PB(29)'",
                                         "ZIMAGE  = T",
                                         "ZBITPIX = 16",
                                         "ZNAXIS  = 2",
                                         "ZNAXIS1 = " + width,
                                         "ZNAXIS2 = 2",
                                         "ZTILE1  = 3",
                                         "ZTILE2  = 1",
                                         "ZCMPTYPE= 'GZIP_1'",
                                         "OBJECT  = 'M 1'",
                                         "EXTNAME = 'COMPRESSED_IMAGE'",
                                         card};
    return Hdu(Cards(8, {}, {"EXTEND  = T"}), "") +
           Hdu(cards, Bytes<std::int32_t>({length, 0, length, length}, true) + heap);
}

TEST_F(Fits, ReadsCompressedFiles)
{
    const std::vector<float> expected{1, 2, 3, 4, 5, -6};
    const Frame tiled = Load(Write("a.fz", Tiled("3")));
    EXPECT_EQ(Samples(tiled.image), expected);
    EXPECT_EQ(tiled.image.GetOrgBitsPixel(), 16);
    EXPECT_EQ(tiled.header.Cards().size(), 1U) << "only OBJECT says something about the sky";
    EXPECT_EQ(Samples(Load(Write("a.gz", Gzip(Tiled("3")))).image), expected);
    const std::string cut = Gzip(Hdu(Cards(16, {40, 50}), std::string(4000, 'x'))).substr(0, 5000);
    ExpectError([&] { Load(Write("a.gz", cut)); }, Path("a.gz"), "rows from 0 on cannot be read");
    ExpectError([&] { Load(Write("a.fz", Tiled("9"))); }, Path("a.fz"), "number of tiles");
    ExpectError([&] { Load(Write("a.fz", Tiled("3", "DATASUM = '12345'"))); }, Path("a.fz"), "DATASUM");
}

TEST_F(Fits, NamesHaveNoFurtherMeaning)
{
    const std::string bytes = Hdu(Cards(8, {1, 1}), "\5");
    for (const char* name : {"!a.fits", "a(b).fits", "a[1", "a b+3", "@list", "mem:", "~", "*.fits", "-", "a.gz"}) {
        EXPECT_EQ(Samples(Load(Write(name, bytes)).image)[0], 5.0F) << name;
    }
    for (const char* name : {"ftp://localhost/a.fits", "http://localhost/a", "stdin", "mem://", "shmem://h1"}) {
        ExpectError([&] { Load(name); }, name, "no such file");
    }
}

TEST_F(Fits, RefusesWhatItCannotRead)
{
    const std::string good = Hdu(Cards(16, {40, 50}), std::string(4000, 'x'));
    const auto hdu = [](int bits, const std::vector<long long>& sizes, const std::vector<std::string>& more = {}) {
        return Hdu(Cards(bits, sizes, more), std::string(64, 'x'));
    };
    struct Case {
        const char* name;
        std::string bytes;
        const char* reason;
    };
    const Case cases[] = {
        {"empty", "", "is empty"},
        {"text", "Clear skies tonight.\n", "is not a FITS, TIFF, PNG or camera raw file"},
        {"cut in the data", good.substr(0, 6800), "is truncated: its header announces 8640 bytes, there are 6800"},
        {"cut in the header", good.substr(0, 1000), "cannot be opened as FITS"},
        {"no END", Hdu(Cards(8, {2, 2}), "", false), "cannot be opened as FITS"},
        {"NAXIS 0", hdu(8, {}), "no image of two axes or more (HDU 0: NAXIS = 0"},
        {"NAXIS 1", hdu(8, {64}), "no image of two axes or more (HDU 0: 64"},
        {"NAXIS 4", hdu(8, {2, 2, 2, 2}), "NAXIS is 4"},
        {"two planes", hdu(8, {2, 2, 2}), "has 2 planes"},
        {"no rows", hdu(8, {777777701, 0}), "777777701 x 0"},
        {"negative", hdu(8, {-2, 2}), ""},
        {"overflow", hdu(-64, {4294967296, 4294967296}), "more than the file can hold"},
        {"large", hdu(16, {2000000000, 1000000000}), "more than the file can hold"},
        {"groups", hdu(-32, {0, 3, 2}, {"GROUPS = T", "PCOUNT = 6", "GCOUNT = 1"}), "no image"},
        {"BITPIX 17", hdu(17, {2, 2}), "BITPIX"},
        {"junk behind", hdu(8, {}) + std::string(3000, 'j'), "no image of two axes or more (HDU 0: NAXIS = 0; then"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Write("bad", c.bytes);
        ExpectError([&] { Load(Path("bad")); }, Path("bad"), c.reason);
    }
    ExpectError([&] { Load(Path("")); }, Path(""), "is a folder");
}

TEST_F(Fits, ReadsAFrameBeyondTheBudgetAndAnyBand)
{
    const CStlImage image = Numbered(601, 403, 3);
    Save(Path("a.fits"), image, {});
    const TightMemory tight(1 << 20);
    const Frame frame = Load(Path("a.fits"));
    EXPECT_TRUE(frame.image.GetStore()->IsPaged());
    EXPECT_EQ(Samples(frame.image), Samples(image));

    const auto reader = OpenFrame(Path("a.fits"));
    std::vector<float> band(601 * 50);
    reader->ReadRows(2, 353, 50, band.data());
    EXPECT_TRUE(std::equal(band.begin(), band.end(), image.GetImageAdr(0, 353, 2, 1)));
    reader->Close();
    reader->ReadRows(1, 7, 1, band.data());
    EXPECT_TRUE(std::equal(band.begin(), band.begin() + 601, image.GetImageAdr(0, 7, 1, 1)));
    ExpectError([&] { reader->ReadRows(1, 403, 1, band.data()); }, Path("a.fits"), "has no rows 403 to 403");
    ExpectError([&] { reader->ReadRows(3, 0, 1, band.data()); }, Path("a.fits"), "in plane 3");
    reader->Close();
    Save(Path("a.fits"), Numbered(5, 5, 1), {});
    ExpectError([&] { reader->ReadRows(0, 0, 1, band.data()); }, Path("a.fits"), "has changed");
}

} // namespace
