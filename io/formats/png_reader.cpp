#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

#include "corvane/core/error.h"
#include "io/formats/cards.h"
#include "io/formats/decoded_reader.h"
#include "io/formats/formats.h"
#include "io/formats/limits.h"
#include "io/formats/png_file.h"

namespace corvane::io {
namespace {

constexpr const char* kDamaged = "is a damaged PNG file";

PngLayout ReadLayout(PngFile& file)
{
    PngLayout layout;
    file.Run(kDamaged, [&](png_structp png, png_infop info) {
        png_read_info(png, info);
        layout.width = static_cast<int>(png_get_image_width(png, info));
        layout.height = static_cast<int>(png_get_image_height(png, info));
        layout.planes = (png_get_color_type(png, info) & PNG_COLOR_MASK_COLOR) != 0 ? 3 : 1;
        layout.bits = png_get_bit_depth(png, info) == 16 ? 16 : 8;
        layout.interlaced = png_get_interlace_type(png, info) != PNG_INTERLACE_NONE;
    });
    return layout;
}

/// Gets ready to decode rows of grey or RGB, of bytes or of 16-bit numbers as this machine has them.
void StartDecoding(PngFile& file, const PngLayout& layout, const std::string& path)
{
    if (ReadLayout(file) != layout) {
        throw FileError(path, "has changed since it was opened");
    }
    file.Run(kDamaged, [](png_structp png, png_infop info) {
        if (png_get_color_type(png, info) == PNG_COLOR_TYPE_PALETTE) {
            png_set_palette_to_rgb(png);
        }
        if (png_get_bit_depth(png, info) < 8) {
            png_set_expand_gray_1_2_4_to_8(png);
        }
        if constexpr (std::endian::native == std::endian::little) {
            png_set_swap(png);
        }
        png_set_strip_alpha(png);
        png_set_interlace_handling(png);
        png_read_update_info(png, info);
    });
}

std::string ReadDescription(const PngFile& file)
{
    png_textp texts = nullptr;
    const int count = png_get_text(file.Png(), file.Info(), &texts, nullptr);
    for (int i = 0; i < count; ++i) {
        if (std::string(texts[i].key) == "Description") {
            return texts[i].text;
        }
    }
    return "";
}

/// Where bytes are decoded to that become 16-bit samples: the back of the room for these, from where they are widened.
png_bytep DecodedBytes(std::uint16_t* samples, std::size_t count, const PngLayout& layout)
{
    return reinterpret_cast<png_bytep>(samples + count) - count * static_cast<std::size_t>(layout.bits) / 8;
}

class PngReader : public DecodedReader {
public:
    PngReader(FrameInfo info, const PngLayout& layout) : DecodedReader(std::move(info)), layout_(layout) {}

private:
    DecodedSamples Decode() override
    {
        PngFile file(Path());
        StartDecoding(file, layout_, Path());
        DecodedSamples samples(layout_.RowSamples() * static_cast<std::size_t>(layout_.height));
        png_bytep start = DecodedBytes(samples.data(), samples.size(), layout_);
        std::vector<png_bytep> rows(static_cast<std::size_t>(layout_.height));
        const std::size_t rowBytes = layout_.RowSamples() * static_cast<std::size_t>(layout_.bits) / 8;
        std::generate(rows.begin(), rows.end(),
                      [row = start, rowBytes]() mutable { return std::exchange(row, row + rowBytes); });
        file.Run(kDamaged, [&](png_structp png, png_infop) {
            png_read_image(png, rows.data());
            png_read_end(png, nullptr);
        });
        if (layout_.bits == 8) {
            std::copy_n(start, samples.size(), samples.begin());
        }
        return samples;
    }

    PngLayout layout_;
};

/// Reads what is too large to be decoded as a whole: rows in their order, and from the first again when one is wanted
/// that went before.
class PngBandReader : public FrameReader {
public:
    PngBandReader(FrameInfo info, const PngLayout& layout) : FrameReader(std::move(info)), layout_(layout) {}

