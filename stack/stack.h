#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "io/header.h"
#include "stack/options.h"

/// A night's frames into one calibrated stack.
///
/// The library prints nothing. Errors are thrown: `OptionError` for what was asked, `io::Error` for a file, `Cancelled`
/// for the user's ESC, CMemoryException when there is no room.
namespace corvane::stack {

/// What became of one light.
struct FrameReport {
    std::string file;
    bool used = true;
    std::string reason;       ///< why it was left out; empty when used
    double dx = 0.0;          ///< shift that places it onto the reference, to the right [pixels, tenths]
    double dy = 0.0;          ///< the same downwards
    double correlation = 1.0; ///< of what was found with the reference [-1..1]; 0 when nothing was found
};

/// One step of the work and how long it took.
struct Stage {
    std::string name; ///< "check", "masters", "align", "combine"
    double seconds = 0.0;
};

/// A finished stack.
struct Result {
    CStlImage image; ///< float samples, the size and planes of the lights; a blank is declared where nothing is known
    io::Header header;
    std::optional<PixelPlace> reference; ///< centre of the patch that was found in the others; unset without alignment
    std::vector<FrameReport> frames;     ///< one for each light, in their order
    std::vector<std::string> notes;      ///< what the user should know: assumptions made, one sentence each
    std::vector<Stage> stages;
};

/// Checks options and files, makes the masters, calibrates, aligns and combines.
///
/// Everything that can be judged before the work is: options, missing files, sizes, exposures. The first light is the
/// reference. A light that cannot be aligned with certainty is left out and named in the report. Fewer than two lights
/// left of several is an error that lists the reasons; a single light is calibrated alone.
CORVANE_API Result Run(const Options& options);

} // namespace corvane::stack
