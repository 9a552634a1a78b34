#include "io/reader.h"

#include "corvane/core/error.h"
#include "io/formats/bytes.h"
#include "io/formats/cards.h"
#include "io/formats/formats.h"
#include "io/formats/limits.h"
#include "io/input_file.h"

namespace corvane::io {
namespace {

bool IsTiff(const std::string& start)
{
    return start.starts_with(std::string("II*\0", 4)) || start.starts_with(std::string("MM\0*", 4)) ||
           start.starts_with(std::string("II+\0", 4)) || start.starts_with(std::string("MM\0+", 4));
}

std::unique_ptr<FrameReader> OpenOther(const std::string& path, const std::string& start)
{
    if (start.starts_with("\x89PNG")) {
        return OpenPng(path);
    }
    const bool tiff = IsTiff(start);
    if (!tiff || IsFromCamera(path)) {
        if (auto raw = OpenRaw(path)) {
            return raw;
        }
    }
    if (tiff) {
        return OpenTiff(path);
    }
    throw FileError(path, "is not a FITS, TIFF, PNG or camera raw file");
}

} // namespace

bool FrameReader::Describe(CImage& image) const
{
    image.SetOrgBitsPixel(info_.bits);
    image.SetOrgPlanes(info_.planes);
    image.SetOrgFileName(info_.path.c_str());
    image.SetOrgFileFormat(info_.format.c_str());
    image.SetBlankUsed(info_.blank ? 1 : 0);
    image.SetBlank(info_.blank.value_or(0));
    ReadCoordinates(info_.header, image);
    const bool stated = ReadLevels(info_.header, 0).has_value();
    image.SetOwnLevel(stated ? 1 : 0);
    for (int plane = 0; plane < info_.planes; ++plane) {
        const Levels levels = ReadLevels(info_.header, plane).value_or(Levels{0.0, 255.0});
        image.SetLevel(plane, levels.min, levels.max);
        image.SetOrgDefaultLevel(plane, levels.min, levels.max);
    }
    return stated || info_.bits == 8;
}

void FrameReader::ReadRows(int plane, int firstRow, int rowCount, float* samples)
{
    if (plane < 0 || plane >= Planes() || firstRow < 0 || rowCount < 0 || rowCount > Height() - firstRow) {
        throw FileError(Path(), "has no rows " + std::to_string(firstRow) + " to " +
                                    std::to_string(static_cast<long long>(firstRow) + rowCount - 1) + " in plane " +
                                    std::to_string(plane));
    }
    if (rowCount > 0) {
        Read(plane, firstRow, rowCount, samples);
    }
}

std::unique_ptr<FrameReader> OpenFrame(const std::string& path, Cubes cubes)
{
    constexpr std::size_t kMagicBytes = 16;
    const ChosenFile chosen = SplitChoice(path);
    const std::string start = ReadStart(chosen.file, kMagicBytes);
    if (start.starts_with("SIMPLE") || IsPacked(start)) {
        return OpenFits(path, chosen.file, chosen.choice, cubes);
    }
    if (!chosen.choice.empty()) {
        throw FileError(path, "is not a FITS file, so it has no HDU to choose");
    }
    return OpenOther(chosen.file, start);
}

} // namespace corvane::io
