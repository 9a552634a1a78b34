#pragma once

#include <string>
#include <vector>

#include "catalogue/operation.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// The words for the components, r, g, b, c, m and y; the place of a word is its number in CImgSeparation.
const std::vector<std::string>& ComponentWords();

/// Throws Error, which names the option, its value and what is allowed.
void CheckComponent(const std::string& component);

/// Makes the frame one component of its colours. The header stays, with the component as its filter; HISTORY gets the
/// command line. Undefined samples become NaN. Throws, before any sample changes, Error for the option and Error for
/// a frame that does not have three planes.
void RunSplit(io::Frame& frame, const std::string& component, const Context& context);

} // namespace corvane::catalogue
