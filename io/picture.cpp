#include "io/picture.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "io/formats/formats.h"
#include "io/formats/jpeg_file.h"
#include "io/formats/png_file.h"
#include "io/formats/samples.h"
#include "io/formats/srgb_profile.h"
#include "io/frame.h"
#include "io/output_file.h"

namespace corvane::io {

namespace {

enum class PictureKind { kPng, kJpeg, kTiff, kUnknown };

PictureKind PictureKindOf(const std::string& path)
{
    const std::string extension = std::filesystem::path(path).extension().string();
    const auto is = [&](const char* word) { return SameWord(extension, word); };
    return is(".png")                  ? PictureKind::kPng
           : is(".jpg") || is(".jpeg") ? PictureKind::kJpeg
           : is(".tif") || is(".tiff") ? PictureKind::kTiff
                                       : PictureKind::kUnknown;
}

/// An image as the rows of a picture, from the top down, the planes of a pixel side by side.
class PictureRows {
public:
    PictureRows(const CStlImage& image, bool bottomUp)
        : image_(image), bottomUp_(bottomUp), planes_(image.IsColor() != 0 ? 3 : 1)
    {}

    int Width() const { return image_.GetWidth(); }
    int Height() const { return image_.GetHeight(); }
    int Planes() const { return planes_; }

    void Read(int row, unsigned char* bytes) const
    {
        Fill(row, bytes, [this](int plane) {
            return [this, plane](const float* sample) {
                return std::isnan(*sample) ? png_byte{0} : image_.GetPixelGray256(sample, plane);
            };
        });
    }

    /// The same in 65,536 steps.
    void Read16(int row, std::uint16_t* samples) const
    {
        Fill(row, samples, [this](int plane) {
            return [min = image_.GetLevelMin(plane), range = image_.GetLevelRange(plane)](const float* sample) {
                constexpr double kWhite = 65535.0;
                const double shown = (*sample - min) / range;
                const double within = shown > 0.0 ? std::min(shown, 1.0) : 0.0; // NaN is black
                return static_cast<std::uint16_t>(std::floor(within * kWhite + 0.5));
            };
        });
    }

private:
    /// Gives each sample of a row what shownBy(plane)(sample) is.
    template <class Step, class ShownBy>
    void Fill(int row, Step* steps, ShownBy shownBy) const
    {
        for (int plane = 0; plane < planes_; ++plane) {
            const float* const from = RowOf(image_, bottomUp_ ? Height() - 1 - row : row, plane);
            const auto shown = shownBy(plane);
            Step* to = steps + plane;
            for (int x = 0; x < Width(); ++x, to += planes_) {
                *to = shown(from + x);
            }
        }
    }

    const CStlImage& image_;
    bool bottomUp_;
    int planes_;
};

void WritePictureRows(PngFile& file, const PictureRows& picture, int bits)
{
    constexpr const char* kCannot = "cannot be written as PNG";
    const PngLayout layout{picture.Width(), picture.Height(), picture.Planes(), bits};
    StartPng(file, layout, "");
    std::vector<png_byte> bytes(layout.RowSamples() * static_cast<std::size_t>(bits / 8));
    std::vector<std::uint16_t> samples(layout.RowSamples());
    for (int row = 0; row < picture.Height(); ++row) {
        if (bits == 8) {
            picture.Read(row, bytes.data());
        } else {
            picture.Read16(row, samples.data());
            for (std::size_t i = 0; i < samples.size(); ++i) {
                bytes[2 * i] = static_cast<png_byte>(samples[i] >> 8);
                bytes[2 * i + 1] = static_cast<png_byte>(samples[i] & 0xFF);
            }
        }
        file.Run(kCannot, [&](png_structp png, png_infop) { png_write_row(png, bytes.data()); });
    }
    file.Run(kCannot, [](png_structp png, png_infop info) { png_write_end(png, info); });
}

/// The picture as a JPEG; `name` is what errors call it.
std::string JpegOf(const std::string& name, const PictureRows& picture, int quality)
{
    return EncodeJpeg(name, {picture.Width(), picture.Height(), picture.Planes(), quality},
                      [&](int row, unsigned char* to) { picture.Read(row, to); });
}

/// The picture as a frame of counts, whose first row is the top.
Frame CountsOf(const PictureRows& picture, int bits)
{
    Frame frame;
    frame.image = CStlImage(-32, picture.Width(), picture.Height(), picture.Planes(), 1.0, 0.0, 1);
    frame.header.Set("ROWORDER", std::string("TOP-DOWN"));
    const auto planes = static_cast<std::size_t>(picture.Planes());
    const auto fill = [&](auto sample, auto read) {
        std::vector<decltype(sample)> row(static_cast<std::size_t>(picture.Width()) * planes);
        for (int y = 0; y < picture.Height(); ++y) {
            read(y, row.data());
            for (std::size_t p = 0; p < planes; ++p) {
                float* const to = frame.image.GetImageAdr(0, y, static_cast<int>(p));
                for (int x = 0; x < picture.Width(); ++x) {
                    to[x] = row[static_cast<std::size_t>(x) * planes + p];
                }
            }
        }
    };
    if (bits == 8) {
        fill(png_byte{}, [&](int y, png_byte* row) { picture.Read(y, row); });
    } else {
        fill(std::uint16_t{}, [&](int y, std::uint16_t* row) { picture.Read16(y, row); });
    }
    return frame;
}

} // namespace

void CheckPicture(const std::string& path, const PictureFormat& format)
{
    const PictureKind kind = PictureKindOf(path);
    if (kind == PictureKind::kUnknown) {
        throw NameError(path, "is no name for a picture; it must end with .png, .jpg or .tif");
    }
    if (kind == PictureKind::kJpeg && format.bits > 8) {
        throw ParameterError("bits", std::to_string(format.bits), "must be 8 for JPEG");
    }
    OutputFile::Check(path);
}

void SavePicture(const std::string& path, const CStlImage& image, bool bottomUp, const PictureFormat& format)
{
    CheckPicture(path, format);
    const PictureRows picture(image, bottomUp);
    const PictureKind kind = PictureKindOf(path);
    const int bits = format.bits != 0 ? format.bits : (kind == PictureKind::kTiff ? 16 : 8);
    OutputFile output(path);
    if (kind == PictureKind::kTiff) {
        const Frame counts = CountsOf(picture, bits);
        WriteTiffPicture(output, counts.image, counts.header, {bits, UndefinedTest(counts.image)},
                         SrgbProfile(picture.Planes()));
    } else if (kind == PictureKind::kJpeg) {
        const std::string bytes = JpegOf(path, picture, format.quality);
        output.Write(bytes.data(), bytes.size());
    } else {
        PngFile file(output);
        WritePictureRows(file, picture, bits);
    }
    output.Commit();
}

std::string EncodePicture(const CStlImage& image, bool bottomUp)
{
    std::string bytes;
    PngFile file(bytes);
    WritePictureRows(file, PictureRows(image, bottomUp), 8);
    return bytes;
}

std::string EncodePhoto(const CStlImage& image, bool bottomUp, int quality)
{
    return JpegOf("picture", PictureRows(image, bottomUp), quality);
}

} // namespace corvane::io
