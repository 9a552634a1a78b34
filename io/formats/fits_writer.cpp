#include <algorithm>
#include <bit>
#include <type_traits>
#include <vector>

#include "io/formats/formats.h"
#include "io/formats/samples.h"

namespace corvane::io {
namespace {

constexpr std::size_t kBlockBytes = 2880;
constexpr std::size_t kBandBytes = std::size_t{1} << 20;

/// How samples become stored values.
struct FitsEncoding {
    UndefinedTest undefined;
    double zero = 0.0; ///< BZERO
    double low = 0.0;  ///< smallest physical value that a defined sample can take
    bool hasBlank = false;
};

template <class T>
T BigEndian(T value)
{
    if constexpr (std::endian::native == std::endian::big || sizeof(T) == 1) {
        return value;
    } else if constexpr (sizeof(T) == 2) {
        return std::bit_cast<T>(__builtin_bswap16(std::bit_cast<std::uint16_t>(value)));
    } else if constexpr (sizeof(T) == 4) {
        return std::bit_cast<T>(__builtin_bswap32(std::bit_cast<std::uint32_t>(value)));
    } else {
        return std::bit_cast<T>(__builtin_bswap64(std::bit_cast<std::uint64_t>(value)));
    }
}

/// The bits that FITS stores for a sample. T is the unsigned type of the same size for integers of 16 and 32 bits,
/// whose BZERO turns the sign bit.
template <class T>
T Encode(float v, const FitsEncoding& encoding)
{
    if constexpr (std::is_floating_point_v<T>) {
        return WithNan(v, encoding.undefined);
    } else {
        constexpr T kSignBit = sizeof(T) == 1 ? T{0} : static_cast<T>(T{1} << (sizeof(T) * 8 - 1));
        const T count = encoding.undefined(v) ? T{0} : RoundTo<T>(v, encoding.low);
        return static_cast<T>(count ^ kSignBit);
    }
}

void PadTo(OutputFile& file, std::size_t written, char filler)
{
    const std::string padding((kBlockBytes - written % kBlockBytes) % kBlockBytes, filler);
    file.Write(padding.data(), padding.size());
}

Header LayoutCards(const CImage& image, int bits, const FitsEncoding& encoding)
{
    Header layout;
    const bool cube = image.GetPlanes() > 1;
    layout.Set("SIMPLE", true, "conforms to the FITS standard");
    layout.Set("BITPIX", bits, bits < 0 ? "bits per sample, floating point" : "bits per sample");
    layout.Set("NAXIS", cube ? 3 : 2, "number of axes");
    layout.Set("NAXIS1", image.GetWidth(), "samples in a row");
    layout.Set("NAXIS2", image.GetHeight(), "rows");
    if (cube) {
        layout.Set("NAXIS3", image.GetPlanes(), "planes");
    }
    if (encoding.zero != 0.0) {
        layout.Set("BZERO", static_cast<long long>(encoding.zero), "the integers are unsigned");
        layout.Set("BSCALE", 1);
    }
    if (encoding.hasBlank) {
        layout.Set("BLANK", static_cast<long long>(-encoding.zero), "stored value of undefined samples");
    }
    return layout;
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
void WriteSamples(OutputFile& file, const CImage& image, const FitsEncoding& encoding)
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
            std::transform(row, row + width, band.begin() + static_cast<std::ptrdiff_t>(rows * width),
                           [&](float v) { return BigEndian(Encode<T>(v, encoding)); });
            if (++rows == bandRows) {
                flush();
            }
        }
    }
    flush();
    PadTo(file, static_cast<std::size_t>(image.GetPixelCount()) * sizeof(T), '\0');
}

} // namespace

void WriteFits(OutputFile& file, const CStlImage& image, const Header& header, int bits)
{
    FitsEncoding encoding{UndefinedTest(image)};
    if (bits > 0) {
        encoding.zero = bits == 8 ? 0.0 : bits == 16 ? 32768.0 : 2147483648.0;
        encoding.hasBlank = Survey(image).undefined;
        encoding.low = encoding.hasBlank ? 1.0 : 0.0;
    }
    WriteHeader(file, LayoutCards(image, bits, encoding), header);
    WithSampleType(bits, false, [&](auto type) { WriteSamples<decltype(type)>(file, image, encoding); });
}

} // namespace corvane::io
