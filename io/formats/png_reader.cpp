#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

#include "io/error.h"
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
    });
    return layout;
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

class PngReader : public DecodedReader {
public:
    PngReader(FrameInfo info, const PngLayout& layout) : DecodedReader(std::move(info)), layout_(layout) {}

private:
    DecodedSamples Decode() override
    {
        PngFile file(Path());
        const PngLayout now = ReadLayout(file);
        if (now.width != layout_.width || now.height != layout_.height || now.planes != layout_.planes ||
            now.bits != layout_.bits) {
            throw Error(Path(), "has changed since it was opened");
        }
        const auto rowSamples = static_cast<std::size_t>(layout_.width) * layout_.planes;
        DecodedSamples samples(rowSamples * layout_.height);
        // Bytes are decoded into the back of the room for the 16-bit samples and widened from there.
        const std::size_t bytes = samples.size() * static_cast<std::size_t>(layout_.bits) / 8;
        auto* start = reinterpret_cast<png_bytep>(samples.data() + samples.size()) - bytes;
        std::vector<png_bytep> rows(static_cast<std::size_t>(layout_.height));
        std::generate(rows.begin(), rows.end(),
                      [row = start, step = bytes / rows.size()]() mutable { return std::exchange(row, row + step); });
        file.Run(kDamaged, [&](png_structp png, png_infop info) { DecodeRows(png, info, rows.data()); });
        if (layout_.bits == 8) {
            std::copy_n(start, samples.size(), samples.begin());
        }
        return samples;
    }

    static void DecodeRows(png_structp png, png_infop info, png_bytepp rows)
    {
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
        png_read_image(png, rows);
        png_read_end(png, nullptr);
    }

    PngLayout layout_;
};

} // namespace

std::unique_ptr<FrameReader> OpenPng(const std::string& path)
{
    PngFile file(path);
    const PngLayout layout = ReadLayout(file);
    CheckSize(path, path, {static_cast<double>(layout.width), static_cast<double>(layout.height)}, layout.planes,
              layout.bits);
    FrameInfo info;
    info.path = path;
    info.format = "PNG";
    info.width = layout.width;
    info.height = layout.height;
    info.planes = layout.planes;
    info.bits = layout.bits;
    info.header = FromDescription(ReadDescription(file), "TOP-DOWN");
    return std::make_unique<PngReader>(std::move(info), layout);
}

} // namespace corvane::io
