#pragma once

#include <string>

#include "io/frame.h"

namespace corvane::cli {

/// Throws the Error that `SavePicture` would throw for the path alone, NameError unless it ends with .png.
void CheckPicture(const std::string& path);

/// Writes the frame as a picture for the screen, the right way up. `levels` is a catalogue step that sets the display
/// levels first, as "auto-levels"; with an empty text they are used as they are. Throws Error.
void SavePicture(const std::string& path, io::Frame& frame, const std::string& levels);

} // namespace corvane::cli
