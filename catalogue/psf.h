#pragma once

#include <optional>
#include <vector>

#include "catalogue/operation.h"
#include "io/frame.h"

namespace corvane::catalogue {

/// A point-spread function by its samples about (width / 2, height / 2).
struct PsfImage {
    int width = 0;
    int height = 0;
    std::vector<float> samples{};
};

/// What a restoration of any blur takes: an image of it, or auto.
Parameter PsfParameter();

/// The function that `psf` names, of the image itself for auto; nothing when it was not given. Throws Error for what is
/// none, and Cancelled.
std::optional<PsfImage> GivenPsf(const io::Frame& frame, const Arguments& arguments, const Run& run);

/// The command `psf`.
Operation PsfOperation();

} // namespace corvane::catalogue
