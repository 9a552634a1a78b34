#pragma once

#include "catalogue/operation.h"

namespace corvane::catalogue {

/// The step that gives values to undefined samples.
Operation Fill();

} // namespace corvane::catalogue
