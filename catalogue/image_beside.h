#pragma once

#include <string>

#include "io/frame.h"

namespace corvane::catalogue {

/// An image of zeros, of the size and the coordinates of another.
CStlImage EmptyLike(const CStlImage& image);

/// Writes an image of the size of a frame that a step makes besides, with the frame's header; bits as in `SaveOptions`.
void SaveBeside(const std::string& path, const CStlImage& image, const io::Frame& frame, int bits = 0);

} // namespace corvane::catalogue
