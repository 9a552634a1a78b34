#pragma once

#include "io/formats/fits_file.h"

namespace corvane::io {

enum class Sums {
    kHold, ///< or none is stated
    kHeaderDiffers,
    kDataDiffer, ///< or header or data do, where the data alone have no sum
};

/// Compares the sums that the present HDU states (DATASUM and CHECKSUM, FITS standard 4.0, section 4.4.2.7) with its
/// bytes. Throws Error when they cannot be read.
Sums CompareSums(FitsFile& file);

} // namespace corvane::io
