#pragma once

#include <optional>
#include <string>

#include <CLI/App.hpp>

#include "io/frame.h"
#include "io/picture.h"

namespace corvane::cli {

/// How a frame becomes a picture.
struct PictureWords {
    std::string stretch{}; ///< as `catalogue::MakeShown` takes it
    int size = 0;          ///< the longer side at most [pixels]; 0: as it is
    io::PictureFormat format{};
};

/// Adds `--stretch`.
CLI::Option* AddStretch(CLI::App& command, PictureWords& words);

/// Writes the frame as a picture for the screen, the right way up; the frame itself stays. `levels` is a catalogue step
/// that sets the display levels in place of a stretch, as "auto-levels"; with an empty text they are used as they are.
/// Throws Error.
void SavePicture(const std::string& path, const io::Frame& frame, const PictureWords& words,
                 const std::optional<std::string>& levels = {});

/// Adds `--size`, `--quality` and `--bits`.
void AddPictureFormat(CLI::App& command, PictureWords& words);

} // namespace corvane::cli
