#pragma once

#include <string>
#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "stack/parts/band.h"

namespace corvane::stack {

/// A band among so many that are as high as each other, to a row.
struct BandNumber {
    int band; ///< from 1
    int of;
};

/// Reads "3/8". Throws Error.
CORVANE_VISIBLE BandNumber ReadBandNumber(const std::string& text);
/// The rows of a band. Throws Error for one that is not there, and for more bands than rows.
CORVANE_VISIBLE RowSpan RowsOf(const BandNumber& number, int rows);

/// Writes a band as a FITS file: its samples as they are in memory, what is known of each in extensions by the names
/// that they have in a stack, and what is known of the lights in LIGHTS. PLANKEY is the key of the plan, BANDROW the
/// first row. The file appears whole or not at all. Throws Error.
CORVANE_VISIBLE void WriteBand(const std::string& path, const Band& band, const std::string& planKey);

/// Reads bands of one plan, as they were written, into the rows of the whole. Throws Error for a file that is none, or
/// of another plan, and where rows are missing or come twice; Cancelled.
CORVANE_VISIBLE void ReadBands(const std::vector<std::string>& paths, const std::string& planKey, Band& whole,
                               const Run& run);

} // namespace corvane::stack
