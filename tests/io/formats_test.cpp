#include <cmath>
#include <limits>
#include <numeric>

#include "io/frame.h"
#include "io/metadata.h"
#include "io/picture.h"
#include "io/reader.h"
#include "tests/io/files.h"
#include "tests/support/storage.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;

class Formats : public InFolder {};

TEST_F(Formats, RoundTripAndBands)
{
    struct Case {
        const char* name;
        int bits;
        int most;
        int loadedBits;
    };
    for (const Case& c : {Case{"a.fits", 0, 65535, -32}, Case{"a.TIF", 0, 65535, -32}, Case{"a.tiff", 8, 255, 8},
                          Case{"a.tiff", 16, 65535, 16}, Case{"a.tiff", 32, 65535, 32}, Case{"a.tiff", -64, 65535, -64},
                          Case{"a.png", 0, 65535, 16}, Case{"a.png", 8, 255, 8}}) {
        for (const int planes : {1, 3}) {
            const CStlImage image = Numbered(61, 47, planes, c.most);
            Header header;
            header.Set("EXPTIME", 2.5);
            header.AddHistory(std::string(200, 'h'));
            Save(Path(c.name), image, header, {c.bits});
            const Frame frame = Load(Path(c.name));
            const std::string what = c.name + std::to_string(c.bits);
            EXPECT_EQ(Samples(frame.image), Samples(image)) << what;
            EXPECT_EQ(frame.image.GetOrgBitsPixel(), c.loadedBits) << what;
            EXPECT_EQ(frame.header.Number("EXPTIME"), 2.5) << what;
            EXPECT_EQ(frame.header.History(), header.History()) << what;
            EXPECT_EQ(RowOrder(frame.header), "BOTTOM-UP") << what << ": as a header without ROWORDER means";
            const auto reader = OpenFrame(Path(c.name));
            std::vector<float> band(61 * 5);
            for (const int first : {40, 3, 41}) {
                reader->ReadRows(planes - 1, first, 5, band.data());
                EXPECT_TRUE(std::equal(band.begin(), band.end(), image.GetImageAdr(0, first, planes - 1, 1))) << what;
                reader->Close();
            }
        }
    }
}

TEST_F(Formats, DecodedFramesShareABound)
{
    const CStlImage image = Numbered(300, 300, 1);
    Save(Path("a.png"), image, {});
    const TightMemory tight(1 << 20); // a quarter of it holds one frame of 180,000 bytes, not two
    const auto first = OpenFrame(Path("a.png"));
    const auto second = OpenFrame(Path("a.png"));
    std::vector<float> row(300);
    first->ReadRows(0, 0, 1, row.data());
    second->ReadRows(0, 0, 1, row.data());
    Write("a.png", "gone");
    second->ReadRows(0, 299, 1, row.data());
    EXPECT_EQ(row[299], *image.GetImageAdr(299, 299, 0, 1)) << "the last one decoded is kept";
    ExpectError([&] { first->ReadRows(0, 0, 1, row.data()); }, Path("a.png"), "PNG");
}

TEST_F(Formats, RefuseWhatTheyCannotHold)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    struct Case {
        const char* name;
        int bits;
        std::vector<float> samples;
        const char* reason; // "" when it is saved
    };
    const Case cases[] = {
        {"a.png", 0, {0, 65536}, "holds counts from 0 to 65535, the samples are 0 to 65536; save as FITS"},
        {"a.png", 8, {0, 256}, "holds counts from 0 to 255"},
        {"a.png", 0, {-1, 5}, "the samples are -1 to 5"},
        {"a.png", 0, {0.25, 1}, "the samples are 0.25 to 1"},
        {"a.png", 0, {0, 1}, ""},
        {"a.png", 0, {nan, 5}, "cannot hold undefined samples"},
        {"a.png", -32, {1, 2}, "-32 bits cannot be saved in this format; it has 16, 8"},
        {"a.tif", 16, {7, 5}, "cannot hold undefined samples"},
        {"a.tif", 24, {1, 2}, "24 bits"},
        {"a.fits", 64, {1, 2}, "64 bits"},
        {"a.jpg", 0, {1, 2}, "unknown format '.jpg'; frames are saved as .fits, .fit, .fts, .tif, .tiff, .png"},
        {"a.fits.gz", 0, {1, 2}, "unknown format '.gz'"},
        {"a", 0, {1, 2}, "unknown format ''"},
    };
    for (const Case& c : cases) {
        CStlImage image = Numbered(2, 1, 1);
        std::copy(c.samples.begin(), c.samples.end(), image.GetImageAdr(0, 0, 0));
        image.SetBlankUsed(1);
        image.SetBlank(7);
        if (*c.reason == '\0') {
            Save(Path(c.name), image, {}, {c.bits});
            EXPECT_EQ(Samples(Load(Path(c.name)).image), c.samples);
            std::filesystem::remove(Path(c.name));
            continue;
        }
        ExpectError([&] { Save(Path(c.name), image, {}, {c.bits}); }, Path(c.name), c.reason);
        EXPECT_EQ(FileCount(), 0U) << c.name;
    }
    ExpectError([&] { Save(Path("a.fits"), CStlImage(), {}); }, Path("a.fits"), "no samples");
}

