#pragma once

#include "catalogue/arguments.h"
#include "corvane/core/image.h"

namespace corvane::catalogue {

/// The plane that an operation keeps to; every plane when it is not given. `summary` says what is done to it.
Parameter PlaneParameter(const char* summary);

/// The plane that was given, -1 for every plane. Throws Error unless the image has it.
int GivenPlane(const Arguments& arguments, const CImage& image);

/// The plane that was given, or else the one in which stars are looked for. Throws Error unless the image has it.
int PlaneOfStars(const Arguments& arguments, const CImage& image);

} // namespace corvane::catalogue
