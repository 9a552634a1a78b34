#include <algorithm>
#include <vector>

#include "io/formats/cards.h"
#include "io/formats/formats.h"
#include "io/formats/samples.h"
#include "io/formats/tiff_file.h"
#include "io/metadata.h"

namespace corvane::io {
namespace {

constexpr std::uint64_t kStripBytes = 1 << 18;
constexpr std::uint64_t kClassicBytes = 0xF0000000; // offsets of classic TIFF have 32 bits

/// One row, the planes' samples side by side.
template <class T>
void FillRow(const CImage& image, int y, const Storage& storage, std::vector<T>& row)
{
    const int planes = image.GetPlanes();
    for (int plane = 0; plane < planes; ++plane) {
        const float* from = RowOf(image, y, plane);
        for (int x = 0; x < image.GetWidth(); ++x) {
            row[static_cast<std::size_t>(x) * planes + plane] = storage.Stored<T>(from[x]);
        }
    }
}

template <class T>
void WriteRows(TiffFile& file, const CImage& image, const Storage& storage)
{
    std::vector<T> row(static_cast<std::size_t>(image.GetWidth()) * image.GetPlanes());
    for (int y = 0; y < image.GetHeight(); ++y) {
        FillRow(image, y, storage, row);
        const int done = TIFFWriteScanline(file.Get(), row.data(), static_cast<std::uint32_t>(y), 0);
        file.Check(done == 1, "cannot be written");
    }
}

void SetTags(TiffFile& file, const CImage& image, const Header& header, int bits)
{
    const int sampleBits = std::abs(bits);
    const auto rowBytes = static_cast<std::uint64_t>(image.GetWidth()) * image.GetPlanes() * sampleBits / 8;
    const auto rows = std::clamp<std::uint64_t>(kStripBytes / rowBytes, 1, image.GetHeight());
    file.Set(TIFFTAG_IMAGEWIDTH, image.GetWidth());
    file.Set(TIFFTAG_IMAGELENGTH, image.GetHeight());
    file.Set(TIFFTAG_SAMPLESPERPIXEL, image.GetPlanes());
    file.Set(TIFFTAG_BITSPERSAMPLE, sampleBits);
    file.Set(TIFFTAG_SAMPLEFORMAT, bits < 0 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    file.Set(TIFFTAG_PHOTOMETRIC, image.GetPlanes() == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    file.Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    file.Set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    file.Set(TIFFTAG_ORIENTATION, IsBottomUp(header) ? ORIENTATION_BOTLEFT : ORIENTATION_TOPLEFT);
    file.Set(TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows));
    file.Set(TIFFTAG_IMAGEDESCRIPTION, ToDescription(header).c_str());
}

} // namespace

void WriteTiff(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage)
{
    WriteTiffPicture(file, image, header, storage, {});
}

void WriteTiffPicture(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage,
                      const std::string& profile)
{
    const auto bytes = static_cast<std::uint64_t>(image.GetPixelCount()) * std::abs(storage.bits) / 8;
    TiffFile tiff(file, bytes > kClassicBytes ? "w8" : "w");
    SetTags(tiff, image, header, storage.bits);
    if (!profile.empty()) {
        tiff.Set(TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(profile.size()), profile.data());
    }
    WithSampleType(storage.bits, false, [&](auto type) { WriteRows<decltype(type)>(tiff, image, storage); });
    tiff.Check(TIFFFlush(tiff.Get()) == 1, "cannot be written");
}

} // namespace corvane::io
