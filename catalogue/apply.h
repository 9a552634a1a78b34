#pragma once

#include <string_view>
#include <vector>

#include "catalogue/operation.h"
#include "catalogue/step.h"
#include "corvane/core/run.h"
#include "corvane/core/stl_image.h"
#include "io/frame.h"

namespace corvane {

/// @name Operations of the catalogue, by name
/// `corvane ops` tells names, parameters and defaults; a parameter that is not given has its default.
/// What is given stays as it is, the result is new:
///
///     const CStlImage smooth = corvane::Apply(image, "median", {{"type", 1}});
///     const CStlImage shown = corvane::Apply(image, {"hot-pixels", "curve:points=0:0/0.2:0.5/1:1"}, run);
///     const io::Frame light = corvane::Apply(frame, {"dark:file=dark.fits", "debayer"}, run);
///
/// A frame's header goes along: its coordinates follow the pixels, and each step adds a HISTORY line.
///
/// Throws Error, before the step in question changes anything, for a name or a value that is not allowed and for an
/// image that does not fit; CMemoryException when there is no room; Cancelled when the run asks to stop.
/// @{
CORVANE_VISIBLE CStlImage Apply(const CStlImage& image, std::string_view operation, const catalogue::Settings& settings,
                                const Run& run = {});
CORVANE_VISIBLE CStlImage Apply(const CStlImage& image, const std::vector<catalogue::Step>& steps, const Run& run = {});
CORVANE_VISIBLE io::Frame Apply(const io::Frame& frame, std::string_view operation, const catalogue::Settings& settings,
                                const Run& run = {});
CORVANE_VISIBLE io::Frame Apply(const io::Frame& frame, const std::vector<catalogue::Step>& steps, const Run& run = {});

/// An operation on several images, each under the name of its input; what it makes is under the names of its outputs.
/// Samples that a caller goes on sharing (`CStlImage::Shared`) stay as they are.
CORVANE_VISIBLE catalogue::Outputs Apply(std::string_view operation, catalogue::Inputs inputs,
                                         const catalogue::Settings& settings, const Run& run = {});
/// @}

/// An image as the value of a parameter, {"file", corvane::AsValue(dark)}: over the same samples, nothing is copied.
CORVANE_VISIBLE catalogue::Value AsValue(const CStlImage& image);

} // namespace corvane
