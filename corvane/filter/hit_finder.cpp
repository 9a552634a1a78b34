#include "corvane/filter/hit_finder.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include "corvane/core/blank.h"
#include "corvane/core/walk.h"

namespace corvane::filter {
namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr int kWindow = 2;    // how far medians of 5 x 5 reach
constexpr int kJudgement = 4; // how far a sample lies from the others that it is judged by

Places Tidy(Places places)
{
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    return places;
}

/// How many places from one on there are to the end, every step-th of them.
int CountFrom(int first, int end, int step)
{
    return (end - first + step - 1) / step;
}

} // namespace

HitFinder::HitFinder(const CStlImage& image, int plane, const SampleLattice& lattice, const CosmicRayLimits& limits,
                     const SampleNoise& noise, int threads)
    : lattice_(lattice), limits_(limits), noise_(noise),
      width_(CountFrom(lattice.left, image.GetWidth(), lattice.step)),
      height_(CountFrom(lattice.top, image.GetHeight(), lattice.step)), threads_(threads),
      samples_(static_cast<std::size_t>(At(0, height_))), beneath_(samples_.size()), significance_(samples_.size()),
      hits_(samples_.size(), 0)
{
    const BlankTest isBlank(image);
    for (int y = 0; y < height_; ++y) {
        const float* const row = image.GetImageAdr(lattice.left, lattice.top + y * lattice.step, plane, 1);
        for (int x = 0; x < width_; ++x) {
            const float v = row[static_cast<std::ptrdiff_t>(x) * lattice.step];
            samples_[At(x, y)] = isBlank(v) || !std::isfinite(v) ? kNaN : v;
        }
    }
}

template <class Body>
void HitFinder::ForRows(Body body) const
{
    ForRowBlocks(RowBlocks({0, 0, width_, height_}), threads_, [&](const RowBlock& block) {
        for (int y = block.first; y < block.end; ++y) {
            body(y);
        }
    });
}

/// Calls visit(x, y) for the places around one, itself too.
template <class Visit>
void HitFinder::VisitAbout(const Place& place, int reach, Visit visit) const
{
    for (int y = std::max(place.y - reach, 0); y <= std::min(place.y + reach, height_ - 1); ++y) {
        for (int x = std::max(place.x - reach, 0); x <= std::min(place.x + reach, width_ - 1); ++x) {
            visit(x, y);
        }
    }
}

/// The places around others that are wanted.
template <class IsWanted>
Places HitFinder::About(const Places& places, int reach, IsWanted isWanted) const
{
    Places wanted;
    for (const Place& place : places) {
        VisitAbout(place, reach, [&](int x, int y) {
            if (isWanted(x, y)) {
                wanted.push_back({y, x});
            }
        });
    }
    return Tidy(std::move(wanted));
}

Places HitFinder::Find(const Places& changed, const FineStructureAt& otherwise)
{
    const Places sharp = isFirst_ ? SharpOfAll() : SharpNear(changed);
    isFirst_ = false;
    Places found;
    std::copy_if(sharp.begin(), sharp.end(), std::back_inserter(found),
                 [&](const Place& place) { return IsHit(place, otherwise); });
    for (const double least : {limits_.sigma, limits_.fraction * limits_.sigma}) {
        found = About(found, 1, [&](int x, int y) { return Sharpness(x, y) > least; });
    }
    return found;
}

/// The samples that may stand out enough.
Places HitFinder::SharpOfAll()
{
    ForRows([&](int y) { Measure(y, 0, width_); });
    Places sharp;
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            if (significance_[At(x, y)] > limits_.sigma) {
                sharp.push_back({y, x});
            }
        }
    }
    return sharp;
}

/// Those that are judged by samples which have changed.
Places HitFinder::SharpNear(const Places& changed)
{
    for (const Place& place : changed) {
        const int first = std::max(place.x - kWindow, 0);
        const int end = std::min(place.x + kWindow + 1, width_);
        for (int y = std::max(place.y - kWindow, 0); y <= std::min(place.y + kWindow, height_ - 1); ++y) {
            Measure(y, first, end);
        }
    }
    return About(changed, kJudgement, [&](int x, int y) { return significance_[At(x, y)] > limits_.sigma; });
}

