#include <cmath>

#include "io/reader.h"
#include "tests/io/files.h"
#include "tests/support/storage.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;

class Fits : public InFolder {};

TEST_F(Fits, ReadsEveryKindOfSample)
{
    const auto bytes = [](auto values) { return Bytes(values, true); };
    using I16 = std::vector<std::int16_t>;
    using I32 = std::vector<std::int32_t>;
    using I64 = std::vector<std::int64_t>;
    using F32 = std::vector<float>;
    using F64 = std::vector<double>;
    constexpr float k31 = 2147483648.0F;
    // 2 x 2 samples; blank 0 is none.
    const std::tuple<const char*, int, std::vector<std::string>, std::string, std::vector<float>, int> cases[] = {
        {"bytes", 8, {}, "\x01\x7f\x80\xff", {1, 127, 128, 255}, 0},
        {"signed bytes", 8, {"BZERO   = -128"}, std::string("\0\x7f\x80\xff", 4), {-128, -1, 0, 127}, 0},
        {"unsigned 16", 16, {"BZERO = 32768.0"}, bytes(I16{1, -2, 32767, -32768}), {32769, 32766, 65535, 0}, 0},
        {"unsigned 32", 32, {"BZERO = 2147483648"}, bytes(I32{INT32_MIN, 0, 1, -1}), {0, k31, k31, k31}, 0},
        {"scaled 32", 32, {"BSCALE = 0.5", "BZERO = 10"}, bytes(I32{0, 1, -1, 3}), {10, 10.5, 9.5, 11.5}, 0},
        {"64 bits", 64, {}, bytes(I64{1LL << 40, -1, 0, 7}), {1099511627776.F, -1, 0, 7}, 0},
        {"floats", -32, {}, bytes(F32{NAN, INFINITY, 1e-42F, -2.5}), {NAN, INFINITY, 1e-42F, -2.5}, 0},
        {"doubles", -64, {}, bytes(F64{1e300, -1e300, 0.1, 1e-300}), {INFINITY, -INFINITY, 0.1F, 0}, 0},
        {"blank", 16, {"BLANK = -9"}, bytes(I16{-9, 1, 2, -9}), {-9, 1, 2, -9}, -9},
        {"blank, BZERO", 16, {"BLANK = -9", "BZERO = 10"}, bytes(I16{-9, 0, 1, 2}), {1, 10, 11, 12}, 1},
        {"blank, fine scale", 16, {"BLANK = 0", "BSCALE = 0.1"}, bytes(I16{0, 1, 10, 20}), {NAN, 0.1F, 1, 2}, 0},
        {"blank, no whole number", 32, {"BLANK = 2", "BZERO = 0.5"}, bytes(I32{2, 1, 0, 3}), {NAN, 1.5, 0.5, 3.5}, 0},
        {"blank beyond int", 64, {"BLANK = 99999999999"}, bytes(I64{99999999999, 1, 2, 3}), {NAN, 1, 2, 3}, 0},
        {"blank a text", 8, {"BLANK   = 'not applicable for this image file'"}, "\1\2\3\4", {1, 2, 3, 4}, 0},
        {"blank of floats", -32, {"BLANK = 1"}, bytes(F32{1, 2, 3, 4}), {1, 2, 3, 4}, 0},
    };
    for (const auto& [name, bits, cards, data, samples, blank] : cases) {
        const Frame frame = Load(Write("a.fits", Hdu(Cards(bits, {2, 2}, cards), data)));
        EXPECT_PRED2(SameSamples, Samples(frame.image), samples) << name;
        EXPECT_EQ(frame.image.GetOrgBitsPixel(), bits) << name;
        EXPECT_EQ(std::pair(frame.image.IsBlankUsed(), frame.image.GetBlank()), std::pair(blank != 0 ? 1 : 0, blank))
            << name;
    }
}