/// Tags of a 3 x 2 image of 16 bits in one strip; others replace them or come in addition.
std::string TiffWith(std::vector<TiffTag> tags, const std::string& samples)
{
    for (const TiffTag& base : std::initializer_list<TiffTag>{{256, 4, 3},
                                                              {257, 4, 2},
                                                              {258, 3, 16},
                                                              {259, 3, 1},
                                                              {262, 3, 1},
                                                              {273, 4, 8},
                                                              {277, 3, 1},
                                                              {278, 4, 2},
                                                              {279, 4, static_cast<std::uint32_t>(samples.size())}}) {
        if (std::none_of(tags.begin(), tags.end(), [&](const TiffTag& tag) { return tag.tag == base.tag; })) {
            tags.push_back(base);
        }
    }
    std::sort(tags.begin(), tags.end(), [](const TiffTag& a, const TiffTag& b) { return a.tag < b.tag; });
    return Tiff(tags, samples);
}

TEST_F(Formats, TiffOfOtherLayouts)
{
    using U16 = std::vector<std::uint16_t>;
    const auto offsets = [](std::vector<std::uint32_t> values) { return Bytes(values, false); };
    std::vector<std::uint16_t> tile(16 * 16);
    std::iota(tile.begin(), tile.end(), std::uint16_t{0});
    const std::string six = Bytes(U16{1, 2, 3, 4, 5, 65535}, false);
    const std::string bytes = "\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17\20\21\22";
    const TiffTag grey{258, 3, 0, Bytes(U16{8, 8}, false)};
    const TiffTag rgb{258, 3, 0, Bytes(U16{8, 8, 8}, false)};
    const TiffTag starts{273, 4, 0, offsets({8, 14, 20})};
    const TiffTag sizes{279, 4, 0, offsets({6, 6, 6})};
    struct Case {
        const char* name;
        std::vector<TiffTag> tags;
        std::string samples;
        std::vector<float> expected;
    };
    const Case cases[] = {
        {"grey", {}, six, {1, 2, 3, 4, 5, 65535}},
        {"bottom up, signed", {{274, 3, 4}, {339, 3, 2}}, six, {1, 2, 3, 4, 5, -1}},
        {"white is zero", {{262, 3, 0}}, six, {65534, 65533, 65532, 65531, 65530, 0}},
        {"grey and alpha", {grey, {277, 3, 2}, {338, 3, 0}}, bytes.substr(0, 12), {1, 3, 5, 7, 9, 11}},
        {"RGB pixels",
         {rgb, {262, 3, 2}, {277, 3, 3}},
         bytes,
         {1, 4, 7, 10, 13, 16, 2, 5, 8, 11, 14, 17, 3, 6, 9, 12, 15, 18}},
        {"RGB planes",
         {rgb, {262, 3, 2}, starts, {277, 3, 3}, sizes, {284, 3, 2}},
         bytes,
         {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}},
        {"a tile", {{322, 3, 16}, {323, 3, 16}, {324, 4, 8}, {325, 4, 512}}, Bytes(tile, false), {0, 1, 2, 16, 17, 18}},
    };
    for (const Case& c : cases) {
        const Frame frame = Load(Write("a.tif", TiffWith(c.tags, c.samples)));
        EXPECT_EQ(Samples(frame.image), c.expected) << c.name;
        EXPECT_EQ(IsBottomUp(frame.header), c.name == cases[1].name) << c.name;
    }
    const std::string text = "First light\nwith a new camera";
    const Frame frame =
        Load(Write("a.tif", TiffWith({{270, 2, 0, text + std::string(1, '\0')}}, std::string(12, '\1'))));
    EXPECT_TRUE(frame.header.Cards()[1].starts_with("COMMENT with a new camera "));
}

