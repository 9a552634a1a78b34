#pragma once

#include <vector>

#include "catalogue/operation.h"
#include "catalogue/registration.h"
#include "io/frame.h"

namespace corvane::catalogue {

inline constexpr double kMinScale = 0.01;  ///< smallest scale
inline constexpr double kMaxScale = 100.0; ///< largest scale

/// How a colour image is made of frames; see CImgRgbCmpst, CImgCmyComposit and CImgLrgbCmpst.
struct ColourOptions {
    Registration registration{};
    int outside = 0;      ///< rgb, cmy: the sample where a frame is not
    bool average = false; ///< lrgb: the mean of both instead of lightness and colour
    double scale = 1.0;   ///< lrgb: so many pixels of the colour frame go on one of the luminance frame [0.01..100]
};

/// Throws Error, which names the option, its value and what is allowed.
void CheckColour(const ColourOptions& options);

/// @name The composites: each turns the first frame into the result
/// The result has the first frame's size, three planes and its header, without what holds for one filter alone; its
/// world coordinates move along when it is moved by hand. HISTORY gets the command line, what the stars said, and filter
/// and exposure of each frame. Undefined samples become NaN, in L*a*b* black. Returns where each frame lies.
/// Throws, before anything is combined, Error for options and Error for frames that do not fit.
/// @{

/// Of frames for red, green and blue; a colour frame gives its plane of that colour.
std::vector<Fit> RunRgb(std::vector<io::Frame>& frames, const ColourOptions& options, const Context& context);
/// Of frames of one plane for cyan, magenta and yellow.
std::vector<Fit> RunCmy(std::vector<io::Frame>& frames, const ColourOptions& options, const Context& context);
/// Of a luminance frame and a colour frame, by what their display levels show; see `GiveSkyBlack` for frames that come
/// without. With a scale and without stars the middle
/// of the colour frame comes to lie on that of the luminance frame.
std::vector<Fit> RunLrgb(std::vector<io::Frame>& frames, const ColourOptions& options, const Context& context);
/// @}

} // namespace corvane::catalogue
