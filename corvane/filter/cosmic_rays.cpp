#include "corvane/filter/cosmic_rays.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

#include "corvane/core/memory_budget.h"
#include "corvane/filter/hit_finder.h"

namespace corvane {
namespace {

using filter::HitFinder;
using filter::Places;
using filter::PlaneView;
using FineStructureAt = HitFinder::FineStructureAt;

constexpr int kFilters = 2; // of a mosaic in a row, and in a column

/// What the samples of all filters show together, each above its own sky, about one of them.
class AllFilters {
public:
    AllFilters(const std::vector<HitFinder>& filters, int width, int height)
        : filters_(filters), mosaic_{nullptr, width, height}
    {}

    double FineStructure(int x, int y) const
    {
        return filter::FineStructure(mosaic_, x, y, [this](int nx, int ny) {
            const int filter = ny % kFilters * kFilters + nx % kFilters;
            const HitFinder& own = filters_[static_cast<std::size_t>(filter)];
            return static_cast<float>(own.Samples()(nx / kFilters, ny / kFilters) - own.Noise().sky);
        });
    }

private:
    const std::vector<HitFinder>& filters_;
    PlaneView mosaic_;
};

/// One round on the samples of all filters, none of which is mended before all were searched. Returns what has changed,
/// by the places among those of one filter.
Places Round(std::vector<HitFinder>& finders, const AllFilters& all, int step, const Places& changed)
{
    std::vector<Places> found;
    for (int i = 0; i < step * step; ++i) {
        const auto inMosaic = [&](int x, int y) { return all.FineStructure(i % step + x * step, i / step + y * step); };
        found.push_back(finders[i].Find(changed, step > 1 ? FineStructureAt(inMosaic) : nullptr));
    }
    Places next;
    for (std::size_t i = 0; i < found.size(); ++i) {
        const Places mended = finders[i].Mend(found[i]);
        next.insert(next.end(), mended.begin(), mended.end());
    }
    return next;
}

std::vector<CosmicHit> HitsOf(const std::vector<HitFinder>& finders)
{
    std::vector<CosmicHit> hits;
    for (const HitFinder& finder : finders) {
        const std::vector<CosmicHit> found = finder.Hits();
        hits.insert(hits.end(), found.begin(), found.end());
    }
    std::sort(hits.begin(), hits.end(),
              [](const CosmicHit& a, const CosmicHit& b) { return std::tie(a.y, a.x) < std::tie(b.y, b.x); });
    return hits;
}

} // namespace

std::vector<CosmicHit> FindCosmicRays(const CStlImage& image, int plane, const CosmicRayLimits& limits,
                                      const std::vector<SampleNoise>& noises, const Run& run)
{
    constexpr std::uint64_t kBytes = 3 * sizeof(float) + 1; // of each sample
    const Reservation reservation(kBytes * static_cast<std::uint64_t>(image.GetWidth()) *
                                  static_cast<std::uint64_t>(image.GetHeight()));
    Stage stage(run, "Finding cosmic rays...", limits.iterations);
    const int step = noises.size() == 1 ? 1 : kFilters;
    std::vector<HitFinder> finders;
    for (int i = 0; i < step * step; ++i) {
        finders.emplace_back(image, plane, SampleLattice{i % step, i / step, step}, limits, noises[i], run.Threads());
    }
    const AllFilters all(finders, image.GetWidth(), image.GetHeight());
    Places changed;
    for (int round = 0; round < limits.iterations; ++round) {
        if (round == 0 || !changed.empty()) {
            changed = Round(finders, all, step, changed);
        }
        stage.Step();
    }
    return HitsOf(finders);
}

} // namespace corvane
