#pragma once

#include <vector>

#include "stars/psf_fit.h"

namespace corvane::stars {

/// The samples of a profile.
PsfSamples SamplesOf(const PsfProfile& profile, int size);

/// Those of the stars themselves, which `FitPsf` has measured: the profile, and what it leaves of them on average. That
/// is read between the samples of each star so that its middle lies on a sample, over its peak; of each place the mean
/// by weight counts, without what stands out, and as far as it rises out of its noise. After P. B. Stetson,
/// Publications of the Astronomical Society of the Pacific 99, 191 (1987): what is left of a fit is small and smooth,
/// so that little is lost between samples.
PsfSamples SamplesOf(const std::vector<PsfStar>& stars, const PsfProfile& profile, int size);

} // namespace corvane::stars
