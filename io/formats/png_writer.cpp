#include <vector>

#include "io/formats/cards.h"
#include "io/formats/formats.h"
#include "io/formats/png_file.h"
#include "io/metadata.h"

namespace corvane::io {
namespace {

constexpr const char* kUnwritten = "cannot be written as PNG";

/// One row as the file has it: the planes' samples side by side, the high byte first.
void FillRow(const CImage& image, int y, const Storage& storage, std::vector<png_byte>& row)
{
    const int planes = image.GetPlanes();
    const std::size_t sampleBytes = static_cast<std::size_t>(storage.bits) / 8;
    for (int plane = 0; plane < planes; ++plane) {
        const float* from = RowOf(image, y, plane);
        png_byte* to = row.data() + static_cast<std::size_t>(plane) * sampleBytes;
        for (int x = 0; x < image.GetWidth(); ++x, to += static_cast<std::size_t>(planes) * sampleBytes) {
            if (storage.bits == 8) {
                to[0] = storage.Stored<std::uint8_t>(from[x]);
            } else {
                const auto count = storage.Stored<std::uint16_t>(from[x]);
                to[0] = static_cast<png_byte>(count >> 8);
                to[1] = static_cast<png_byte>(count);
            }
        }
    }
}

} // namespace

void WritePng(OutputFile& output, const CStlImage& image, const Header& header, const Storage& storage)
{
    Header described = header;
    described.Set("ROWORDER", RowOrder(header));
    PngFile file(output);
    StartPng(file, {image.GetWidth(), image.GetHeight(), image.GetPlanes(), storage.bits}, ToDescription(described));
    std::vector<png_byte> row(static_cast<std::size_t>(image.GetWidth()) * image.GetPlanes() * storage.bits / 8);
    for (int y = 0; y < image.GetHeight(); ++y) {
        FillRow(image, y, storage, row);
        file.Run(kUnwritten, [&](png_structp png, png_infop) { png_write_row(png, row.data()); });
    }
    file.Run(kUnwritten, [](png_structp png, png_infop info) { png_write_end(png, info); });
}

} // namespace corvane::io
