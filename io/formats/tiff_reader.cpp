#include <algorithm>
#include <limits>
#include <vector>

#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/formats/cards.h"
#include "io/formats/formats.h"
#include "io/formats/limits.h"
#include "io/formats/samples.h"
#include "io/formats/tiff_file.h"

namespace corvane::io {
namespace {

constexpr double kTiffExpansion = 65536.0; // bytes of samples per byte of file, by the strongest of its compressions

/// How the samples lie in the file.
struct TiffLayout {
    int bits = 0; ///< as FITS BITPIX
    bool isSigned = false;
    int channels = 1;      ///< samples per pixel, alpha included
    bool separate = false; ///< planes one after the other instead of pixel by pixel
    bool whiteIsZero = false;
    int tileWidth = 0; ///< 0 when the file has strips
    int tileHeight = 0;

    std::size_t SampleBytes() const { return static_cast<std::size_t>(bits < 0 ? -bits : bits) / 8; }
    /// Samples of one row as the file stores them.
    std::size_t RowSamples(double width) const { return static_cast<std::size_t>(width) * (separate ? 1 : channels); }
};

class TiffReader : public FrameReader {
public:
    TiffReader(FrameInfo info, const TiffLayout& layout, std::unique_ptr<TiffFile> file)
        : FrameReader(std::move(info)), layout_(layout), file_(std::move(file))
    {}

    void Close() override
    {
        file_.reset();
        rows_ = {};
        held_ = {};
    }

private:
    void Read(int plane, int firstRow, int rowCount, float* samples) override
    {
        const std::size_t step = layout_.separate ? 1 : static_cast<std::size_t>(layout_.channels);
        const std::size_t first = layout_.separate ? 0 : static_cast<std::size_t>(plane);
        const auto width = static_cast<std::size_t>(Width());
        for (int row = firstRow; row < firstRow + rowCount;) {
            Hold(layout_.separate ? plane : 0, row, firstRow + rowCount);
            const int count = std::min(firstRow + rowCount, held_.first + held_.count) - row;
            const unsigned char* stored = rows_.data() + static_cast<std::size_t>(row - held_.first) * RowBytes();
            WithSampleType(layout_.bits, layout_.isSigned, [&](auto type) {
                Convert(reinterpret_cast<const decltype(type)*>(stored) + first, step,
                        width * static_cast<std::size_t>(count), samples);
            });
            samples += width * static_cast<std::size_t>(count);
            row += count;
        }
    }

    template <class T>
    void Convert(const T* stored, std::size_t step, std::size_t count, float* samples) const
    {
        const double white = layout_.whiteIsZero ? static_cast<double>(std::numeric_limits<T>::max()) : 0.0;
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = static_cast<float>(stored[i * step]);
        }
        if (layout_.whiteIsZero) {
            std::transform(samples, samples + count, samples, [=](float v) { return static_cast<float>(white - v); });
        }
    }

    /// Brings a row into memory as the file stores it, and with it those up to `end`, or of its tiles, as far as there
    /// is room. What was brought last is kept, so that the planes of pixels stored together come from one decoding.
    void Hold(int plane, int row, int end)
    {
        if (plane == held_.plane && row >= held_.first && row < held_.first + held_.count) {
            return;
        }
        if (file_ == nullptr) {
            file_ = std::make_unique<TiffFile>(Path());
        }
        held_ = {};
        const auto room = static_cast<int>(std::clamp<std::size_t>(BandBytes() / RowBytes(), 1, Height()));
        const bool holdsTiles = layout_.tileHeight > 0 && room >= layout_.tileHeight;
        const int first = holdsTiles ? row - row % layout_.tileHeight : row;
        const int wanted = holdsTiles ? std::max(end - first, layout_.tileHeight) : end - first;
        const int count = std::min({wanted, room, Height() - first});
        rows_.resize(static_cast<std::size_t>(count) * RowBytes());
        layout_.tileWidth > 0 ? ReadTiles(plane, first, count) : ReadLines(plane, first, count);
        held_ = {plane, first, count};
    }

    std::size_t RowBytes() const { return layout_.RowSamples(Width()) * layout_.SampleBytes(); }

