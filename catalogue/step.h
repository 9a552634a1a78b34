#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/arguments.h"
#include "catalogue/operation.h"

namespace corvane::catalogue {

/// The value that a program gives a parameter: {"shape", 1}, {"rect", CRect(0, 0, 9, 9)}, {"file", "dark.fits"}.
struct Setting {
    std::string name;
    Value value;
};
using Settings = std::vector<Setting>;

/// An operation with the values to run it with.
struct CORVANE_VISIBLE Step {
    const Operation* operation;
    Arguments arguments;

    /// Reads a step: `name` or `name:key=value,key=value`, as `invert` or `clip:min=0,max=65535`. A comma within a
    /// value is written twice. Throws Error for a name or value that is unknown, missing, given twice or not allowed.
    Step(std::string_view text); // NOLINT(google-explicit-constructor): a list of steps is a list of texts
    Step(const char* text) : Step(std::string_view(text)) {} // NOLINT(google-explicit-constructor)
    /// The same of an operation's name and values.
    Step(std::string_view name, const Settings& settings);
};

/// `Step(text)`.
CORVANE_VISIBLE Step ParseStep(std::string_view text);

/// The values that an operation is to run with: those given, judged, and the defaults of the others. Throws Error
/// without the operation's name.
CORVANE_VISIBLE Arguments MakeArguments(const Operation& operation, const Settings& settings);

/// The step in the form that `ParseStep` reads: names spelt out, values in the catalogue's order. Values taken from the
/// user's settings are among them, so that the text means the same elsewhere.
CORVANE_VISIBLE std::string ToText(const Step& step);

/// The files that an operation will read besides its inputs.
CORVANE_VISIBLE std::vector<std::string> FilesOf(const Arguments& arguments);

/// The files that it will write besides its outputs.
CORVANE_VISIBLE std::vector<std::string> WrittenFilesOf(const Arguments& arguments);

/// Opens the files that are read, so that one that is missing or none of its kind is told before any work, and judges
/// the names of those that are written. Throws Error.
CORVANE_VISIBLE void CheckFiles(const Arguments& arguments);

/// Runs the step on the frame, whose header tells nothing of it. Throws what `RunStep` throws.
void DoStep(const Step& step, io::Frame& frame, const Run& run);

/// Runs the step on the frame and adds one HISTORY line, `corvane apply STEP`. Throws Error, before any work, when the
/// step does not fit the frame; Error for a file that the step reads; CMemoryException when there is no room.
CORVANE_VISIBLE void RunStep(const Step& step, io::Frame& frame, const Run& run);

/// Runs any operation on the frames of its inputs, and adds a HISTORY line by which the command does the same. Throws
/// as `RunStep`, without the operation's name.
CORVANE_VISIBLE Outputs RunOperation(const Operation& operation, Inputs inputs, const Arguments& arguments,
                                     const Run& run);

} // namespace corvane::catalogue