    void Close() override
    {
        file_.reset();
        band_ = {};
        first_ = 0;
        count_ = 0;
    }

private:
    void Read(int plane, int firstRow, int rowCount, float* samples) override
    {
        const auto planes = static_cast<std::size_t>(Planes());
        for (int row = firstRow; row < firstRow + rowCount; ++row) {
            Hold(row, firstRow + rowCount);
            const std::uint16_t* from =
                band_.data() + static_cast<std::size_t>(row - first_) * layout_.RowSamples() + plane;
            for (int x = 0; x < Width(); ++x, from += planes) {
                *samples++ = *from;
            }
        }
    }

    /// Decodes a row and those up to `end`, as far as there is room. They are kept for the other planes.
    void Hold(int row, int end)
    {
        if (row >= first_ && row < first_ + count_) {
            return;
        }
        std::unique_ptr<PngFile> file = std::move(file_); // back in its place when all went well
        int next = std::exchange(first_, row) + std::exchange(count_, 0);
        if (file == nullptr || row < next) {
            file = std::make_unique<PngFile>(Path());
            StartDecoding(*file, layout_, Path());
            next = 0;
        }
        const std::size_t room = BandBytes() / (layout_.RowSamples() * sizeof(std::uint16_t));
        const int most = static_cast<int>(std::clamp<std::size_t>(room, 1, static_cast<std::size_t>(end - row)));
        band_.resize(layout_.RowSamples() * static_cast<std::size_t>(most));
        for (; next < row; ++next) {
            DecodeRow(*file, band_.data());
        }
        for (int i = 0; i < most; ++i) {
            DecodeRow(*file, band_.data() + static_cast<std::size_t>(i) * layout_.RowSamples());
        }
        count_ = most;
        file_ = std::move(file);
    }

    void DecodeRow(PngFile& file, std::uint16_t* row) const
    {
        png_bytep bytes = DecodedBytes(row, layout_.RowSamples(), layout_);
        file.Run(kDamaged, [&](png_structp png, png_infop) { png_read_row(png, bytes, nullptr); });
        if (layout_.bits == 8) {
            std::copy_n(bytes, layout_.RowSamples(), row);
        }
    }

    PngLayout layout_;
    std::unique_ptr<PngFile> file_; ///< stands behind the last row of the band
    DecodedSamples band_;
    int first_ = 0;
    int count_ = 0;
};

/// Asks for what decoding takes: a few rows, or all of an image whose rows are interlaced.
void CheckRoom(PngFile& file, const std::string& path, const PngLayout& layout)
{
    constexpr double kDeflateExpansion = 1032.0; // of Deflate
    const Size size{static_cast<double>(layout.width), static_cast<double>(layout.height)};
    const double pixelBits = png_get_bit_depth(file.Png(), file.Info()) * png_get_channels(file.Png(), file.Info());
    CheckSize(path, path, size, layout.planes, layout.bits);
    CheckClaim(path, path, size, size.width * size.height * pixelBits / 8, kDeflateExpansion);
    const double row = static_cast<double>(layout.RowSamples() * sizeof(std::uint16_t));
    CheckMemory(path, layout.interlaced ? "all of its rows, which are interlaced" : "decoding its rows",
                layout.interlaced ? row * (size.height + 4.0) : row * 4.0);
}

} // namespace

std::unique_ptr<FrameReader> OpenPng(const std::string& path)
{
    PngFile file(path);
    const PngLayout layout = ReadLayout(file);
    CheckRoom(file, path, layout);
    FrameInfo info;
    info.path = path;
    info.format = "PNG";
    info.width = layout.width;
    info.height = layout.height;
    info.planes = layout.planes;
    info.bits = layout.bits;
    info.header = FromDescription(ReadDescription(file), "TOP-DOWN");
    const std::uint64_t bytes = layout.RowSamples() * static_cast<std::uint64_t>(layout.height) * sizeof(std::uint16_t);
    if (layout.interlaced || bytes <= DecodedReader::MostBytes()) {
        return std::make_unique<PngReader>(std::move(info), layout);
    }
    return std::make_unique<PngBandReader>(std::move(info), layout);
}

} // namespace corvane::io
