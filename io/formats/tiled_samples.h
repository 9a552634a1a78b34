#pragma once

#include "io/formats/fits_samples.h"

namespace corvane::io {

/// The reader of a tile-compressed image. Its header is checked, and memory for a tile of it; throws Error.
std::unique_ptr<FitsSamples> OpenTiledSamples(FitsFile& file, const StoredScale& scale);

} // namespace corvane::io
