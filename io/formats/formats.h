#pragma once

#include <memory>
#include <string>

#include "corvane/core/stl_image.h"
#include "io/formats/storage.h"
#include "io/output_file.h"
#include "io/reader.h"

namespace corvane::io {

/// @name Opening a file of a known format
/// @{

/// `chosen` names HDU and plane, see FitsChoice; `name` is the path as the user wrote it.
std::unique_ptr<FrameReader> OpenFits(const std::string& name, const std::string& path, const std::string& chosen,
                                      Cubes cubes);
std::unique_ptr<FrameReader> OpenTiff(const std::string& path);
std::unique_ptr<FrameReader> OpenPng(const std::string& path);
/// Null when the file is no camera raw file.
std::unique_ptr<FrameReader> OpenRaw(const std::string& path);
/// True when a TIFF file says that a camera made it, so that it may be a raw file.
bool IsFromCamera(const std::string& path);
/// @}

/// @name Writing an image in one format
/// @{
void WriteFits(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage);
/// The same of an image behind others of the file.
void WriteFitsExtension(OutputFile& file, const std::string& name, const CStlImage& image, const Header& header,
                        const Storage& storage);
/// The bytes before the samples of an image that has so many rows.
std::string FitsHeaderText(const CStlImage& image, int rows, const Header& header, const Storage& storage);
/// The samples of a plane as FITS stores floats, row by row.
std::string FitsBytesOf(const CStlImage& image, int plane, const Storage& storage);
void WriteTiff(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage);
/// With a profile of its colours, which a picture has and an image without any leaves empty.
void WriteTiffPicture(OutputFile& file, const CStlImage& image, const Header& header, const Storage& storage,
                      const std::string& profile);
void WritePng(OutputFile& output, const CStlImage& image, const Header& header, const Storage& storage);
/// @}

} // namespace corvane::io