TEST_F(Fits, SavesFurtherImagesThatAreOpenedByName)
{
    const auto image = Make(7, 5, 1, [](int x, int y, int) { return x + 10 * y; });
    const auto noise = Make(4, 3, 3, [](int x, int y, int p) { return x == y ? NAN : x + 0.5 + p; });
    corvane::io::Header header;
    header.Set("BUNIT", "adu");
    Save(Path("a.fits"), image, {}, {16}, {{"COVERAGE", image}, {"NOISE", noise, header}});
    const Frame second = Load(Path("a.fits[NOISE]"));
    EXPECT_PRED2(SameSamples, Samples(second.image), Samples(noise));
    EXPECT_EQ(second.header.Text("BUNIT"), "adu");
    EXPECT_EQ(Samples(Load(Path("a.fits")).image), Samples(image));
    EXPECT_EQ(OpenFrame(Path("a.fits"))->Parts(),
              (std::vector<std::string>{"0: 7 x 5", "1 COVERAGE: 7 x 5", "2 NOISE: 4 x 3 x 3"}));
    EXPECT_EQ(Read("a.fits").size() % 2880, 0U);
    ExpectError([&] { Save(Path("a.tif"), image, {}, {}, {{"NOISE", noise}}); }, Path("a.tif"), "holds one image");
}

TEST_F(Fits, SavesEveryKindOfSample)
{
    // Blank 0 is none; of what is loaded, -1.
    const std::tuple<int, int, std::vector<float>, std::vector<float>, int> cases[] = {
        {-32, 0, {NAN, -INFINITY, 0.1F, 1e-42F}, {NAN, -INFINITY, 0.1F, 1e-42F}, -1},
        {-32, 7, {7.9F, 6.9F, 8, NAN}, {NAN, 6.9F, 8, NAN}, -1},
        {-64, 0, {NAN, INFINITY, 0.1F, -3}, {NAN, INFINITY, 0.1F, -3}, -1},
        {8, 0, {-5, 2.5, 3.5, 1e9F}, {0, 2, 4, 255}, -1},
        {8, 0, {NAN, 0, -INFINITY, 7}, {0, 1, 1, 7}, 0},
        {16, 0, {-1, 0.6F, 65535, 70000}, {0, 1, 65535, 65535}, -1},
        {16, 100, {100.5, 99, NAN, 0}, {0, 99, 0, 1}, 0},
        {32, 0, {0, 16777216, 4294967040.F, 1e20F}, {0, 16777216, 4294967040.F, 4294967296.F}, -1},
        {32, 0, {NAN, 0, 1, 2}, {0, 1, 1, 2}, 0},
    };
    for (const auto& [bits, blank, samples, loaded, loadedBlank] : cases) {
        CStlImage image = Numbered(4, 1, 1);
        std::copy(samples.begin(), samples.end(), image.GetImageAdr(0, 0, 0));
        image.SetBlankUsed(blank != 0);
        image.SetBlank(blank);
        Save(Path("a.fits"), image, {}, {bits, SampleScale::kNone});
        const Frame frame = Load(Path("a.fits"));
        SCOPED_TRACE(testing::Message() << bits << " bits, first sample " << samples[0]);
        EXPECT_PRED2(SameSamples, Samples(frame.image), loaded);
        EXPECT_EQ(frame.image.IsBlankUsed() != 0 ? frame.image.GetBlank() : -1, loadedBlank);
        EXPECT_EQ(Read("a.fits").size() % 2880, 0U);
    }
}

