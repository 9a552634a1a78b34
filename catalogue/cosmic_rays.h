#pragma once

#include <optional>

#include "catalogue/operation.h"
#include "corvane/filter/cosmic_rays.h"
#include "corvane/platform/export.h"
#include "io/header.h"

namespace corvane::catalogue {

/// The step `cosmic-rays`.
Operation CosmicRays();

/// The noise of a plane's samples, as the plane shows it: that of its sky, measured from sample to sample, and above it
/// that of light by electrons per count, EGAIN of the header times NCOMBINE. Where the header says nothing (GAIN is
/// often a setting), the noise of the sky is taken to be that of its own light. Nothing when the samples show no noise.
CORVANE_VISIBLE std::optional<SampleNoise>
MeasureSampleNoise(const CStlImage& image, int plane, const io::Header& header, const SampleLattice& samples = {});

} // namespace corvane::catalogue
