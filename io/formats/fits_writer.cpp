#include <algorithm>
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

void PadTo(OutputFile& file, std::size_t written, char filler)
{
    const std::string padding((kBlockBytes - written % kBlockBytes) % kBlockBytes, filler);
    file.Write(padding.data(), padding.size());
}

/// Adds the cards that tell how samples are stored.
void AddLayout(const CImage& image, const Storage& storage, Header& layout)
{
    const int bits = storage.bits;
    const bool cube = image.GetPlanes() > 1;
    layout.Set("BITPIX", bits, bits < 0 ? "bits per sample, floating point" : "bits per sample");
    layout.Set("NAXIS", cube ? 3 : 2, "number of axes");
    layout.Set("NAXIS1", image.GetWidth(), "samples in a row");
    layout.Set("NAXIS2", image.GetHeight(), "rows");
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

void WriteHeader(OutputFile& file, const Header& layout, const Header& header)
{
    std::string text;
    for (const Header* part : {&layout, &header}) {
        for (const std::string& card : part->Cards()) {
            text += card;
        }
    }
    text += "END";
    file.Write(text.data(), text.size());
    PadTo(file, text.size(), ' ');
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
    PadTo(file, static_cast<std::size_t>(image.GetPixelCount()) * sizeof(T), '\0');
}

void WriteHdu(OutputFile& file, const Header& layout, const CStlImage& image, const Header& header,
              const Storage& storage)
{
    WriteHeader(file, layout, header);
    WithSampleType(storage.bits, false, [&](auto type) { WriteSamples<decltype(type)>(file, image, storage); });
}

} // namespace

void WriteFits(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage)
{
    Header layout;
    layout.Set("SIMPLE", true, "conforms to the FITS standard");
    AddLayout(image, storage, layout);
    AddScale(storage, layout);
    WriteHdu(file, layout, image, header, storage);
}

void WriteFitsExtension(OutputFile& file, const std::string& name, const CStlImage& image, const Header& header,
                        const Storage& storage)
{
    Header layout;
    layout.Set("XTENSION", "IMAGE   ", "an image");
    AddLayout(image, storage, layout);
    layout.Set("PCOUNT", 0);
    layout.Set("GCOUNT", 1);
    AddScale(storage, layout);
    layout.Set("EXTNAME", name);
    WriteHdu(file, layout, image, header, storage);
}

} // namespace corvane::io
