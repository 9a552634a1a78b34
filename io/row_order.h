#pragma once

#include <string>

#include "corvane/platform/export.h"
#include "io/frame.h"

namespace corvane::io {

/// True when both headers state an order of rows (see `StatedRowOrder`) and not the same one. A frame that does not say
/// is taken to be as the frames that it is used with.
CORVANE_VISIBLE bool RowsRunAgainst(const Header& a, const Header& b);

/// Turns a frame upside down, so that its rows come in the other order: samples, and what describes them.
CORVANE_VISIBLE void TurnUpsideDown(Frame& frame);

/// Makes the header of a frame of `height` rows, and `record`, describe it upside down: ROWORDER, and the world
/// coordinates of the frame's image with their distortion. The record may be that image. Cards of a colour filter
/// mosaic stay: with ROWORDER they describe the picture as it is seen.
CORVANE_VISIBLE void DescribeUpsideDown(int height, Frame& frame, CImage& record);

/// What a user is told of a frame, and how many more, that were turned so that their rows run as those of `partner`.
CORVANE_VISIBLE std::string TurnedNote(const std::string& file, int more, const std::string& partner,
                                       const Header& partnerHeader);

} // namespace corvane::io
