#include "io/frame.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "corvane/core/ascii.h"
#include "corvane/core/error.h"
#include "io/formats/cards.h"
#include "io/formats/formats.h"
#include "io/formats/storage.h"
#include "io/output_file.h"
#include "io/reader.h"

namespace corvane::io {
namespace {

constexpr long long kBandBytes = 4 << 20; // enough for several threads, little beside an image

using Writer = void (*)(OutputFile&, const CStlImage&, const Header&, const Storage&);

struct Format {
    IntegerFormat integers;
    std::vector<std::string> extensions;
    std::vector<int> bits; ///< the first is the default
    Writer write;
};

const std::vector<Format>& Formats()
{
    static const std::vector<Format> formats{
        {{"FITS", true}, {".fits", ".fit", ".fts"}, {-32, 8, 16, 32, -64}, &WriteFits},
        {{"TIFF", false}, {".tif", ".tiff"}, {-32, 8, 16, 32, -64}, &WriteTiff},
        {{"PNG", false}, {".png"}, {16, 8}, &WritePng},
    };
    return formats;
}

template <class T>
bool Contains(const std::vector<T>& list, const T& value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

std::string ExtensionOf(const std::string& path)
{
    return Lower(std::filesystem::path(path).extension().string());
}

/// The format that a path asks for; bits of 0 become those of the format.
const Format& ChooseFormat(const std::string& path, SaveOptions& options)
{
    int& bits = options.bits;
    std::string known;
    for (const Format& format : Formats()) {
        if (!Contains(format.extensions, ExtensionOf(path))) {
            for (const std::string& extension : format.extensions) {
                known += (known.empty() ? "" : ", ") + extension;
            }
            continue;
        }
        bits = bits == 0 ? format.bits.front() : bits;
        if (Contains(format.bits, bits)) {
            CheckScale(path, options);
            return format;
        }
        std::string choices;
        for (const int choice : format.bits) {
            choices += (choices.empty() ? "" : ", ") + std::to_string(choice);
        }
        throw NameError(path, std::to_string(bits) + " bits cannot be saved in this format; it has " + choices);
    }
    throw NameError(path, "unknown format '" + ExtensionOf(path) + "'; frames are saved as " + known);
}

/// Reads all samples, band by band with the planes inside, so that a format which stores them together decodes once.
/// The rows of a plane lie one behind the other, so a band is read to its place; asking for each row first keeps the
/// pages of a paged image within the budget.
void ReadSamples(FrameReader& reader, CStlImage& image)
{
    const long long rowBytes = static_cast<long long>(reader.Width()) * static_cast<long long>(sizeof(float));
    const int most = static_cast<int>(std::clamp<long long>(kBandBytes / rowBytes, 1, reader.Height()));
    for (int first = 0; first < reader.Height(); first += most) {
        const int end = std::min(first + most, reader.Height());
        for (int plane = 0; plane < reader.Planes(); ++plane) {
            for (int row = first; row < end; ++row) {
                image.GetImageAdr(0, row, plane);
            }
            reader.ReadRows(plane, first, end - first, image.GetImageAdr(0, first, plane));
        }
    }
}

/// Says in words, and in the display levels, what a scale that the format cannot state has made of the samples.
void DescribeScale(const Storage& storage, int planes, Header& output)
{
    for (int plane = 0; plane < planes; ++plane) {
        for (const char* name : {"CBLACK", "CWHITE"}) {
            const std::string keyword = name + (plane == 0 ? "" : std::to_string(plane + 1));
            if (const std::optional<double> level = output.Number(keyword)) {
                output.Set(keyword, (*level - storage.zero) / storage.step);
            }
        }
    }
    char text[80];
    std::snprintf(text, sizeof text, "COMMENT sample = %.9g + %.9g * count", storage.zero, storage.step);
    output.AddCard(text);
}

/// The cards that an output carries.
Header OutputHeader(const CStlImage& image, const Header& header, const Storage& storage, const IntegerFormat& format)
{
    std::string text;
    for (const std::string& card : header.Cards()) {
        text += card;
    }
    Header output;
    AddCards(output, text);
    WriteCoordinates(image, output);
    WriteLevels(image, output);
    if (storage.isScaled && !format.isPhysical) {
        DescribeScale(storage, image.GetPlanes(), output);
    }
    return output;
}

} // namespace

void SetFullLevels(CStlImage& image)
{
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        double min = 0.0;
        double max = 0.0;
        image.GetMinMax(plane, &min, &max);
        max = max > min ? max : min + 1.0;
        image.SetLevel(plane, min, max);
        image.SetOrgDefaultLevel(plane, min, max);
    }
}

Frame Load(const std::string& path)
{
    const std::unique_ptr<FrameReader> reader = OpenFrame(path);
    Frame frame;
    try {
        CStlImage image(-32, reader->Width(), reader->Height(), reader->Planes(), 1.0, 0.0, 0);
        frame.image.Swap(&image);
        const bool levelsKnown = reader->Describe(frame.image);
        ReadSamples(*reader, frame.image);
        if (!levelsKnown) {
            SetFullLevels(frame.image);
        }
    } catch (const std::bad_alloc&) {
        throw FileError(path, "there is neither memory nor disk space for its " + std::to_string(reader->Width()) +
                                  " x " + std::to_string(reader->Height()) + " x " + std::to_string(reader->Planes()) +
                                  " samples");
    }
    frame.header = reader->GetHeader();
    return frame;
}

bool HoldsExtensions(const std::string& path)
{
    return Contains(Formats().front().extensions, ExtensionOf(path));
}

void Save(const std::string& path, const CStlImage& image, const Header& header, const SaveOptions& options,
          const std::vector<Extension>& extensions)
{
    try {
        SaveOptions chosen = options;
        const Format& format = ChooseFormat(path, chosen);
        if (!extensions.empty() && !HoldsExtensions(path)) {
            throw NameError(path, "a file of this format holds one image; FITS holds several");
        }
        if (image.GetPixelCount() == 0) {
            throw FileError(path, "the image has no samples");
        }
        OutputFile file(path);
        const Storage storage = ChooseStorage(path, image, chosen, format.integers);
        Header output = OutputHeader(image, header, storage, format.integers);
        if (!extensions.empty()) {
            output.Set("EXTEND", true, "there are extensions");
        }
        format.write(file, image, output, storage);
        for (const Extension& extension : extensions) {
            const Storage floats = ChooseStorage(path, extension.image, {-32}, format.integers);
            WriteFitsExtension(file, extension.name, extension.image,
                               OutputHeader(extension.image, extension.header, floats, format.integers), floats);
        }
        file.Commit();
    } catch (const std::bad_alloc&) {
        throw FileError(path, "there is no memory to write it");
    }
}

std::string FitsHead(const CStlImage& part, const Header& header, int rows)
{
    const IntegerFormat& format = Formats().front().integers;
    const Storage storage = ChooseStorage("", part, {-32}, format);
    return FitsHeaderText(part, rows, OutputHeader(part, header, storage, format), storage);
}

std::string FitsPart(const CStlImage& part, int plane)
{
    return FitsBytesOf(part, plane, ChooseStorage("", part, {-32}, Formats().front().integers));
}

void CheckSave(const std::string& path, const SaveOptions& options)
{
    SaveOptions chosen = options;
    ChooseFormat(path, chosen);
    OutputFile::Check(path);
}

} // namespace corvane::io
