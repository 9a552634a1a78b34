#include <algorithm>
#include <climits>
#include <cstdint>
#include <memory>

#include <libraw/libraw.h>

#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "io/formats/decoded_reader.h"
#include "io/formats/formats.h"
#include "io/formats/limits.h"
#include "io/metadata.h"

namespace corvane::io {
namespace {

constexpr unsigned kXtransFilters = 9;

std::unique_ptr<LibRaw> OpenLibRaw(const std::string& path, int& status)
{
    auto raw = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK);
    raw->imgdata.params.max_raw_memory_mb =
        static_cast<unsigned>(std::clamp<std::uint64_t>(MemoryBudget() >> 20U, 1, UINT_MAX));
    status = raw->open_file(path.c_str());
    return raw;
}

/// The mosaic of the first two rows and columns that are read, as "RGGB"; empty for a camera without one.
std::string MosaicName(LibRaw& raw)
{
    const auto& colours = raw.imgdata.idata;
    if (colours.filters == kXtransFilters) {
        return "XTRANS";
    }
    std::string name;
    for (int i = 0; i < 4 && colours.filters != 0; ++i) {
        name += colours.cdesc[raw.COLOR(i / 2, i % 2)];
    }
    return name;
}

/// The darkest count of a pixel without light; cameras that give one for each colour are averaged.
double BlackLevel(const libraw_colordata_t& colour)
{
    return colour.black + (colour.cblack[0] + colour.cblack[1] + colour.cblack[2] + colour.cblack[3]) / 4.0;
}

/// Cards for what the camera knows; it leaves at 0 what it does not.
void SetKnown(Header& header, const char* keyword, float value, const char* comment)
{
    if (value > 0.0F) {
        header.Set(keyword, static_cast<double>(value), comment);
    }
}

Header ReadHeader(LibRaw& raw)
{
    const auto& shot = raw.imgdata.other;
    const auto& camera = raw.imgdata.idata;
    Header header;
    header.Set("INSTRUME", std::string(camera.make) + " " + camera.model, "camera");
    if (shot.timestamp > 0) {
        header.Set("DATE-OBS", FormatTime(static_cast<double>(shot.timestamp)), "time of the camera's clock");
    }
    SetKnown(header, "EXPTIME", shot.shutter, "[s] exposure time");
    SetKnown(header, "ISOSPEED", shot.iso_speed, "ISO setting");
    SetKnown(header, "FOCALLEN", shot.focal_len, "[mm] focal length");
    header.Set("BLKLEVEL", BlackLevel(raw.imgdata.color), "count without light");
    header.Set("WHTLEVEL", static_cast<long long>(raw.imgdata.color.maximum), "count at saturation");
    if (const std::string mosaic = MosaicName(raw); !mosaic.empty()) {
        header.Set("BAYERPAT", mosaic, "colour filters of the first 2 x 2 pixels");
        header.Set("XBAYROFF", 0);
        header.Set("YBAYROFF", 0);
    }
    header.Set("ROWORDER", "TOP-DOWN", "order of the rows in the image");
    return header;
}

class RawReader : public DecodedReader {
public:
    explicit RawReader(FrameInfo info) : DecodedReader(std::move(info)) {}

private:
    DecodedSamples Decode() override
    {
        int status = LIBRAW_SUCCESS;
        const auto raw = OpenLibRaw(Path(), status);
        status = status == LIBRAW_SUCCESS ? raw->unpack() : status;
        if (status != LIBRAW_SUCCESS) {
            throw FileError(Path(), std::string("is a damaged camera raw file: ") + libraw_strerror(status));
        }
        const auto& sizes = raw->imgdata.sizes;
        const unsigned short* counts = raw->imgdata.rawdata.raw_image;
        if (counts == nullptr) {
            throw FileError(Path(), "is a camera raw file without a mosaic of counts");
        }
        if (sizes.width != Width() || sizes.height != Height()) {
            throw FileError(Path(), "has changed since it was opened");
        }
        const std::size_t pitch = sizes.raw_pitch / sizeof *counts;
        DecodedSamples samples(static_cast<std::size_t>(Width()) * Height());
        for (int y = 0; y < Height(); ++y) {
            const std::size_t row = static_cast<std::size_t>(y) + sizes.top_margin;
            std::copy_n(counts + row * pitch + sizes.left_margin, Width(),
                        samples.begin() + static_cast<std::ptrdiff_t>(y) * Width());
        }
        return samples;
    }
};

} // namespace

std::unique_ptr<FrameReader> OpenRaw(const std::string& path)
{
    int status = LIBRAW_SUCCESS;
    const auto raw = OpenLibRaw(path, status);
    const auto& image = raw->imgdata;
    if (status != LIBRAW_SUCCESS || image.idata.raw_count == 0 || image.sizes.width == 0 || image.sizes.height == 0 ||
        (image.idata.filters == 0 && image.idata.colors != 1)) {
        return nullptr;
    }
    const double counts = static_cast<double>(image.sizes.raw_width) * image.sizes.raw_height +
                          static_cast<double>(image.sizes.width) * image.sizes.height;
    CheckMemory(path, "decoding all of its counts", counts * sizeof(std::uint16_t));
    FrameInfo info;
    info.path = path;
    info.format = "RAW";
    info.width = image.sizes.width;
    info.height = image.sizes.height;
    info.planes = 1;
    info.bits = 16;
    info.header = ReadHeader(*raw);
    return std::make_unique<RawReader>(std::move(info));
}

} // namespace corvane::io
