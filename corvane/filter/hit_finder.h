#pragma once

#include <cstddef>
#include <functional>
#include <vector>

#include "corvane/core/stl_image.h"
#include "corvane/core/work_array.h"
#include "corvane/filter/cosmic_rays.h"
#include "corvane/filter/window_median.h"

namespace corvane::filter {

/// The place of a sample.
struct Place {
    int y;
    int x;

    auto operator<=>(const Place&) const = default;
};
/// Places row by row, each once.
using Places = std::vector<Place>;

/// Finds hits in some samples of a plane, round by round. What was measured and mended stays up to date, so that each
/// round but the first looks only where something has changed.
class HitFinder {
public:
    /// What else lies beneath a sample [raw units].
    using FineStructureAt = std::function<double(int x, int y)>;

    HitFinder(const CStlImage& image, int plane, const SampleLattice& lattice, const CosmicRayLimits& limits,
              const SampleNoise& noise, int threads);

    /// Finds hits; in all rounds but the first near places that have changed.
    Places Find(const Places& changed, const FineStructureAt& otherwise);
    /// Mends the hits that were found. Returns what has changed.
    Places Mend(const Places& found);

    PlaneView Samples() const { return View(samples_); } ///< As they are by now, undefined ones NaN.
    const SampleNoise& Noise() const { return noise_; }
    /// All that were found; by their places in the image.
    std::vector<CosmicHit> Hits() const;

private:
    std::ptrdiff_t At(int x, int y) const { return static_cast<std::ptrdiff_t>(y) * width_ + x; }
    PlaneView View(const WorkArray& samples) const { return {samples.data(), width_, height_}; }
    template <class Body>
    void ForRows(Body body) const;
    template <class Visit>
    void VisitAbout(const Place& place, int reach, Visit visit) const;
    template <class IsWanted>
    Places About(const Places& places, int reach, IsWanted isWanted) const;
    Places SharpOfAll();
    Places SharpNear(const Places& changed);
    void Measure(int y, int first, int end);
    double NoiseAt(std::ptrdiff_t i) const;
    double Sharpness(int x, int y) const;
    bool IsHit(const Place& place, const FineStructureAt& otherwise) const;
    Places TakeIn(const Places& found);

    SampleLattice lattice_;
    CosmicRayLimits limits_;
    SampleNoise noise_;
    int width_;
    int height_;
    int threads_;
    bool isFirst_ = true;
    WorkArray samples_;      ///< NaN where they are undefined
    WorkArray beneath_;      ///< medians of 5 x 5
    WorkArray significance_; ///< how sharply samples stand out
    std::vector<char> hits_;
};

} // namespace corvane::filter
