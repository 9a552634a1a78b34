#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"
#include "io/header.h"
#include "stack/frame_report.h"
#include "stack/options.h"

/// A night's frames into one calibrated stack.
///
/// The library prints nothing. Errors are thrown: `Error` for what was asked and for a file, `Cancelled`
/// when the run asks to stop, CMemoryException when there is no room.
namespace corvane::stack {

/// One part of the work and how long it took.
struct Lap {
    std::string name; ///< "check", "masters", "cosmic rays", "align", "combine"
    double seconds = 0.0;
};

/// How much noise the sky has, of the plane in which stars are looked for, by `MeasureFrame`.
struct Depth {
    double light = 0.0; ///< median of the lights that are used, brought to the brightness of the reference [raw units]
    double ideal = 0.0; ///< of their best mean: 1 / sqrt(sum of 1 / noise^2), or light / sqrt(n) for n that are alike
    double stack = 0.0; ///< measured
};

/// What is known of the lights of a job.
struct Registration {
    std::vector<FrameReport> frames;     ///< one for each light, in their order
    int referenceLight = 0;              ///< the one that the others are placed on
    std::optional<PixelPlace> reference; ///< centre of the patch that was found in the others; unset without one
    std::vector<std::string> notes;      ///< all that the run was told, one sentence each
    std::vector<Lap> laps;
    /// @name What a report shows besides, when it was asked for
    /// @{
    std::vector<CStlImage> thumbnails; ///< of each light: a plane, made small; empty images of those that were not read
    bool isBottomUp = false;           ///< the first row of all images belongs at the bottom
    CStlImage rejectedPlaces;   ///< values dropped, by place on the grid, made small; empty: nothing was rejected
    std::optional<Depth> depth; ///< of means and medians, except by drizzle, whose pixels are others
    /// @}
};

/// A finished stack.
struct Result : Registration {
    CStlImage image; ///< float samples on the grid that was asked for; a blank is declared where nothing is known
    io::Header header;
    std::optional<RejectMethod> rejection; ///< which one it was; unset for a method that rejects by itself
    /// @name The stack of the stars, when it was asked for beside that of what moves among them; else empty
    /// @{
    CStlImage stars;
    io::Header starsHeader;
    /// @}
    /// @name What is known of each sample of the stack, when it was asked for; empty images otherwise
    /// @{
    CStlImage coverage; ///< lights that have it
    CStlImage weights;  ///< by drizzle: weights times parts of drops
    CStlImage rejected; ///< values that the clipping dropped, of all planes: below, above, and both in three planes
    CStlImage noise; ///< standard deviation as `CombinedRow` and, by drizzle, `DrizzleFrames` tell it; NaN: not known
    /// @}
};

/// Checks options and files, makes the masters, calibrates, aligns and combines.
///
/// Everything that can be judged before the work is: options, missing files, sizes, exposures. A light that cannot be
/// aligned with certainty is left out and named in the report. Fewer than two lights left of several is an error that
/// lists the reasons; a single light is calibrated alone.
CORVANE_VISIBLE Result Stack(const Options& options, const Run& run = {});

/// Does all of that but the combining: tells how the lights lie on the reference, and what was measured of them. It is
/// no error when lights are left out.
CORVANE_VISIBLE Registration Register(const Options& options, const Run& run = {});

} // namespace corvane::stack
