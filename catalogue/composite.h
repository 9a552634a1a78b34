#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/operation.h"
#include "catalogue/placement.h"
#include "io/frame.h"

namespace corvane::catalogue {

inline constexpr const char* kOverlayPoints = "--overlay-points"; ///< the option for stars in the overlay
inline constexpr double kMaxRatio = 1e6;                          ///< largest ratio

/// How an overlay is combined with a base; see CImgComposit.
struct CompositeOptions {
    Placement placement{};
    std::string mode{};            ///< one of `CompositeModes`; must be given
    std::optional<double> ratio{}; ///< weight of the overlay in a blend [0..1]; exposures' ratio of desaturate [0..1e6]
    bool display = false;          ///< on the display scale
    bool clamp = false;            ///< negative differences of colours become 0
    double fraction = 0.95;        ///< of the brightest sample, above which desaturate takes one for saturated [0..1]
    int radius = 0;                ///< how far around a pixel desaturate looks for saturation [pixels, 0..2]
    std::optional<CRect> rect{};   ///< unset is the whole base
};

/// The words for the modes; the place of a word is its number.
const std::vector<std::string>& CompositeModes();

/// Throws Error, which names the option, its value and what is allowed.
void CheckComposite(const CompositeOptions& options);

/// Turns the base into the composite. Its record and header stay, its size and planes too; the overlay may have another
/// size, and other planes as CImgComposit allows. HISTORY gets the command line, and what the stars said.
/// Throws, before any sample changes, Error for options and Error for images that do not fit.
/// An overlay of the other order of rows is turned upside down first; its points are those of its file.
Fit RunComposite(io::Frame& base, io::Frame& overlay, const CompositeOptions& options, const Context& context);

} // namespace corvane::catalogue
