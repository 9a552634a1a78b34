#pragma once

#include "catalogue/arguments.h"
#include "catalogue/display_levels.h"
#include "corvane/core/run.h"

namespace corvane::catalogue {

/// What most operations do: a result that begins as a copy of the image, and of which kWork(result, arguments, image,
/// rect, run) makes the rest. The last three are what the members of image classes end with.
template <class Result, auto kWork>
CStlImage Made(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    Result result(image);
    kWork(result, arguments, image, arguments.Rectangle("rect"), run);
    return result;
}

/// The same by what the screen shows, with levels of the sky for an image that came without: see `WithLevels`.
template <class Result, int kLowSigma, int kHighSigma, auto kWork>
CStlImage MadeByLevels(const CStlImage& image, const Arguments& arguments, const Run& run)
{
    return Made<Result, kWork>(WithLevels(image, kLowSigma, kHighSigma), arguments, run);
}

} // namespace corvane::catalogue
