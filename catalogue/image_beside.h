#pragma once

#include <string>

#include "catalogue/arguments.h"
#include "corvane/core/run.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// An image of zeros, of the size and the coordinates of another.
CStlImage EmptyLike(const CStlImage& image);

/// Writes an image of the size of a frame that a step makes besides, with the frame's header; bits as in `SaveOptions`.
void SaveBeside(const std::string& path, const CStlImage& image, const io::Frame& frame, int bits = 0);

/// The image that a parameter names, one of a frame's size whose samples go with those of the frame: of at most so many
/// planes, brought to the frame's order of rows. Throws Error, for a file before its samples are read.
io::Frame FittingImage(const std::string& parameter, int planes, const io::Frame& frame, const Arguments& arguments,
                       const Run& run);

} // namespace corvane::catalogue
