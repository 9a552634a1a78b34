#pragma once

#include <functional>
#include <string>

namespace corvane::io {

/// The rows of a picture of 8 bits, grey or RGB.
struct JpegLayout {
    int width;
    int height;
    int planes; ///< 1 or 3
    int quality;
};

/// A JPEG with the profile of sRGB, in memory, of rows that rowOf(row, bytes) writes from the top down, the planes of a
/// pixel side by side. Throws Error that names the path.
std::string EncodeJpeg(const std::string& path, const JpegLayout& layout,
                       const std::function<void(int row, unsigned char* bytes)>& rowOf);

} // namespace corvane::io
