#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/operation.h"
#include "catalogue/placement.h"
#include "io/frame.h"

namespace corvane::catalogue {

inline constexpr const char* kSecondPoints = "--second-points"; ///< the option for stars in the second image
inline constexpr int kMaxCanvas = 65535;                        ///< longest side of a mosaic [pixels]

/// How two images are joined; see CImgMosic.
struct MosaicOptions {
    Placement placement{};
    std::string mode = "over";          ///< one of `MosaicModes`
    std::vector<double> key{};          ///< sample that lets the first image through: one, or one for each of 3 planes
    std::optional<double> background{}; ///< display value where no image is [0..255]; only with `display`
    bool display = false;               ///< on the display scale
    bool average = false;               ///< the mean of both, whatever the mode
};

/// The words for the modes; the place of a word is its number.
const std::vector<std::string>& MosaicModes();

/// Throws Error, which names the option, its value and what is allowed.
void CheckMosaic(const MosaicOptions& options);

/// Joins both on a canvas that holds them whole and becomes the first frame's image. Its record and header stay, its
/// world coordinates move along. HISTORY gets the command line, and what the stars said.
/// Throws, before any sample changes, Error for options and Error for images that do not fit.
/// A second image of the other order of rows is turned upside down first; its points are those of its file.
Fit RunMosaic(io::Frame& first, io::Frame& second, const MosaicOptions& options, const Context& context);

} // namespace corvane::catalogue
