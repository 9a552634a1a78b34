#include <cstdio>
#include <string>
#include <vector>

#include "io/error.h"
#include "io/formats/cards.h"
#include "io/formats/formats.h"
#include "io/formats/png_file.h"
#include "io/formats/samples.h"
#include "io/metadata.h"

namespace corvane::io {
namespace {

constexpr const char* kUnwritten = "cannot be written as PNG";

std::string Short(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.6g", static_cast<double>(value));
    return text;
}

/// PNG holds counts; data on another scale would be lost without a word.
void CheckRange(const std::string& path, const SampleSurvey& survey, int bits)
{
    const float most = bits == 8 ? 255.0F : 65535.0F;
    const bool outside = survey.min < 0.0F || survey.max > most;
    if (outside || (survey.max <= 1.0F && survey.fractions)) {
        throw Error(path, "a PNG of " + std::to_string(bits) + " bits holds counts from 0 to " + Short(most) +
                              ", the samples are " + Short(survey.min) + " to " + Short(survey.max) +
                              "; save as FITS or TIFF, or make a picture with `corvane render`");
    }
}

/// One row as the file has it: the planes' samples side by side, the high byte first.
void FillRow(const CImage& image, int y, int bits, std::vector<png_byte>& row)
{
    const int planes = image.GetPlanes();
    const std::size_t sampleBytes = static_cast<std::size_t>(bits) / 8;
    for (int plane = 0; plane < planes; ++plane) {
        const float* from = RowOf(image, y, plane);
        png_byte* to = row.data() + static_cast<std::size_t>(plane) * sampleBytes;
        for (int x = 0; x < image.GetWidth(); ++x, to += static_cast<std::size_t>(planes) * sampleBytes) {
            const auto count = RoundTo<std::uint16_t>(from[x], 0.0);
            to[0] = static_cast<png_byte>(bits == 8 ? count : count >> 8);
            if (bits == 16) {
                to[1] = static_cast<png_byte>(count);
            }
        }
    }
}

} // namespace

void WritePng(OutputFile& output, const CStlImage& image, const Header& header, int bits)
{
    const SampleSurvey survey = Survey(image);
    RefuseUndefined(output.Path(), survey, "PNG");
    CheckRange(output.Path(), survey, bits);
    Header described = header;
    described.Set("ROWORDER", RowOrder(header));
    PngFile file(output);
    StartPng(file, {image.GetWidth(), image.GetHeight(), image.GetPlanes(), bits}, ToDescription(described));
    std::vector<png_byte> row(static_cast<std::size_t>(image.GetWidth()) * image.GetPlanes() * bits / 8);
    for (int y = 0; y < image.GetHeight(); ++y) {
        FillRow(image, y, bits, row);
        file.Run(kUnwritten, [&](png_structp png, png_infop) { png_write_row(png, row.data()); });
    }
    file.Run(kUnwritten, [](png_structp png, png_infop info) { png_write_end(png, info); });
}

} // namespace corvane::io
