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

/// Throws Error when a format that packs its samples by `mostExpansion` at best cannot have put so many bytes of them
/// into the file at `path`.
void CheckClaim(const std::string& name, const std::string& path, const Size& size, double bytes, double mostExpansion);

/// Throws Error when a reader would hold more bytes at once than the memory budget allows; `what` tells what for. To be
/// called before memory is taken, with all of it: what the reader takes, and the library that decodes for it.
void CheckMemory(const std::string& name, const std::string& what, double bytes);

/// What a reader may hold of decoded rows [bytes], unless one row takes more.
std::size_t BandBytes();

/// The first bytes of a file, at most `count`. Throws Error when the file is missing, a folder, empty or not readable.
std::string ReadStart(const std::string& path, std::size_t count);

} // namespace corvane::io
