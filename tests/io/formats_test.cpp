#include <cmath>
#include <numeric>

#include "io/bayer.h"
#include "io/formats/srgb_profile.h"
#include "io/metadata.h"
#include "io/picture.h"
#include "io/reader.h"
#include "tests/io/files.h"
#include "tests/io/tiff.h"
#include "tests/support/posix/failing_malloc.h"
#include "tests/support/storage.h"

namespace {

using namespace corvane::io;
using namespace corvane::test;

class Formats : public InFolder {};

TEST_F(Formats, RoundTripAndBands)
{
    const std::tuple<const char*, int, int, int> cases[] = {
        {"a.fits", 0, 65535, -32}, {"a.TIF", 0, 65535, -32},    {"a.tiff", 8, 255, 8},   {"a.tiff", 16, 65535, 16},
        {"a.tiff", 32, 65535, 32}, {"a.tiff", -64, 65535, -64}, {"a.png", 0, 65535, 16}, {"a.png", 8, 255, 8}};
    for (const auto& [name, bits, most, loadedBits] : cases) {
        for (const int planes : {1, 3}) {
            const CStlImage image = Numbered(61, 47, planes, most);
            Header header;
            header.Set("EXPTIME", 2.5);
            header.AddHistory(std::string(200, 'h'));
            Save(Path(name), image, header, {bits});
            const Frame frame = Load(Path(name));
            SCOPED_TRACE(name + std::to_string(bits));
            EXPECT_EQ(Samples(frame.image), Samples(image));
            EXPECT_EQ(Read(name).find("acsp"), std::string::npos) << "a profile, which no image has";
            EXPECT_EQ(frame.image.GetOrgBitsPixel(), loadedBits);
            EXPECT_EQ(frame.header.Number("EXPTIME"), 2.5);
            EXPECT_EQ(frame.header.History(), header.History());
            EXPECT_EQ(RowOrder(frame.header), "BOTTOM-UP") << "as a header without ROWORDER means";
            const auto reader = OpenFrame(Path(name));
            std::vector<float> band(61 * 5);
            for (const int first : {40, 3, 41}) {
                reader->ReadRows(planes - 1, first, 5, band.data());
                EXPECT_TRUE(std::equal(band.begin(), band.end(), image.GetImageAdr(0, first, planes - 1, 1)));
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

TEST_F(Formats, IntegersOnAScale)
{
    const float step = 100.0F / 254; // of 8 bits, one of them for what is undefined
    // The samples before and after, and what becomes of levels 0 to 100.
    const std::tuple<const char*, SampleScale, std::vector<float>, std::vector<float>, double> cases[] = {
        {"a.png", SampleScale::kNone, {-3, 0.6F}, {0, 1}, 100},
        {"a.tif", SampleScale::kUnit, {0.25, 1}, {64, 255}, 25500},
        {"a.png", SampleScale::kMinMax, {-1, 4}, {0, 255}, 5151},
        {"a.tif", SampleScale::kMinMax, {7.5, 7.5}, {0, 0}, 23587.5},
        {"a.tif", SampleScale::kLevels, {20, 300}, {51, 255}, 255},
        {"a.fits", SampleScale::kLevels, {20, 300}, {20, 100}, 100},
        {"a.fits", SampleScale::kMinMax, {-1, 4}, {-1, 4}, 100},
        {"a.fits", SampleScale::kLevels, {NAN, 0.6F * step}, {NAN, step}, 100},
        {"a.fits", SampleScale::kUnit, {NAN, NAN}, {0, 0}, 100}, // 0 is the blank then
    };
    for (const auto& [name, scale, samples, loaded, white] : cases) {
        CStlImage image = Numbered(2, 1, 1);
        std::copy(samples.begin(), samples.end(), image.GetImageAdr(0, 0, 0));
        image.SetLevel(0, 0.0, 100.0);
        image.SetOwnLevel(1);
        Save(Path(name), image, {}, {8, scale});
        const Frame frame = Load(Path(name));
        SCOPED_TRACE(testing::Message() << name << ", scale " << static_cast<int>(scale) << ", " << samples[0]);
        EXPECT_PRED2(SameSamples, Samples(frame.image), loaded);
        EXPECT_NEAR(frame.image.GetLevelMax(0), white, 1e-9 * white);
    }
}

TEST_F(Formats, SavedWholeOrNotWhateverAllocationFails)
{
    const CStlImage image = Numbered(20, 10, 3, 255);
    Header header;
    header.AddHistory(std::string(500, 'h'));
    for (const std::string& path : {Path("a.fits"), Path("a.tif"), Path("a.png")}) {
        Save(path, image, header, {8});
        const std::string good = Read(std::filesystem::path(path).filename());
        bool hasFailed = true;
        for (long long allowed = 0; hasFailed; ++allowed) {
            Write(std::filesystem::path(path).filename(), "old");
            bool isSaved = true;
            FailMalloc(allowed);
            try {
                Save(path, image, header, {8});
            } catch (const corvane::Error&) {
                isSaved = false;
            }
            hasFailed = EndFailing();
            EXPECT_TRUE(Read(std::filesystem::path(path).filename()) == (isSaved ? good : "old"))
                << path << " after " << allowed;
        }
        std::filesystem::remove(path);
        EXPECT_EQ(FileCount(), 0U);
    }
}

TEST_F(Formats, RefuseWhatTheyCannotHold)
{
    const std::tuple<const char*, SaveOptions, std::vector<float>, std::string> cases[] = {
        {"a.png", {0}, {0, 65536}, "holds counts from 0 to 65535, the samples are 0 to 65536; save as FITS"},
        {"a.png", {8}, {0, 256}, "holds counts from 0 to 255"},
        {"a.tif", {16}, {0.5, 0}, "a TIFF of 16 bits holds counts from 0 to 65535, the samples are 0 to 0.5"},
        {"a.fits", {32}, {5, -1}, "a FITS of 32 bits holds counts from 0 to 4294967295, the samples are -1 to 5"},
        {"a.png", {0}, {-1, 5}, "the samples are -1 to 5"},
        {"a.png", {0}, {0.25, 1}, "the samples are 0.25 to 1"},
        {"a.png", {0}, {NAN, 5}, "cannot hold undefined samples"},
        {"a.png", {-32}, {1, 2}, "-32 bits cannot be saved in this format; it has 16, 8"},
        {"a.tif", {16, SampleScale::kUnit}, {0, 2}, "`unit` takes samples from 0 to 1, the samples are 0 to 2"},
        {"a.fits", {0, SampleScale::kLevels}, {1, 2}, "has float samples, which keep their values"},
        {"a.tif", {16}, {7, 5}, "TIFF of integers cannot hold undefined samples"},
        {"a.fits", {64}, {1, 2}, "64 bits"},
        {"a.jpg", {0}, {1, 2}, "unknown format '.jpg'; frames are saved as .fits, .fit, .fts, .tif, .tiff, .png"},
        {"a.fits.gz", {0}, {1, 2}, "unknown format '.gz'"},
    };
    for (const auto& [name, options, samples, reason] : cases) {
        CStlImage image = Numbered(2, 1, 1);
        std::copy(samples.begin(), samples.end(), image.GetImageAdr(0, 0, 0));
        image.SetBlankUsed(1);
        image.SetBlank(7);
        ExpectError([&, path = Path(name), options = options] { Save(path, image, {}, options); }, Path(name), reason);
        EXPECT_EQ(FileCount(), 0U) << name;
    }
    ExpectError([&] { Save(Path("a.fits"), CStlImage(), {}); }, Path("a.fits"), "no samples");
}

TEST_F(Formats, TiffOfOtherLayouts)
{
    std::vector<std::uint16_t> tile(16 * 16);
    std::iota(tile.begin(), tile.end(), std::uint16_t{0});
    const std::string six = Bytes<std::uint16_t>({1, 2, 3, 4, 5, 65535}, false);
    const std::string bytes = "\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17\20\21\22";
    const TiffTags pixels{{258, {3, {8, 8, 8}}}, {262, {3, {2}}}, {277, {3, {3}}}};
    TiffTags planes{{273, {4, {8, 14, 20}}}, {279, {4, {6, 6, 6}}}, {284, {3, {2}}}};
    planes.insert(pixels.begin(), pixels.end());
    const std::tuple<std::string, TiffTags, std::string, std::vector<float>> cases[] = {
        {"bottom up, signed", {{274, {3, {4}}}, {339, {3, {2}}}}, six, {1, 2, 3, 4, 5, -1}},
        {"white is zero", {{262, {3, {0}}}}, six, {65534, 65533, 65532, 65531, 65530, 0}},
        {"grey and alpha",
         {{258, {3, {8, 8}}}, {277, {3, {2}}}, {338, {3, {0}}}},
         bytes.substr(0, 12),
         {1, 3, 5, 7, 9, 11}},
        {"RGB pixels", pixels, bytes, {1, 4, 7, 10, 13, 16, 2, 5, 8, 11, 14, 17, 3, 6, 9, 12, 15, 18}},
        {"RGB planes", planes, bytes, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}},
        {"a tile",
         {{322, {3, {16}}}, {323, {3, {16}}}, {324, {4, {8}}}, {325, {4, {512}}}},
         Bytes(tile, false),
         {0, 1, 2, 16, 17, 18}},
    };
    for (const auto& [name, tags, samples, expected] : cases) {
        const Frame frame = Load(Write("a.tif", Tiff(tags, samples)));
        EXPECT_EQ(Samples(frame.image), expected) << name;
        EXPECT_EQ(IsBottomUp(frame.header), name.starts_with("bottom up")) << name;
    }
    const TiffTags text{{270, {2, Letters("First light\nwith a new camera")}}};
    const Frame frame = Load(Write("a.tif", Tiff(text, six)));
    EXPECT_TRUE(frame.header.Cards()[1].starts_with("COMMENT with a new camera "));
}

TEST_F(Formats, RawMosaicIsNeverDemosaiced)
{
    const std::vector<float> expected = Samples(Numbered(64, 48, 1, 4095));
    const Frame frame = Load(Write("a.dng", Dng(64, 48, expected)));
    EXPECT_STREQ(frame.image.GetOrgFileFormat(), "RAW");
    EXPECT_EQ(Samples(frame.image), expected);
    EXPECT_EQ(BayerPattern(frame.header), "GBRG");
    EXPECT_EQ(RowOrder(frame.header), "TOP-DOWN");
    EXPECT_EQ(frame.header.Text("INSTRUME"), "Maker Camera 1");
}

TEST_F(Formats, RefuseDamagedFiles)
{
    Save(Path("a.png"), Numbered(40, 40, 1), {});
    const std::string png = Read("a.png");
    const auto tiff = [](const TiffTags& tags) { return Tiff(tags, std::string(12, '\1')); };
    ExpectRefused({
        {"cut PNG", png.substr(0, png.size() / 2), "is a damaged PNG file"},
        {"PNG of 2^31 columns", std::string(png).replace(16, 4, "\x7f\xff\xff\xff"), "is a damaged PNG file"},
        {"TIFF without directory", tiff({}).substr(0, 30), "cannot be opened as TIFF"},
        {"TIFF with a cut strip", tiff({{273, {4, {4000}}}}), "row 0 cannot be read"},
        {"palette", tiff({{258, {3, {8}}}, {262, {3, {3}}}, {320, {3, std::vector(768, 257U)}}}), "palette"},
        {"CMYK", tiff({{262, {3, {5}}}}), "photometric interpretation 5"},
        {"12 bits", tiff({{258, {3, {12}}}}), "samples of 12 bits"},
        {"half floats", tiff({{339, {3, {3}}}}), "16 bits in floating point"},
        {"absurd size", tiff({{256, {4, {100000}}}, {257, {4, {100000}}}, {278, {4, {100000}}}}),
         "more than the file can hold"},
        {"absurd tiles", tiff({{322, {4, {1 << 16}}}, {323, {4, {1 << 16}}}, {324, {4, {8}}}, {325, {4, {12}}}}),
         "claims a size of 65536 x 65536 samples, more than the file can hold"},
    });
}

/// A PNG with other bytes in its first chunk.
std::string WithHeader(std::string png, std::size_t at, const std::string& bytes)
{
    png.replace(at, bytes.size(), bytes);
    std::uint32_t sum = ~0U;
    for (std::size_t i = 12 * 8; i < 29 * 8; ++i) {
        sum ^= i % 8 == 0 ? static_cast<unsigned char>(png[i / 8]) : 0U;
        sum = sum >> 1U ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
    }
    return png.replace(29, 4, Bytes<std::uint32_t>({~sum}, true));
}

TEST_F(Formats, ReadWithinTheMemory)
{
    const CStlImage image = Numbered(400, 300, 3);
    Save(Path("a.png"), image, {});
    Save(Path("a.tif"), image, {}, {-64});
    const TightMemory tight(1 << 20); // a PNG of 720,000 bytes is more than a quarter of it
    for (const char* name : {"a.png", "a.tif"}) {
        const auto reader = OpenFrame(Path(name));
        std::vector<float> band(400 * 150);
        for (const auto& [plane, first, count] : {std::tuple{2, 100, 150}, {0, 120, 100}, {1, 250, 50}, {1, 3, 150}}) {
            reader->ReadRows(plane, first, count, band.data());
            EXPECT_TRUE(std::equal(band.begin(), band.begin() + 400 * count, image.GetImageAdr(0, first, plane, 1)))
                << name << " row " << first;
        }
    }
    const std::string png = Read("a.png");
    const std::string some(1000, '\1');
    ExpectRefused({
        {"channels", Tiff({{256, {4, {9}}}, {258, {3, {8}}}, {277, {3, {65535}}}}, some),
         "needs 2 MiB of memory for a row of 65535 channels, and the budget is 1 MiB (CORVANE_MEMORY)"},
        {"tiles", Tiff({{322, {4, {1 << 10}}}, {323, {4, {1 << 10}}}, {324, {4, {8}}}, {325, {4, {12}}}}, some),
         "needs 5 MiB of memory for tiles of 1024 x 1024 pixels"},
        {"row", Tiff({{256, {4, {300000}}}, {257, {4, {1}}}}, some), "for a row of 300000 samples"},
        {"interlaced PNG", WithHeader(WithHeader(png, 22, "\4"), 28, "\1"),
         "for all of its rows, which are interlaced"},
        {"raw", Dng(600, 480, std::vector<float>(600 * 480)), "needs 2 MiB of memory for decoding all of its counts"},
        {"PNG of more than Deflate packs", png.substr(0, 600), "more than the file can hold"},
    });
}

TEST_F(Formats, PictureShowsLevelsTheRightWayUp)
{
    for (const int planes : {1, 3}) {
        CStlImage image = Numbered(5, 4, planes, 300);
        for (int p = 0; p < planes; ++p) {
            image.SetLevel(p, 10.0 * p, 100.0 + 50.0 * p);
        }
        *image.GetImageAdr(2, 1, 0) = NAN;
        for (const bool bottomUp : {false, true}) {
            SavePicture(Path("a.jpg"), image, bottomUp, {.quality = 100});
            EXPECT_EQ(std::filesystem::file_size(Path("a.jpg")), EncodePhoto(image, bottomUp, 100).size());
            EXPECT_NE(Read("a.jpg").find(SrgbProfile(planes)), std::string::npos);
            for (const char* const name : {"a.tif", "deep.png"}) {
                SavePicture(Path(name), image, bottomUp, {.bits = 16});
                const CStlImage deep = Load(Path(name)).image;
                EXPECT_TRUE(Agree(deep, Plain(image).Map([&](double, int x, int y, int p) {
                    const double v = image.GetPixelGrayRaw(x, bottomUp ? 3 - y : y, p);
                    const double shown = (v - image.GetLevelMin(p)) / image.GetLevelRange(p);
                    return std::isnan(v) ? 0.0 : std::floor(std::clamp(shown, 0.0, 1.0) * 65535.0 + 0.5);
                })));
            }
            EXPECT_NE(Read("a.tif").find(SrgbProfile(planes)), std::string::npos);
            SavePicture(Path("a.png"), image, bottomUp);
            EXPECT_NE(Read("a.png").find("sRGB"), std::string::npos);
            const CStlImage picture = Load(Path("a.png")).image;
            ASSERT_EQ(picture.GetPlanes(), planes);
            EXPECT_TRUE(Agree(picture, Plain(image).Map([&](double, int x, int y, int p) {
                const int from = bottomUp ? 3 - y : y;
                return std::isnan(image.GetPixelGrayRaw(x, from, p)) ? 0 : image.GetPixelGray256(x, from, p);
            })));
        }
    }
}

} // namespace
