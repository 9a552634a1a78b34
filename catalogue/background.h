#pragma once

#include <optional>
#include <vector>

#include "catalogue/operation.h"
#include "stars/sky_model.h"

namespace corvane::catalogue {

/// The step `background`.
Operation Background();

/// The sky of each plane of an image. Throws Error when one has none, and Cancelled.
std::vector<stars::SkyModel> MeasureSkies(const CStlImage& image, stars::SkyForm form, std::optional<int> degree,
                                          const Run& run);

} // namespace corvane::catalogue