TEST_F(Fits, CarriesCardsCoordinatesAndLevels)
{
    std::vector<std::string> cards{"OBJECT  = 'M 31'",     "HIERARCH ESO DET DIT = 1.0 / s",
                                   "CRPIX1  = 1.500D+00",  "CRPIX2  = 2",
                                   "CTYPE1  = 'RA---TAN'", "CD1_1   = -0.5",
                                   "CD2_2   = 0.5",        "A_ORDER =  2 / SIP",
                                   "CBLACK  = 10",         "CWHITE  = 90",
                                   "CWHITE3 = 80",         "CBLACK3 = 20"};
    const std::size_t count = cards.size();
    cards.insert(cards.end(), {"CHECKSUM= 'abc'", "EXTEND  = T", "BSCALE  = 1", "", ""});
    const Frame frame = Load(Write("a.fits", Hdu(Cards(16, {3, 2, 3}, cards), std::string(36, '\1'))));
    ASSERT_EQ(frame.header.Cards().size(), count) << "layout cards and blanks at the end are left behind";
    EXPECT_EQ(std::pair(frame.image.GetLevelMax(1), frame.image.GetOrgDefaultLevelMin(2)), std::pair(90.0, 20.0));
    Save(Path("b.fits"), frame.image, frame.header);
    EXPECT_EQ(Load(Path("b.fits")).header.Cards()[2], frame.header.Cards()[2])
        << "an unchanged coordinate keeps its text";

    CStlImage image = frame.image;
    image.FlipHorzPhysicalCoords();
    Save(Path("c.fits"), image, frame.header);
    const Frame flipped = Load(Path("c.fits"));
    EXPECT_EQ(flipped.header.Number("CRPIX1"), 2.5) << "the record's coordinates replace the cards";
    EXPECT_EQ(flipped.header.Number("CD1_1"), 0.5);
    for (const char* same : {"OBJECT", "ESO DET DIT", "CRPIX2", "CTYPE1", "A_ORDER", "CBLACK3"}) {
        EXPECT_EQ(flipped.header.Text(same), frame.header.Text(same)) << same;
    }
    image.SetOwnLevel(0);
    Save(Path("d.fits"), image, frame.header);
    EXPECT_FALSE(Load(Path("d.fits")).header.Has("CBLACK3"));
}

TEST_F(Fits, LevelsShowEverythingUnlessTheFileSaysMore)
{
    const auto levels = [&](int bits, const std::string& data) {
        const Frame frame = Load(Write("a.fits", Hdu(Cards(bits, {2, 1}), data)));
        return std::pair(frame.image.GetLevelMin(0), frame.image.GetLevelMax(0));
    };
    EXPECT_EQ(levels(8, "\x05\x06"), std::pair(0.0, 255.0));
    EXPECT_EQ(levels(-32, Bytes<float>({-1.5, NAN}, true)), std::pair(-1.5, -0.5));
    EXPECT_EQ(levels(16, Bytes<std::int16_t>({300, 20}, true)), std::pair(20.0, 300.0));
}

