#pragma once

#include <filesystem>
#include <stdexcept>

#include <corvane/corvane.h>

namespace example {

/// Why a file is not opened, in words for the user.
class BitmapError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The image in a bitmap file (.bmp): one plane for greys, three for colours, levels 0 to 255.
/// Throws BitmapError, and CMemoryException when there is no room.
CStlImage ReadBitmapFile(const std::filesystem::path& path);

} // namespace example
