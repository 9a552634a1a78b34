#include "stack/combine/placed_frame.h"

#include <algorithm>
#include <iterator>

#include "corvane/core/memory_budget.h"

namespace corvane::stack {

Mapping OnGrid(const Mapping& mapping, const Grid& grid)
{
    return mapping.From(grid.left, grid.top).Scaled(grid.scale);
}

std::vector<double> WeightsOf(const std::vector<Placement>& frames)
{
    std::vector<double> weights;
    std::transform(frames.begin(), frames.end(), std::back_inserter(weights), [](const auto& f) { return f.weight; });
    return weights;
}

std::vector<char> TakingPart(const CombinePlan& plan)
{
    std::vector<char> takesPart;
    for (const Placement& frame : plan.frames) {
        takesPart.push_back(plan.rule.by != CombineBy::kMean || frame.weight > 0.0 ? 1 : 0);
    }
    return takesPart;
}

std::uint64_t MemoryFor(const CombinePlan& plan)
{
    return std::min(plan.memory, MemoryBudget() - std::min(MemoryInUse(), MemoryBudget()));
}

void ReplaceBlanks(const FrameFacts& facts, float value, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    for (int plane = 0; plane < facts.planes && facts.blank; ++plane) {
        float* const begin = samples + plane * planeStride;
        std::replace_if(begin, begin + static_cast<std::ptrdiff_t>(rowCount) * facts.width, facts.IsBlank(), value);
    }
}

void Normalise(const Placement& placement, const Grid& grid, const Stretch& stretch, double* values, const int* valid)
{
    const std::vector<Normalisation>& planes = placement.normalisation;
    if (planes.empty() || planes[stretch.plane].ChangesNothing()) {
        return;
    }
    const auto change = [&, factor = planes[stretch.plane].factor](auto offsetOf) {
        for (int x = 0; x < stretch.count; ++x) {
            const double v = values[x];
            values[x] = valid[x] != 0 ? v * factor + offsetOf(x) : v;
        }
    };
    if (const OffsetField* const field = planes[stretch.plane].field.get()) {
        double places[kStretch] = {};
        double offsets[kStretch];
        for (int x = 0; x < stretch.count; ++x) {
            places[x] = grid.XOnReference(stretch.x + x);
        }
        field->FillRow(grid.YOnReference(stretch.row), places, stretch.count, offsets);
        change([&](int x) { return offsets[x]; });
    } else {
        change([offset = planes[stretch.plane].offset](int) { return offset; });
    }
}

} // namespace corvane::stack
