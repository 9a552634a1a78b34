#pragma once

#include <string>

#include "io/frame.h"
#include "stack/stack.h"

namespace corvane::cli {

/// Throws NameError unless the path ends with .json, .csv or .html, Error when it cannot be written.
void CheckReport(const std::string& path);

/// Writes what became of each light: JSON or CSV with everything that is known of it, or a page with plots that needs
/// nothing but a browser and begins with the stack, if there is one, as `develop` shows it. Throws Error.
void WriteReport(const std::string& path, const stack::Registration& lights, const io::Frame* stack = nullptr,
                 const Run& run = {});

/// How deep a stack is, as a line for people; empty when that is not known.
std::string DepthText(const stack::Registration& lights);

/// The lights for people: how many are used, how each is placed or why it is left out, notes and times. `all` tells of
/// lights that need no placing, too.
std::string LightsText(const stack::Options& options, const stack::Registration& lights, bool all);

} // namespace corvane::cli
