#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/arguments.h"
#include "catalogue/operation.h"

namespace corvane::catalogue {

/// An operation with the values to run it with.
struct Step {
    const Operation* operation;
    Arguments arguments;
};

/// Reads a step: `name` or `name:key=value,key=value`, as `invert` or `clip:min=0,max=65535`. A comma within a value is
/// written twice. Throws Error for a name or value that is unknown, missing, given twice or not allowed.
Step ParseStep(std::string_view text);

/// The step in the form that `ParseStep` reads: names spelt out, values in the catalogue's order. Values taken from the
/// user's settings are among them, so that the text means the same elsewhere.
std::string ToText(const Step& step);

/// The files that the step will read.
std::vector<std::string> FilesOf(const Step& step);

/// Opens the files that the step will read, so that one that is missing or none of its kind is told before any work.
/// Throws Error.
void CheckFiles(const Step& step);

/// Runs the step on the frame and adds one HISTORY line, `corvane apply STEP`. Throws Error, before any work, when the
/// step does not fit the frame; Error for a file that the step reads; CMemoryException when there is no room.
void Run(const Step& step, io::Frame& frame, const Context& context);

} // namespace corvane::catalogue