    void ReadLines(int plane, int firstRow, int rowCount)
    {
        for (int i = 0; i < rowCount; ++i) {
            const int got =
                TIFFReadScanline(file_->Get(), rows_.data() + static_cast<std::size_t>(i) * RowBytes(),
                                 static_cast<std::uint32_t>(firstRow + i), static_cast<std::uint16_t>(plane));
            file_->Check(got == 1, "row " + std::to_string(firstRow + i) + " cannot be read");
        }
    }

    void ReadTiles(int plane, int firstRow, int rowCount)
    {
        std::vector<unsigned char> tile(static_cast<std::size_t>(TIFFTileSize(file_->Get())));
        const int top = firstRow - firstRow % layout_.tileHeight;
        for (int y = top; y < firstRow + rowCount; y += layout_.tileHeight) {
            for (int x = 0; x < Width(); x += layout_.tileWidth) {
                const auto got = TIFFReadTile(file_->Get(), tile.data(), static_cast<std::uint32_t>(x),
                                              static_cast<std::uint32_t>(y), 0, static_cast<std::uint16_t>(plane));
                file_->Check(got > 0,
                             "the tile at " + std::to_string(x) + ", " + std::to_string(y) + " cannot be read");
                CopyTile(tile.data(), x, y, firstRow, rowCount);
            }
        }
    }

    /// Copies what a tile at (x, y) shares with the band of rows.
    void CopyTile(const unsigned char* tile, int x, int y, int firstRow, int rowCount)
    {
        const std::size_t pixelBytes = layout_.RowSamples(1) * layout_.SampleBytes();
        const std::size_t tileRow = pixelBytes * static_cast<std::size_t>(layout_.tileWidth);
        const std::size_t count = pixelBytes * static_cast<std::size_t>(std::min(layout_.tileWidth, Width() - x));
        const int last = std::min(y + layout_.tileHeight, firstRow + rowCount);
        for (int row = std::max(y, firstRow); row < last; ++row) {
            const unsigned char* from = tile + static_cast<std::size_t>(row - y) * tileRow;
            std::copy_n(from, count,
                        rows_.data() + static_cast<std::size_t>(row - firstRow) * RowBytes() +
                            static_cast<std::size_t>(x) * pixelBytes);
        }
    }

    TiffLayout layout_;
    std::unique_ptr<TiffFile> file_;
    std::vector<unsigned char> rows_;
    struct {
        int plane = 0;
        int first = 0;
        int count = 0;
    } held_; ///< the rows in rows_
};

int ReadBits(const TiffFile& file, const std::string& path, bool& isSigned)
{
    const int bits = file.Number<std::uint16_t>(TIFFTAG_BITSPERSAMPLE);
    const int format = file.Number<std::uint16_t>(TIFFTAG_SAMPLEFORMAT);
    const bool isFloat = format == SAMPLEFORMAT_IEEEFP;
    isSigned = format == SAMPLEFORMAT_INT;
    const bool known = isFloat ? bits == 32 || bits == 64 : bits == 8 || bits == 16 || bits == 32;
    if (!known || format == SAMPLEFORMAT_COMPLEXINT || format == SAMPLEFORMAT_COMPLEXIEEEFP) {
        throw FileError(path, "has samples of " + std::to_string(bits) + " bits" +
                                  (isFloat ? " in floating point" : "") +
                                  "; integers of 8, 16 or 32 bits and floats of 32 or 64 bits are read");
    }
    return isFloat ? -bits : bits;
}

/// Planes that a photometric interpretation gives; throws for those that hold no intensities.
int CountPlanes(int photometric, int channels, const std::string& path)
{
    switch (photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_CFA:
        return channels >= 3 && photometric != PHOTOMETRIC_CFA ? 3 : 1;
    case PHOTOMETRIC_RGB:
        return channels >= 3 ? 3 : 1;
    case PHOTOMETRIC_PALETTE:
        throw FileError(path, "stores colours as numbers of a palette; grey and RGB are read");
    default:
        throw FileError(path,
                        "has photometric interpretation " + std::to_string(photometric) + "; grey and RGB are read");
    }
}

TiffLayout ReadLayout(TiffFile& file, const std::string& path)
{
    TiffLayout layout;
    layout.bits = ReadBits(file, path, layout.isSigned);
    layout.channels = file.Number<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL);
    layout.separate = file.Number<std::uint16_t>(TIFFTAG_PLANARCONFIG) == PLANARCONFIG_SEPARATE;
    if (TIFFIsTiled(file.Get()) != 0) {
        const auto width = file.Number<std::uint32_t>(TIFFTAG_TILEWIDTH);
        const auto height = file.Number<std::uint32_t>(TIFFTAG_TILELENGTH);
        constexpr std::uint32_t kMostSide = std::numeric_limits<int>::max() / 2;
        if (width == 0 || height == 0 || width > kMostSide || height > kMostSide) {
            throw FileError(path, "has tiles of an absurd size, " + SizeText(width, height));
        }
        layout.tileWidth = static_cast<int>(width);
        layout.tileHeight = static_cast<int>(height);
    }
    return layout;
}

