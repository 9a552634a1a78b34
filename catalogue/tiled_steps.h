#pragma once

#include <vector>

#include "catalogue/step.h"
#include "corvane/core/aligned_row.h"
#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// Steps, one after the other, that are done with rows of an image, and make the rows that the whole would have; what
/// rows each of them needs its footprint says.
class CORVANE_VISIBLE TiledSteps {
public:
    /// For an image of a size. Throws Error, in the name of a step that needs the whole image or reads another file.
    TiledSteps(std::vector<Step> steps, int width, int height, bool hasOwnLevels);

    /// True when samples depend on the display levels.
    bool ReadLevels() const;
    /// The rows of the image that rows of the result are made of.
    RowSpan NeededFor(const RowSpan& rows) const { return SpansFor(rows).front(); }
    /// Makes rows of the result of the rows that are needed for them, which have levels, blank and header of the image.
    /// The header is that of the whole when the first row is the image's. Throws what `RunStep` throws.
    void Make(const RowSpan& rows, io::Frame& frame, const Run& run) const;

private:
    std::vector<RowSpan> SpansFor(const RowSpan& rows) const;

    std::vector<Step> steps_;
    int width_;
    int height_;
};

} // namespace corvane::catalogue
