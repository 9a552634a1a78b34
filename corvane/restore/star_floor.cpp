#include "corvane/restore/star_floor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <utility>

#include "corvane/core/independent.h"
#include "corvane/core/walk.h"

namespace corvane {

namespace {

constexpr double kStarReach = 1.5; // widths of the function: a window as far either way is wider than a star
constexpr double kLineReach = 2.0; // times that, either way along a line: longer than two stars side by side
constexpr std::array<std::pair<int, int>, 8> kLines{
    {{1, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 1}, {-1, 2}, {-1, 1}, {-2, 1}}};
constexpr int kSmoothedSteps = 2;               // that smoothing spreads a star along a line
constexpr int kRingReach = 3;                   // times that, from a star's light on: as far as rings go
constexpr float kLeastRiseOfStar = 10.0F;       // deviations of the sky
constexpr float kFloorShare = 0.0025F;          // of what a star rises, that the floor lies below what is beneath it
constexpr double kPerDisc = 1.2732395447351628; // 4 / pi: the square of a diameter over the area
constexpr int kSmoothings = 4;                  // by three samples: noise has no say in what is least

/// sample = pick(that of the row above so many columns before it, itself, that of the row below as many behind it).
template <class Pick>
void CombineRow(const float* above, const float* here, const float* below, int columns, int width, Pick pick,
                float* out)
{
    const auto pickAtEdge = [=](int begin, int end) {
        for (int x = begin; x < end; ++x) {
            out[x] = pick(above[std::clamp(x - columns, 0, width - 1)], here[x],
                          below[std::clamp(x + columns, 0, width - 1)]);
        }
    };
    const int left = std::min(std::abs(columns), width);
    const int right = std::max(width - left, left);
    pickAtEdge(0, left);
    CORVANE_INDEPENDENT
    for (int x = left; x < right; ++x) {
        out[x] = pick(above[x - columns], here[x], below[x + columns]);
    }
    pickAtEdge(right, width);
}

/// A plane of samples in which each is replaced by something of those about it, along one axis after the other.
class Surface {
public:
    Surface(const float* data, int width, int height, int threads)
        : width_(width), height_(height), threads_(threads),
          samples_(data, data + static_cast<std::size_t>(width) * height), scratch_(samples_.size())
    {}

    std::vector<float>& Samples() { return samples_; }

    /// sample = pick(the one so many columns and rows before it, itself, the one as many behind it); those at the edge
    /// stand for what is beyond.
    template <class Pick>
    void Combine(int columns, int rows, Pick pick)
    {
        ForRows([&](int y) {
            const float* const above = Row(y - rows);
            const float* const here = Row(y);
            const float* const below = Row(y + rows);
            float* const out = scratch_.data() + static_cast<std::ptrdiff_t>(y) * width_;
            CombineRow(above, here, below, columns, width_, pick, out);
        });
        samples_.swap(scratch_);
    }

    /// The least or the greatest of the samples within so many steps along a line: what is looked at grows threefold.
    template <class Pick>
    void ExtendAlong(int columns, int rows, int reach, Pick pick)
    {
        for (int within = 0; within < reach;) {
            const int step = std::min(2 * within + 1, reach - within);
            Combine(step * columns, step * rows, pick);
            within += step;
        }
    }

    /// The same within a reach along rows and columns.
    template <class Pick>
    void Extend(int reach, Pick pick)
    {
        ExtendAlong(1, 0, reach, pick);
        ExtendAlong(0, 1, reach, pick);
    }

    /// The mean of itself and the samples so many columns and rows before and behind it.
    void SmoothAlong(int columns, int rows)
    {
        Combine(columns, rows, [](float a, float b, float c) { return (a + b + c) * (1.0F / 3.0F); });
    }

    /// The same on both axes.
    void Smooth(int step)
    {
        SmoothAlong(step, 0);
        SmoothAlong(0, step);
    }

    template <class Work>
    void ForRows(Work work) const
    {
        const RowBlocks blocks(CRect(0, 0, width_, height_));
        ForRowBlocks(blocks, ThreadsFor(blocks.Samples(), threads_), [&](const RowBlock& block) {
            for (int y = block.first; y < block.end; ++y) {
                work(y);
            }
        });
    }

private:
    const float* Row(int y) const
    {
        return samples_.data() + static_cast<std::ptrdiff_t>(std::clamp(y, 0, height_ - 1)) * width_;
    }

    int width_;
    int height_;
    int threads_;
    std::vector<float> samples_;
    std::vector<float> scratch_;
};

constexpr auto kLeastOf = [](float a, float b, float c) { return std::min(std::min(a, b), c); };
constexpr auto kGreatestOf = [](float a, float b, float c) { return std::max(std::max(a, b), c); };

/// A window's reach: by the samples of the function that reach half of its peak.
int WindowReach(const LucyJob& job)
{
    const float* const end = job.psf + static_cast<std::ptrdiff_t>(job.psfWidth) * job.psfHeight;
    const float half = 0.5F * *std::max_element(job.psf, end);
    const auto wide = static_cast<double>(std::count_if(job.psf, end, [=](float v) { return v >= half; }));
    const double width = std::sqrt(wide * kPerDisc);
    return static_cast<int>(std::ceil(kStarReach * width));
}

/// The greatest of the least samples within a reach along a line, smoothed along it.
Surface LineOpening(Surface line, int columns, int rows, double reach)
{
    line.SmoothAlong(columns, rows);
    line.SmoothAlong(columns, rows);
    const int steps = static_cast<int>(std::ceil(reach / std::hypot(columns, rows))) + kSmoothedSteps;
    line.ExtendAlong(columns, rows, steps, kLeastOf);
    line.ExtendAlong(columns, rows, steps, kGreatestOf);
    return line;
}

/// What is beneath the stars.
Surface Opening(const float* data, const LucyJob& job, int reach, int threads)
{
    const Surface plain(data, job.width, job.height, threads);
    Surface opening = plain;
    for (int round = 0; round < kSmoothings; ++round) {
        opening.Smooth(1);
    }
    opening.Extend(reach, kLeastOf);
    opening.Extend(reach, kGreatestOf);
    for (const auto& [columns, rows] : kLines) {
        Surface line = LineOpening(plain, columns, rows, kLineReach * reach);
        std::transform(opening.Samples().begin(), opening.Samples().end(), line.Samples().begin(),
                       opening.Samples().begin(), [](float a, float b) { return std::max(a, b); });
    }
    return opening;
}

} // namespace

std::vector<float> StarFloor(const float* data, const LucyJob& job, int threads)
{
    const int reach = WindowReach(job);
    Surface floor = Opening(data, job, reach, threads);
    Surface rise(data, job.width, job.height, threads);
    std::vector<float>& level = floor.Samples();
    std::vector<float>& above = rise.Samples();
    std::transform(above.begin(), above.end(), level.begin(), above.begin(), std::minus<>());
    rise.Extend(kRingReach * reach, kGreatestOf);
    const auto least = static_cast<float>(kLeastRiseOfStar * job.skyNoise);
    for (std::size_t i = 0; i < level.size(); ++i) {
        level[i] = std::max(level[i] - kFloorShare * above[i], 0.0F);
        above[i] = above[i] > least ? 1.0F : 0.0F;
    }
    for (int step = 1; step < reach; step *= 3) { // a mean over so many samples, by threes of threes
        rise.Smooth(step);
    }
    std::transform(level.begin(), level.end(), above.begin(), level.begin(), std::multiplies<>());
    return std::move(level);
}

} // namespace corvane
