#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "io/card.h"
#include "io/formats/big_endian.h"
#include "io/formats/formats.h"
#include "io/formats/storage.h"

namespace corvane::io {
namespace {

constexpr std::size_t kBandBytes = std::size_t{1} << 20;

/// What FITS adds to a stored integer to make a count of it: 16 and 32 bits are signed there.
double CountOffset(int bits)
{
    return bits == 16 ? 32768.0 : bits == 32 ? 2147483648.0 : 0.0;
}

/// Writes samples of a row as FITS stores them. T is the unsigned type of the same size for integers, whose sign bit
/// CountOffset turns. The copy of the storage, and two loops, are for the vectoriser.
template <class T>
void EncodeRow(const float* row, std::size_t count, const Storage storage, T* stored)
{
    std::transform(row, row + count, stored, [storage](float v) { return storage.Stored<T>(v); });
    std::transform(stored, stored + count, stored, [](T v) {
        if constexpr (std::is_integral_v<T> && sizeof(T) > 1) {
            v = static_cast<T>(v ^ static_cast<T>(T{1} << (sizeof(T) * 8 - 1)));
        }
        return BigEndian(v);
    });
}

/// Adds the cards that tell how samples of so many rows are stored.
void AddLayout(const CImage& image, int rows, const Storage& storage, Header& layout)
{
    const int bits = storage.bits;
    const bool cube = image.GetPlanes() > 1;
    layout.Set("BITPIX", bits, bits < 0 ? "bits per sample, floating point" : "bits per sample");
    layout.Set("NAXIS", cube ? 3 : 2, "number of axes");
    layout.Set("NAXIS1", image.GetWidth(), "samples in a row");
    layout.Set("NAXIS2", rows, "rows");
    if (cube) {
        layout.Set("NAXIS3", image.GetPlanes(), "planes");
    }
}

/// Adds the cards that tell what the stored numbers stand for.
void AddScale(const Storage& storage, Header& layout)
{
    const double offset = CountOffset(storage.bits);
    if (storage.isScaled) {
        layout.Set("BZERO", storage.zero + storage.step * offset, "sample = BZERO + BSCALE * stored integer");
        layout.Set("BSCALE", storage.step);
    } else if (offset != 0.0) {
        layout.Set("BZERO", static_cast<long long>(offset), "the integers are unsigned");
        layout.Set("BSCALE", 1);
    }
    if (storage.hasBlank) {
        layout.Set("BLANK", static_cast<long long>(-offset), "stored value of undefined samples");
    }
}

/// The header as the file has it, in whole blocks.
std::string HeaderText(const Header& layout, const Header& header)
{
    std::string text;
    for (const Header* part : {&layout, &header}) {
        for (const std::string& card : part->Cards()) {
            text += card;
        }
    }
    text += "END";
    text.append((kBlockBytes - text.size() % kBlockBytes) % kBlockBytes, ' ');
    return text;
}

/// The layout of the first image of a file.
Header FirstLayout(const CImage& image, int rows, const Storage& storage)
{
    Header layout;
    layout.Set("SIMPLE", true, "conforms to the FITS standard");
    AddLayout(image, rows, storage, layout);
    AddScale(storage, layout);
    return layout;
}

template <class T>
void WriteSamples(OutputFile& file, const CImage& image, const Storage& storage)
{
    const auto width = static_cast<std::size_t>(image.GetWidth());
    const std::size_t bandRows = std::max<std::size_t>(1, kBandBytes / (width * sizeof(T)));
    std::vector<T> band(width * bandRows);
    std::size_t rows = 0;
    const auto flush = [&] {
        file.Write(band.data(), rows * width * sizeof(T));
        rows = 0;
    };
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int y = 0; y < image.GetHeight(); ++y) {
            const float* row = RowOf(image, y, plane);
            EncodeRow(row, width, storage, band.data() + rows * width);
            if (++rows == bandRows) {
                flush();
            }
        }
    }
    flush();
    const std::size_t written = static_cast<std::size_t>(image.GetPixelCount()) * sizeof(T);
    const std::string padding((kBlockBytes - written % kBlockBytes) % kBlockBytes, '\0');
    file.Write(padding.data(), padding.size());
}

void WriteHdu(OutputFile& file, const Header& layout, const CStlImage& image, const Header& header,
              const Storage& storage)
{
    const std::string text = HeaderText(layout, header);
    file.Write(text.data(), text.size());
    WithSampleType(storage.bits, false, [&](auto type) { WriteSamples<decltype(type)>(file, image, storage); });
}

} // namespace

void WriteFits(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage)
{
    WriteHdu(file, FirstLayout(image, image.GetHeight(), storage), image, header, storage);
}

std::string FitsHeaderText(const CStlImage& image, int rows, const Header& header, const Storage& storage)
{
    return HeaderText(FirstLayout(image, rows, storage), header);
}

std::string FitsBytesOf(const CStlImage& image, int plane, const Storage& storage)
{
    const auto width = static_cast<std::size_t>(image.GetWidth());
    std::vector<float> row(width);
    std::string bytes;
    for (int y = 0; y < image.GetHeight(); ++y) {
        EncodeRow(RowOf(image, y, plane), width, storage, row.data());
        bytes.append(reinterpret_cast<const char*>(row.data()), width * sizeof(float));
    }
    return bytes;
}

void WriteFitsExtension(OutputFile& file, const std::string& name, const CStlImage& image, const Header& header,
                        const Storage& storage)
{
    Header layout;
    layout.Set("XTENSION", "IMAGE   ", "an image");
    AddLayout(image, image.GetHeight(), storage, layout);
    layout.Set("PCOUNT", 0);
    layout.Set("GCOUNT", 1);
    AddScale(storage, layout);
    layout.Set("EXTNAME", name);
    WriteHdu(file, layout, image, header, storage);
}

} // namespace corvane::io