TEST_F(Formats, RawMosaicIsNeverDemosaiced)
{
    const int width = 64;
    const int height = 48;
    const CStlImage image = Numbered(width, height, 1, 4095);
    std::vector<std::uint16_t> counts;
    for (const float sample : Samples(image)) {
        counts.push_back(static_cast<std::uint16_t>(sample));
    }
    const std::string samples = Bytes(counts, false);
    const std::string nul(1, '\0');
    Write("a.dng", TiffWith({{254, 4, 0},
                             {256, 4, width},
                             {257, 4, height},
                             {262, 3, 32803},
                             {271, 2, 0, "Maker" + nul},
                             {272, 2, 0, "Camera 1" + nul},
                             {278, 4, height},
                             {33421, 3, 0, Bytes<std::uint16_t>({2, 2}, false)},
                             {33422, 1, 0, std::string("\1\2\0\1", 4)},
                             {50706, 1, 0, std::string("\1\4\0\0", 4)},
                             {50717, 4, 4095}},
                            samples));
    const Frame frame = Load(Path("a.dng"));
    EXPECT_STREQ(frame.image.GetOrgFileFormat(), "RAW");
    EXPECT_EQ(Samples(frame.image), Samples(image));
    EXPECT_EQ(BayerPattern(frame.header), "GBRG");
    EXPECT_EQ(RowOrder(frame.header), "TOP-DOWN");
    EXPECT_EQ(frame.header.Text("INSTRUME"), "Maker Camera 1");
}

TEST_F(Formats, RefuseDamagedFiles)
{
    Save(Path("a.png"), Numbered(40, 40, 1), {});
    const std::string png = Read("a.png");
    Save(Path("a.tif"), Numbered(40, 40, 1), {});
    const std::string tiff = Read("a.tif");
    const std::string samples(12, '\1');
    struct Case {
        const char* name;
        std::string bytes;
        const char* reason;
    };
    const Case cases[] = {
        {"cut PNG", png.substr(0, png.size() / 2), "is a damaged PNG file"},
        {"PNG of 2^31 columns", std::string(png).replace(16, 4, "\x7f\xff\xff\xff"), "is a damaged PNG file"},
        {"TIFF without directory", tiff.substr(0, 100), "cannot be opened as TIFF"},
        {"TIFF with a cut strip", TiffWith({{273, 4, 4000}}, samples), "row 0 cannot be read"},
        {"palette", TiffWith({{258, 3, 8}, {262, 3, 3}, {320, 3, 0, std::string(1536, '\1')}}, samples), "palette"},
        {"CMYK", TiffWith({{262, 3, 5}}, samples), "photometric interpretation 5"},
        {"12 bits", TiffWith({{258, 3, 12}}, samples), "samples of 12 bits"},
        {"half floats", TiffWith({{339, 3, 3}}, samples), "16 bits in floating point"},
        {"absurd size", TiffWith({{256, 4, 100000}, {257, 4, 100000}, {278, 4, 100000}}, samples),
         "more than the file can hold"},
        {"absurd tiles", TiffWith({{322, 4, 1 << 16}, {323, 4, 1 << 16}, {324, 4, 8}, {325, 4, 12}}, samples),
         "tiles of an absurd size"},
        {"no width", TiffWith({{256, 4, 0}}, samples), "cannot be opened as TIFF"},
    };
    for (const Case& c : cases) {
        Write("bad", c.bytes);
        SCOPED_TRACE(c.name);
        testing::internal::CaptureStderr();
        ExpectError([&] { Load(Path("bad")); }, Path("bad"), c.reason);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << c.name << ": a library never prints";
    }
}

TEST_F(Formats, PictureShowsLevelsTheRightWayUp)
{
    for (const int planes : {1, 3}) {
        CStlImage image = Numbered(5, 4, planes, 300);
        for (int p = 0; p < planes; ++p) {
            image.SetLevel(p, 10.0 * p, 100.0 + 50.0 * p);
        }
        *image.GetImageAdr(2, 1, 0) = std::numeric_limits<float>::quiet_NaN();
        for (const bool bottomUp : {false, true}) {
            SavePicture(Path("a.png"), image, bottomUp);
            const CStlImage picture = Load(Path("a.png")).image;
            ASSERT_EQ(picture.GetPlanes(), planes);
            for (int i = 0; i < 20 * planes; ++i) {
                const int y = i / 5 % 4;
                const int from = bottomUp ? 3 - y : y;
                const bool isNan = std::isnan(image.GetPixelGrayRaw(i % 5, from, i / 20));
                EXPECT_EQ(picture.GetPixelGrayRaw(i % 5, y, i / 20),
                          isNan ? 0 : image.GetPixelGray256(i % 5, from, i / 20));
            }
        }
    }
}

} // namespace
