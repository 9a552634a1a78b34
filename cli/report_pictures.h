#pragma once

#include <string>

#include "io/frame.h"
#include "stack/stack.h"

namespace corvane::cli {

/// Small pictures of the lights, each by a stretch of its own, for a page; empty when there are none. Those that are
/// left out are marked, and each tells its light under the mouse.
std::string LightPictures(const stack::Registration& lights);

/// The stack as `develop` shows it, no longer than a screen, as a picture for a page; a sentence where it cannot be
/// developed.
std::string DevelopedPicture(const io::Frame& stack, const Run& run);

/// Where on the stack values were dropped, as a picture for a page; empty when that was not counted.
std::string RejectedPicture(const stack::Registration& lights);

} // namespace corvane::cli
