#include "io/picture.h"

#include <cmath>
#include <vector>

#include "io/formats/png_file.h"
#include "io/formats/samples.h"
#include "io/output_file.h"

namespace corvane::io {

namespace {

void WritePicture(PngFile& file, const CStlImage& image, bool bottomUp)
{
    const int planes = image.IsColor() != 0 ? 3 : 1;
    const int width = image.GetWidth();
    const int height = image.GetHeight();
    StartPng(file, {width, height, planes, 8}, "");
    std::vector<png_byte> row(static_cast<std::size_t>(width) * planes);
    for (int i = 0; i < height; ++i) {
        for (int plane = 0; plane < planes; ++plane) {
            const float* from = RowOf(image, bottomUp ? height - 1 - i : i, plane);
            for (int x = 0; x < width; ++x) {
                const bool isKnown = !std::isnan(from[x]);
                row[static_cast<std::size_t>(x) * planes + plane] =
                    isKnown ? image.GetPixelGray256(from + x, plane) : png_byte{0};
            }
        }
        file.Run("cannot be written as PNG", [&](png_structp png, png_infop) { png_write_row(png, row.data()); });
    }
    file.Run("cannot be written as PNG", [](png_structp png, png_infop info) { png_write_end(png, info); });
}

} // namespace

void SavePicture(const std::string& path, const CStlImage& image, bool bottomUp)
{
    OutputFile output(path);
    PngFile file(output);
    WritePicture(file, image, bottomUp);
    output.Commit();
}

std::string EncodePicture(const CStlImage& image, bool bottomUp)
{
    std::string bytes;
    PngFile file(bytes);
    WritePicture(file, image, bottomUp);
    return bytes;
}

} // namespace corvane::io
