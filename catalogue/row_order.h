#pragma once

#include <vector>

#include "catalogue/operation.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// Turns a frame upside down, with a note, when its header states another order of rows (ROWORDER) than that of the
/// image that it is used with; a frame that does not say is taken to be as its partner. Points in it [pixels; X,Y one
/// after the other], given as its file has them, follow.
CORVANE_VISIBLE void BringToOrderOf(const io::Frame& image, io::Frame& frame, const Run& run,
                                    std::vector<double>* points = nullptr);

} // namespace corvane::catalogue
