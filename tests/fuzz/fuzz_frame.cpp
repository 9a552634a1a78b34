// Files of every format that is read, with whatever bytes; and what is done with a frame that could be read: its header
// is asked, its coordinates and mosaic follow geometry, it is shown and written in every format.

#include <vector>

#include <fitsio.h>

#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "io/bayer.h"
#include "io/frame.h"
#include "io/metadata.h"
#include "io/picture.h"
#include "tests/fuzz/scratch.h"
#include "tests/fuzz/target.h"
#include "tests/io/tiff.h"
#include "tests/support/images.h"

namespace {

using namespace corvane;

constexpr std::uint64_t kMostBytes = 64 << 20;

/// A tile-compressed file, which the project reads and does not write.
std::string Compressed(int code, int bits)
{
    long sizes[] = {33, 20};
    std::vector<float> samples;
    test::Random random(5);
    for (long i = 0; i < sizes[0] * sizes[1]; ++i) {
        samples.push_back(static_cast<float>(random.Whole(0, 200)));
    }
    const test::ScratchFile scratch(".fz");
    fitsfile* file = nullptr;
    int status = 0;
    fits_create_diskfile(&file, scratch.Path().c_str(), &status);
    fits_set_compression_type(file, code, &status);
    fits_create_img(file, bits, 2, sizes, &status);
    fits_write_img(file, TFLOAT, 1, sizes[0] * sizes[1], samples.data(), &status);
    fits_close_file(file, &status);
    return scratch.Bytes();
}

/// What lists of frames and reports read of a header.
void AskHeader(const io::Header& header, int height)
{
    for (const auto& number : {io::ExposureSeconds(header), io::CcdTemperature(header), io::Gain(header),
                               io::ElectronsPerCount(header), io::PixelSize(header), io::ObservationTime(header)}) {
        if (number) {
            io::FormatTime(*number);
        }
    }
    io::Filter(header);
    io::DateObs(header);
    io::StoredBayerPattern(header, height);
    for (const std::string& card : header.Cards()) {
        header.Comment(card.substr(0, 8));
    }
    header.History();
}

/// Runs a step, unless it does not suit the frame.
void Try(const char* step, io::Frame& frame)
{
    try {
        catalogue::RunStep(catalogue::ParseStep(step), frame, {});
    } catch (const Error&) { // what a user is told
    }
}

void Write(const io::Frame& frame)
{
    for (const auto& [extension, bits] : {std::pair{".fits", 16}, {".fits", -64}, {".tif", 8}, {".png", 16}}) {
        try {
            test::FileOf(frame.image, frame.header, extension, bits);
        } catch (const Error&) { // undefined samples, for one, have no place in every format
        }
    }
    const test::ScratchFile picture(".png");
    io::SavePicture(picture.Path(), frame.image, io::IsBottomUp(frame.header));
}

} // namespace

std::vector<std::string> Seeds()
{
    io::Header header;
    header.Set("EXPTIME", 2.5);
    header.Set("DATE-OBS", "2024-07-30T22:44:36.5");
    header.Set("BAYERPAT", "GRBG");
    header.Set("CTYPE1", "RA---TAN");
    header.Set("CTYPE2", "DEC--TAN");
    header.Set("CD1_1", -2.5e-4);
    header.Set("CD2_1", 1e-6);
    header.Set("LTM1_1", 0.5);
    header.AddHistory("a line");
    std::vector<std::string> seeds{test::Dng(64, 48, test::Samples(test::Numbered(64, 48, 1, 4095)))};
    for (const auto& [extension, planes, bits] : {std::tuple{".fits", 1, -32},
                                                  {".fits", 3, 16},
                                                  {".fits", 1, 8},
                                                  {".fits", 1, -64},
                                                  {".tif", 1, 8},
                                                  {".tif", 3, -32},
                                                  {".png", 1, 16},
                                                  {".png", 3, 8}}) {
        CStlImage counts = test::RandomImage({9, 7}, planes, 1);
        counts.CutOutOfLevel();
        seeds.push_back(test::FileOf(counts, header, extension, bits));
    }
    for (const auto& [code, bits] : {std::pair{RICE_1, 16},
                                     {RICE_1, -32},
                                     {GZIP_1, 16},
                                     {GZIP_2, 32},
                                     {PLIO_1, 16},
                                     {HCOMPRESS_1, 16},
                                     {HCOMPRESS_1, -32}}) {
        seeds.push_back(Compressed(code, bits));
    }
    return seeds;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SetMemoryBudget(kMostBytes);
    const test::ScratchFile file("", {reinterpret_cast<const char*>(data), size});
    try {
        io::Frame frame = io::Load(file.Path());
        AskHeader(frame.header, frame.image.GetHeight());
        Write(frame);
        for (const char* step : {"debayer", "rotate90", "crop:rect=1:1:30:20", "flip", "rotate:angle=33", "bin"}) {
            Try(step, frame);
        }
        Write(frame);
    } catch (const Error&) { // what a user is told
    } catch (const std::bad_alloc&) {
    }
    return 0;
}
