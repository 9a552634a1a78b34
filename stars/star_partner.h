#pragma once

#include <vector>

#include "corvane/core/mapping.h"
#include "corvane/platform/export.h"
#include "stars/find_stars.h"

namespace corvane::stars {

/// The usable star of a frame within two pixels of where a mapping of the reference has one of its stars, the first
/// such in the list; null where there is none.
CORVANE_VISIBLE const FieldStar* PartnerOf(const FieldStar& star, const std::vector<FieldStar>& frame,
                                           const Mapping& mapping);

} // namespace corvane::stars