/// Measures a stretch of a row. A neighbour that is missing is as high as the sample.
void HitFinder::Measure(int y, int first, int end)
{
    MediansOf25(View(samples_), y, first, end, beneath_.data() + At(first, y));
    const float* const row = samples_.data() + At(0, y);
    const float* const above = y > 0 ? row - width_ : row;
    const float* const below = y + 1 < height_ ? row + width_ : row;
    float* const significance = significance_.data() + At(0, y);
    const auto measure = [&](int x, int left, int right) {
        const double v = row[x];
        const auto step = [v](double neighbour) { return neighbour == neighbour ? v - neighbour : 0.0; };
        const double across[] = {step(row[left]), step(row[right])};
        const double down[] = {step(above[x]), step(below[x])};
        double edges = 0.0;
        for (const double a : across) {
            for (const double b : down) {
                edges += std::max(a + b, 0.0) / 4.0;
            }
        }
        const double sharp = edges / (2.0 * NoiseAt(At(x, y)));
        significance[x] = v == v ? static_cast<float>(sharp) : kNaN;
    };
    const int last = width_ - 1;
    if (first == 0) {
        measure(0, 0, std::min(1, last));
    }
    for (int x = std::max(first, 1); x < std::min(end, last); ++x) {
        measure(x, x - 1, x + 1);
    }
    if (end > last && last > 0) {
        measure(last, last - 1, last);
    }
}

double HitFinder::NoiseAt(std::ptrdiff_t i) const
{
    return std::sqrt(noise_.variance + noise_.perCount * std::max(beneath_[i] - noise_.sky, 0.0));
}

/// How sharply a sample stands out, less what all about it do.
double HitFinder::Sharpness(int x, int y) const
{
    const PlaneView view = View(significance_);
    return static_cast<double>(view(x, y)) - MedianAbout(view, x, y, kWindow, view);
}

bool HitFinder::IsHit(const Place& place, const FineStructureAt& otherwise) const
{
    constexpr double kLeastBeneath = 0.01; // standard deviations
    const auto [y, x] = place;
    const std::ptrdiff_t i = At(x, y);
    const double noise = NoiseAt(i);
    const double sharpness = Sharpness(x, y);
    const bool standsOut = sharpness > limits_.sigma && samples_[i] - beneath_[i] > limits_.sigma * noise;
    if (!standsOut) {
        return false;
    }
    const PlaneView view = View(samples_);
    const double fine = std::max(FineStructure(view, x, y, view), otherwise ? otherwise(x, y) : 0.0);
    return sharpness > limits_.limit * std::max(fine / noise, kLeastBeneath);
}

/// Which of the samples found were no hits before.
Places HitFinder::TakeIn(const Places& found)
{
    Places taken;
    for (const Place& place : found) {
        char& isHit = hits_[static_cast<std::size_t>(At(place.x, place.y))];
        if (isHit == 0) {
            taken.push_back(place);
        }
        isHit = 1;
    }
    return taken;
}

Places HitFinder::Mend(const Places& found)
{
    Places hits = About(TakeIn(found), kWindow, [&](int x, int y) { return hits_[At(x, y)] != 0; });
    for (const auto& [y, x] : hits) {
        const float median = MedianAbout(View(samples_), x, y, kWindow, [&](int nx, int ny) {
            return hits_[At(nx, ny)] != 0 ? kNaN : samples_[At(nx, ny)];
        });
        samples_[At(x, y)] = std::isnan(median) ? samples_[At(x, y)] : median;
    }
    return hits;
}

std::vector<CosmicHit> HitFinder::Hits() const
{
    std::vector<CosmicHit> hits;
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            if (hits_[At(x, y)] != 0) {
                hits.push_back(
                    {lattice_.left + x * lattice_.step, lattice_.top + y * lattice_.step, samples_[At(x, y)]});
            }
        }
    }
    return hits;
}

} // namespace corvane::filter
