#pragma once

#include <istream>
#include <string>

namespace corvane::cli {

/// Fills the table of settings from the user's configuration file, `[PrcAutoLevel]` and lines as `Min=0.2`; lines that
/// begin with # or ; are comments.
///
/// The file is what CORVANE_CONFIG names, else `corvane/settings.ini` in XDG_CONFIG_HOME or in `~/.config`, where it
/// may be missing. Throws Error naming the file and the line that is wrong.
void ReadSettings();

/// The same from a stream; `path` is its name in errors.
void ReadSettings(std::istream& stream, const std::string& path);

} // namespace corvane::cli
