#pragma once

#include <optional>
#include <string>

namespace corvane::io {

/// What stands in brackets behind a FITS file's name: "1", "SCI", "SCI,2", "plane 3", "SCI,2, plane 3".
struct FitsChoice {
    std::string hdu;                 ///< as it was written; empty for the first image
    std::optional<long long> number; ///< of the HDU, from 0
    std::string extension;           ///< EXTNAME, where there is no number
    long long version = 0;           ///< EXTVER; 0 for any
    std::optional<long long> plane;  ///< from 1, over all axes beyond the second
};

/// Takes a choice apart; nothing when it names a plane that cannot be.
std::optional<FitsChoice> ParseChoice(const std::string& text);

/// A name of a file, with or without a choice, with a choice of a plane added: "a.fits[1, plane 3]".
std::string WithPlane(const std::string& name, const std::string& hdu, const std::string& plane);

} // namespace corvane::io