TEST_F(Fits, FindsTheImage)
{
    const std::string head = Hdu(Cards(8, {}, {"EXTEND = T", "EXPTIME = 5", "OBJECT = 'primary'"}), "");
    const auto extension = [](const char* name, const char* sample, const char* more = "OBJECT = 'own'") {
        const std::string extName = std::string("EXTNAME = '") + name + "'";
        auto cards = Cards(8, {1, 1}, {"PCOUNT = 0", "GCOUNT = 1", extName, "INHERIT = T", more});
        cards[0] = "XTENSION= 'IMAGE   '";
        return Hdu(cards, sample);
    };
    Write("m.fits", head + extension("SCI", "\1") + extension("ERR", "\2"));
    Write("m.fits[9]", head + extension("SCI", "\3", "EXTVER  = 7"));
    const auto first = [&](const std::string& name) { return Samples(Load(Path(name)).image)[0]; };
    EXPECT_EQ(first("m.fits"), 1.0F);
    EXPECT_EQ(first("m.fits[2]"), 2.0F);
    EXPECT_EQ(first("m.fits[err,1]"), 2.0F);
    EXPECT_EQ(first("m.fits[9]"), 3.0F) << "a file of that name goes first";
    const Header header = Load(Path("m.fits")).header;
    EXPECT_EQ(header.Number("EXPTIME"), 5.0) << "inherited";
    EXPECT_EQ(header.Text("OBJECT"), "own");
    const CFitsExtension err = OpenFrame(Path("m.fits[2]"))->Info().extension.value();
    EXPECT_EQ(err.GetNumber(), 2);
    EXPECT_STREQ(err.GetName(), "ERR");
    EXPECT_EQ(err.GetVersion(), 1);
    EXPECT_EQ(err.GetCardCount(), 10);
    EXPECT_EQ(err.GetCard(0), "XTENSION= 'IMAGE   '" + std::string(60, ' '));
    EXPECT_EQ(err.FindCard("OBJECT"), err.GetCard(9));
    EXPECT_EQ(err.FindCard("EXPTIME"), nullptr) << "of the primary header";
    EXPECT_EQ(OpenFrame(Path("m.fits[9]"))->Info().extension.value().GetVersion(), 7);
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

/// A 3 x 2 image in gzipped tiles of one row; `more` gives its width.
std::string Tiled(const std::vector<std::string>& more)
{
    const std::string first = Gzip(Bytes<std::int16_t>({1, 2, 3}, true));
    const std::string heap = first + Gzip(Bytes<std::int16_t>({4, 5, -6}, true));
    const auto length = static_cast<std::int32_t>(first.size());
    std::vector<std::string> cards =
        Cards(8, {8, 2},
              {"PCOUNT  = 58", "GCOUNT  = 1", "TFIELDS = 1", "TFORM1  = '1PB(29)'", "ZIMAGE  = T", "ZBITPIX = 16",
               "ZNAXIS  = 2", "ZNAXIS2 = 2", "ZTILE1  = 3", "ZTILE2  = 1", "ZCMPTYPE= 'GZIP_1'", "OBJECT  = 'M 1'",
               "TTYPE1  = 'COMPRESSED_DATA'", "EXTNAME = 'COMPRESSED_IMAGE'"});
    cards[0] = "XTENSION= 'BINTABLE'";
    cards.insert(cards.end(), more.begin(), more.end());
    return Hdu(Cards(8, {}, {"EXTEND  = T"}), "") +
           Hdu(cards, Bytes<std::int32_t>({length, 0, length, length}, true) + heap);
}

TEST_F(Fits, ReadsCompressedFiles)
{
    const std::vector<float> expected{1, 2, 3, 4, 5, -6};
    const Frame tiled = Load(Write("a.fz", Tiled({"ZNAXIS1 = 3"})));
    EXPECT_EQ(Samples(tiled.image), expected);
    EXPECT_EQ(tiled.image.GetOrgBitsPixel(), 16);
    EXPECT_EQ(tiled.header.Cards().size(), 1U) << "only OBJECT says something about the sky";
    EXPECT_EQ(Samples(Load(Write("a.gz", Gzip(Tiled({"ZNAXIS1 = 3"})))).image), expected);
    const std::string cut = Gzip(Hdu(Cards(16, {40, 50}), std::string(4000, 'x'))).substr(0, 5000);
    ExpectError([&] { Load(Write("a.gz", cut)); }, Path("a.gz"), "the file ends within the gzip data");
    ExpectError([&] { Load(Write("a.fz", Tiled({"ZNAXIS1 = 9"}))); }, Path("a.fz"), "number of tiles");
    ExpectError([&] { Load(Write("a.fz", Tiled({"ZNAXIS1 = 3", "DATASUM = '12345'"}))); }, Path("a.fz"), "DATASUM");
}

TEST_F(Fits, ReadsOnePlaneOfACube)
{
    std::string samples;
    for (int i = 0; i < 12; ++i) {
        samples += std::string(4, static_cast<char>(i));
    }
    auto extension = Cards(8, {2, 2, 4, 3}, {"PCOUNT = 0", "GCOUNT = 1", "EXTNAME = 'SCI'", "EXTVER = 2"});
    extension[0] = "XTENSION= 'IMAGE'";
    const std::string deep = Hdu(Cards(8, {2, 2, 3, 1}), std::string(12, '\5')) + Hdu(extension, samples);
    Write("c.fits", deep);
    EXPECT_EQ(Load(Path("c.fits")).image.GetPlanes(), 3) << "an axis of length 1 counts for nothing";
    const std::pair<const char*, float> cases[] = {
        {"c.fits[plane 2]", 5}, {"c.fits[1, plane 1]", 0}, {"c.fits[SCI,2, plane 6]", 5}, {"c.fits[sci,plane 12]", 11}};
    for (const auto& [name, value] : cases) {
        const auto reader = OpenFrame(Path(name));
        EXPECT_EQ(reader->Info().plane, std::stoll(std::string(name).substr(std::string(name).find("plane ") + 6)));
        EXPECT_EQ(Samples(Load(Path(name)).image), std::vector<float>(4, value)) << name;
    }
    EXPECT_EQ(OpenFrame(Path("c.fits[1]"), Cubes::kFirstPlane)->Info().axes, (std::vector<long long>{2, 2, 4, 3}));
    ExpectError([&] { Load(Path("c.fits[1]")); }, Path("c.fits[1]"), "one plane, as '" + Path("c.fits[1, plane 1]'"));
    ExpectError([&] { Load(Path("c.fits[plane 4]")); }, Path("c.fits[plane 4]"), "has no plane 4");
    ExpectError([&] { Load(Path("c.fits[plane 0]")); }, Path("c.fits[plane 0]"), "counted from 1");
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
    ExpectRefused({
        {"empty", "", "is empty"},
        {"text", "Clear skies tonight.\n", "is not a FITS, TIFF, PNG or camera raw file"},
        {"cut in the data", good.substr(0, 6800), "is truncated: its header announces 8640 bytes, there are 6800"},
        {"no END", std::string(good).replace(good.find("END"), 3, "   "), "cannot be opened as FITS"},
        {"NAXIS 0", hdu(8, {}), "no image of two axes or more (HDU 0: NAXIS = 0"},
        {"NAXIS 1", hdu(8, {64}), "no image of two axes or more (HDU 0: 64"},
        {"NAXIS 4", hdu(8, {2, 2, 2, 2}), "has 4 planes in its 2 x 2 x 2 x 2 samples"},
        {"BSCALE 0", hdu(8, {2, 2}, {"BSCALE  = 0.0"}), "BSCALE is '0.0'; it must be a number other than 0"},
        {"BZERO no number", hdu(8, {2, 2}, {"BZERO   = 'none'"}), "BZERO is 'none'; it must be a number"},
        {"NAXIS2 no number", std::string(good).replace(good.find("= 50"), 4, "= no"),
         "NAXIS2 is 'no'; it must be a wh"},
        {"two planes", hdu(8, {2, 2, 2}), "has 2 planes"},
        {"no rows", hdu(8, {777777701, 0}), "777777701 x 0"},
        {"overflow", hdu(-64, {4294967296, 4294967296}), "more than the file can hold"},
        {"groups", hdu(-32, {0, 3, 2}, {"GROUPS = T", "PCOUNT = 6", "GCOUNT = 1"}), "no image"},
        {"BITPIX 17", hdu(17, {2, 2}), "BITPIX"},
        {"junk behind", hdu(8, {}) + std::string(3000, 'j'), "no image of two axes or more (HDU 0: NAXIS = 0; then"},
    });
    ExpectError([&] { Load(Path("")); }, Path(""), "is a folder");
}

TEST_F(Fits, ReadsAFrameBeyondTheBudgetAndRefusesRowsThatAreNotThere)
{
    const CStlImage image = Numbered(601, 403, 3);
    Save(Path("a.fits"), image, {});
    const TightMemory tight(1 << 20);
    const Frame frame = Load(Path("a.fits"));
    EXPECT_TRUE(frame.image.GetStore()->IsPaged());
    EXPECT_EQ(Samples(frame.image), Samples(image));

    const auto reader = OpenFrame(Path("a.fits"));
    std::vector<float> band(601);
    ExpectError([&] { reader->ReadRows(1, 403, 1, band.data()); }, Path("a.fits"), "has no rows 403 to 403");
    ExpectError([&] { reader->ReadRows(3, 0, 1, band.data()); }, Path("a.fits"), "in plane 3");
    reader->Close();
    Save(Path("a.fits"), Numbered(5, 5, 1), {});
    ExpectError([&] { reader->ReadRows(0, 0, 1, band.data()); }, Path("a.fits"), "has changed");
}

} // namespace
