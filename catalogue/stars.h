#pragma once

#include <string>

#include "catalogue/operation.h"
#include "corvane/platform/export.h"
#include "stars/measure_stars.h"

namespace corvane::catalogue {

/// The stars of an image, and the plane in which they were looked for.
struct CORVANE_VISIBLE SeenStars {
    int plane;
    stars::StarField field;

    /// How many may be measured with.
    int Usable() const;
};

/// Stars whose widths were measured, and their plane.
struct SeenWidths {
    int plane;
    stars::FieldWidths widths;
};

/// What `find-stars` sees with such arguments. Throws Error when there is no star; Cancelled.
CORVANE_VISIBLE SeenStars FindStars(const CStlImage& image, const Arguments& arguments, const Run& run);

/// What `stars` measures with such arguments. Throws Error when no star counts; Cancelled.
CORVANE_VISIBLE SeenWidths MeasureStars(const CStlImage& image, const Arguments& arguments, const Run& run);

/// Why a star does not count, "star at 12,34: saturated"; one that was named is called by its place.
CORVANE_VISIBLE std::string FaultOf(const stars::FieldWidths& widths, std::size_t star, const Arguments& arguments);

/// @name As tables: a row for each star, or one for all of them
/// @{
CORVANE_VISIBLE Table StarTable(const SeenStars& seen);
CORVANE_VISIBLE Table StarTable(const SeenWidths& seen);
CORVANE_VISIBLE Table FieldTable(const SeenStars& seen);
CORVANE_VISIBLE Table FieldTable(const SeenWidths& seen);
/// @}

} // namespace corvane::catalogue