/// Asks for all that reading takes: a row and a tile, here and once more in libtiff.
void CheckRoom(const TiffFile& file, const std::string& path, const TiffLayout& layout, const Size& size)
{
    const double channels = layout.separate ? 1.0 : layout.channels;
    const double row = size.width * channels * static_cast<double>(layout.SampleBytes());
    CheckClaim(path, path, size, size.width * size.height * layout.channels * static_cast<double>(layout.SampleBytes()),
               kTiffExpansion);
    CheckMemory(path, "a row of " + std::to_string(layout.channels) + " channels", 2.0 * row);
    if (layout.tileWidth > 0) {
        const auto tile = static_cast<double>(TIFFTileSize64(file.Get()));
        const std::string text = SizeText(layout.tileWidth, layout.tileHeight);
        CheckClaim(path, path, {static_cast<double>(layout.tileWidth), static_cast<double>(layout.tileHeight)}, tile,
                   kTiffExpansion);
        CheckMemory(path, "tiles of " + text + " pixels", 2.0 * (row + tile));
    }
}

} // namespace

std::unique_ptr<FrameReader> OpenTiff(const std::string& path)
{
    auto file = std::make_unique<TiffFile>(path);
    TiffLayout layout = ReadLayout(*file, path);
    const int photometric = file->Number<std::uint16_t>(TIFFTAG_PHOTOMETRIC);
    layout.whiteIsZero = photometric == PHOTOMETRIC_MINISWHITE && layout.bits > 0 && !layout.isSigned;
    const double width = file->Number<std::uint32_t>(TIFFTAG_IMAGEWIDTH);
    const double height = file->Number<std::uint32_t>(TIFFTAG_IMAGELENGTH);
    FrameInfo info;
    info.planes = CountPlanes(photometric, layout.channels, path);
    CheckSize(path, path, {width, height}, info.planes, static_cast<int>(layout.SampleBytes()) * 8);
    CheckRoom(*file, path, layout, {width, height});
    info.path = path;
    info.format = "TIFF";
    if (layout.tileWidth == 0 && TIFFScanlineSize64(file->Get()) != layout.RowSamples(width) * layout.SampleBytes()) {
        throw FileError(path, "has rows of an unknown layout");
    }
    info.width = static_cast<int>(width);
    info.height = static_cast<int>(height);
    info.bits = layout.bits;
    const bool bottomUp = file->Number<std::uint16_t>(TIFFTAG_ORIENTATION) == ORIENTATION_BOTLEFT;
    info.header = FromDescription(file->Text(TIFFTAG_IMAGEDESCRIPTION), bottomUp ? "BOTTOM-UP" : "TOP-DOWN");
    return std::make_unique<TiffReader>(std::move(info), layout, std::move(file));
}

bool IsFromCamera(const std::string& path)
{
    try {
        const TiffFile file(path);
        const void* version = nullptr;
        return !file.Text(TIFFTAG_MAKE).empty() || TIFFGetField(file.Get(), TIFFTAG_DNGVERSION, &version) == 1;
    } catch (const Error&) {
        return false; // OpenTiff will say what is wrong
    }
}

} // namespace corvane::io
