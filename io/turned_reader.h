#pragma once

#include <memory>

#include "corvane/platform/export.h"
#include "io/reader.h"

namespace corvane::io {

/// A reader of the same frame upside down: its rows come in the other order, and its header says so, as after
/// `TurnUpsideDown`.
CORVANE_VISIBLE std::unique_ptr<FrameReader> TurnedUpsideDown(std::unique_ptr<FrameReader> reader);

} // namespace corvane::io
