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

template <class T>
T Stored(float v, const UndefinedTest& undefined)
{
    if constexpr (std::is_integral_v<T>) {
        return RoundTo<T>(v, 0.0);
    } else {
        return WithNan(v, undefined);
    }
}

/// One row, the planes' samples side by side.
template <class T>
void FillRow(const CImage& image, int y, const UndefinedTest& undefined, std::vector<T>& row)
{
    const int planes = image.GetPlanes();
    for (int plane = 0; plane < planes; ++plane) {
        const float* from = RowOf(image, y, plane);
        for (int x = 0; x < image.GetWidth(); ++x) {
            row[static_cast<std::size_t>(x) * planes + plane] = Stored<T>(from[x], undefined);
        }
    }
}

template <class T>
void WriteRows(TiffFile& file, const CImage& image)
{
    const UndefinedTest undefined(image);
    std::vector<T> row(static_cast<std::size_t>(image.GetWidth()) * image.GetPlanes());
    for (int y = 0; y < image.GetHeight(); ++y) {
        FillRow(image, y, undefined, row);
        const int done = TIFFWriteScanline(file.Get(), row.data(), static_cast<std::uint32_t>(y), 0);
        file.Check(done == 1, "cannot be written");
    }
}

void SetTags(TIFF* tiff, const CImage& image, const Header& header, int bits)
{
    const int sampleBits = std::abs(bits);
    const auto rowBytes = static_cast<std::uint64_t>(image.GetWidth()) * image.GetPlanes() * sampleBits / 8;
    const auto rows = std::clamp<std::uint64_t>(kStripBytes / rowBytes, 1, image.GetHeight());
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.GetWidth());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.GetHeight());
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.GetPlanes());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, sampleBits);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, bits < 0 ? SAMPLEFORMAT_IEEEFP : SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, image.GetPlanes() == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, IsBottomUp(header) ? ORIENTATION_BOTLEFT : ORIENTATION_TOPLEFT);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, static_cast<std::uint32_t>(rows));
    TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, ToDescription(header).c_str());
}

} // namespace

void WriteTiff(OutputFile& file, const CStlImage& image, const Header& header, int bits)
{
    if (bits > 0) {
        RefuseUndefined(file.Path(), Survey(image), "TIFF of integers");
    }
    const auto bytes = static_cast<std::uint64_t>(image.GetPixelCount()) * std::abs(bits) / 8;
    TiffFile tiff(file, bytes > kClassicBytes ? "w8" : "w");
    SetTags(tiff.Get(), image, header, bits);
    WithSampleType(bits, false, [&](auto type) { WriteRows<decltype(type)>(tiff, image); });
    tiff.Check(TIFFFlush(tiff.Get()) == 1, "cannot be written");
}

} // namespace corvane::io
