#pragma once

#include "corvane/platform/export.h"

namespace corvane {

/// A Gaussian of `sigma` [samples] about (width / 2, height / 2), of which an even size has a sample there and an odd
/// one has not: exp(-r r / (2 sigma sigma)) / (6.28318 sigma sigma). The caller deletes the array. Throws
/// CMemoryException.
///
/// The sum of all samples divides the first one alone, once for every sample. So that one is 0 where the sum is above
/// 1, and from a sigma of about 9.9 on it outgrows the peak. Restorations bring the sum to 1 themselves.
CORVANE_VISIBLE float* MakeGaussPsf(double sigma, int width, int height);

} // namespace corvane
