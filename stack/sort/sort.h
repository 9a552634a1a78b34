#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/core/run.h"
#include "corvane/platform/export.h"
#include "stack/options.h"

/// The frames of a night, told from each other by their headers.
namespace corvane::stack {

/// Lights of one exposure and session that are calibrated alike.
struct LightGroup {
    std::vector<std::string> lights;
    std::optional<double> exposure; ///< of each [s]
    std::string session;            ///< the date (UTC) on which it began; empty when that is not known
    CalibrationSet frames;
};

/// The lights of one filter.
struct SortedStack {
    std::string filter; ///< empty when the lights do not say, or are of several
    Options options;    ///< what was asked, of these lights and their calibration frames
    std::vector<LightGroup> groups;
};

/// Frames that no stack is made of.
struct LeftOut {
    std::vector<std::string> files;
    std::string reason;
};

/// What is to be done with the frames of a night.
struct SortedNight {
    std::vector<SortedStack> stacks; ///< one or more
    std::vector<LeftOut> leftOut;
    std::vector<std::string> warnings;
};

/// Finds out what the frames are that the options name and how they go together. No samples are read.
///
/// Each name may be a folder, which stands for the frames in it and below: FITS, TIFF and camera raw files, by the ends
/// of their names. Among the lights, frames that are something else by their headers, or by the names of folders and
/// files, are taken as that. One that nothing tells is a light if it is named as a file, else left out. Where all files
/// that are named are of one other kind, they are to be combined as lights are. Where bias, darks, flats or flat-darks
/// are named, no others of the kind count.
///
/// Folders give one stack for each filter, files one stack; `Options::filter` chooses one. Each light gets the darks of
/// its exposure, or else others where there is bias to scale them, of its camera, size, binning, gain, offset and
/// readout mode, and next to its temperature; the flats of its filter, camera, size and binning and of its session, or
/// the one next in time; bias as darks; and the flat-darks, or darks, that have the exposure of the flats. What a
/// header does not say is no difference. Frames that are named as files and fit no light, frames of another kind than
/// they are named for, files that are named twice, and lights of several cameras, gains or filters are an Error, which
/// `Options::allowMixed` turns into a warning.
///
/// `skip` names files and folders that are passed over in folders: what is about to be written. Throws Error and
/// Cancelled.
CORVANE_VISIBLE SortedNight SortFrames(const Options& asked, const std::vector<std::string>& skip, const Run& run);

} // namespace corvane::stack
