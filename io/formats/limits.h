#pragma once

#include <string>

namespace corvane::io {

struct Size {
    double width;
    double height;
};

/// Throws Error when a frame has no samples, does not have 1 or 3 planes, is larger than an image can be, or claims far
/// more samples than any compression could have put into the file at `path`. To be called before memory is taken.
void CheckSize(const std::string& name, const std::string& path, const Size& size, double planes, int bits);

/// True when the file as a whole is gzip- or LZW-compressed.
bool IsCompressedFile(const std::string& path);

/// The first bytes of a file, at most `count`. Throws Error when the file is missing, a folder, empty or not readable.
std::string ReadStart(const std::string& path, std::size_t count);

} // namespace corvane::io
