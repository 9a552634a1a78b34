#pragma once

#include <array>
#include <optional>
#include <string>

#include "corvane/platform/export.h"
#include "io/header.h"

namespace corvane::io {

/// The cards that describe a mosaic of colour filters.
inline constexpr std::array kBayerCards{"BAYERPAT", "COLORTYP", "CFA-PAT", "XBAYROFF", "YBAYROFF"};

/// The mosaic that a header names, in capitals, as "RGGB": BAYERPAT, COLORTYP, CFA-PAT. Names that are no 2 x 2 pattern
/// of R, G, B are passed over, except "XTRANS".
CORVANE_VISIBLE std::optional<std::string> BayerPattern(const Header& header);

/// The Bayer pattern that FILTER spells, in capitals, in a header that names no mosaic: some programs state it there
/// alone, which is too little to go by.
CORVANE_VISIBLE std::optional<std::string> HintedBayerPattern(const Header& header);

/// The filters over the samples (0, 0), (1, 0), (0, 1) and (1, 1) of a frame of `height` rows, in the file's order, as
/// "RGGB"; empty when the header names no 2 x 2 pattern.
///
/// XBAYROFF and YBAYROFF [pixels] say which place of the pattern the first pixel has. The pattern begins at the first
/// row of the file, which is how camera programs mean it that say nothing of the order of rows. A header that says
/// ROWORDER = 'BOTTOM-UP' describes the picture as it is seen: its pattern begins at the last row of the file.
CORVANE_VISIBLE std::optional<std::string> StoredBayerPattern(const Header& header, int height);

/// Makes the cards that name a pattern say that these filters lie over the samples of a frame of `height` rows, given
/// as by `StoredBayerPattern`, and the offsets 0. Cards that are not there are not added.
CORVANE_VISIBLE void SetStoredBayerPattern(Header& header, const std::string& pattern, int height);

} // namespace corvane::io
