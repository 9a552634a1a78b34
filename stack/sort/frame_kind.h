#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "corvane/platform/export.h"
#include "io/header.h"

namespace corvane::stack {

/// What a frame of a night is for.
enum class FrameKind { kLight, kBias, kDark, kFlat, kFlatDark };

/// "light", "bias", "dark", "flat", "flat-dark"
CORVANE_VISIBLE const char* NameOf(FrameKind kind);

/// What a header says that its frame is: IMAGETYP, IMAGETYPE, FRAMETYP, FRAMETYPE, OBSTYPE, FRAME; the first that says
/// it in words that are known, as "Light Frame", "OBJECT", "zero", "master dark", "Dark Flat".
CORVANE_VISIBLE std::optional<FrameKind> StatedKind(const io::Header& header);

/// What the names about a frame say: the folder next above it, as far as `root`, that is called as such folders are
/// ("Darks", "dark_flats", "BIAS"); else LIGHT, DARK, FLAT or BIAS as a word of the file's name.
CORVANE_VISIBLE std::optional<FrameKind> KindByName(const std::string& path, const std::string& root);

/// True when the header says that the frame is made of others, as "Master Dark".
bool StatesMaster(const io::Header& header);

} // namespace corvane::stack
