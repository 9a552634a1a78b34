#pragma once

#include <vector>

#include "stack/frame_report.h"
#include "stack/measure_lights.h"
#include "stack/options.h"

namespace corvane::stack {

/// The light that others are placed on by their stars: the one that the options name, or of those with at least three
/// quarters of the most stars the one whose stars are narrowest. Throws io::Error when no light shows a star.
int ChooseReferenceLight(const Options& options, const std::vector<FrameReport>& reports);

/// Matches the stars of every light with those of the reference, and enters in the reports how it is placed. `centre` is
/// what lights are turned about; `exposureRatios` are the lights' exposures over that of the reference. A light that
/// cannot be placed with certainty is left out, with the reason, and so is one whose stars have less than a third of the
/// light that its exposure should bring.
void AlignByStars(const Options& options, const CfPoint& centre, int reference,
                  const std::vector<double>& exposureRatios, const std::vector<SeenLight>& seen,
                  std::vector<FrameReport>& reports);

} // namespace corvane::stack
