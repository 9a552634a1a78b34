#pragma once

#include <string>

#include "corvane/platform/export.h"

namespace corvane::io {

/// A path taken apart into the file and the part of it that is chosen, as in `m31.fits[1]`; a file of just that name
/// goes before.
struct ChosenFile {
    std::string file;
    std::string choice; ///< empty when nothing is chosen
};

/// Takes a path apart. Where neither name exists, the whole path is the file.
CORVANE_VISIBLE ChosenFile SplitChoice(const std::string& path);

/// The name of a path's file without its folder and what says its format: "m31" of "night/m31.fits.fz[1]".
CORVANE_VISIBLE std::string StemOf(const std::string& path);

/// Throws Error unless the path leads to an ordinary file: reading a pipe or a device may never end.
CORVANE_VISIBLE void CheckOrdinaryFile(const std::string& path);

} // namespace corvane::io
