#include "stack/combine/workbench.h"

#include <algorithm>
#include <functional>

namespace corvane::stack {

namespace {

constexpr int kShortStretch = 16;
constexpr int kFewestLeft = 2; // values, by which each other can be judged

bool HasValue(const CombineLine& line, int k)
{
    const double v = line.values[k];
    return line.valid[k] != 0 && v == v; // NOLINT(misc-redundant-expression): false for NaN alone
}

} // namespace

Workbench::Workbench(const CombinePlan& plan, bool countsRejected)
    : combiner(plan.rule, plan.coverage, WeightsOf(plan.frames), plan.blank), values(plan.frames.size() * kStretch),
      valid(values.size()), fewest(static_cast<int>(plan.frames.size())),
      again_(plan.rule, Coverage::kAny, WeightsOf(plan.frames), plan.blank), takesPart_(TakingPart(plan)),
      grown_(plan.frames.size())
{
    for (std::size_t i = 0; i < plan.frames.size(); ++i) {
        lines.push_back({Values(i), Valid(i)});
    }
    if (countsRejected) {
        tally.emplace(plan);
    }
}

std::vector<Stretch> Workbench::FindGrown(const GrownRejection& grown, int plane, int row, int left, int right)
{
    ColumnBits any;
    for (std::size_t i = 0; i < grown_.size(); ++i) {
        if (grown.Find(i, plane, row, grown_[i])) {
            any.resize(grown_[i].size());
            std::transform(any.begin(), any.end(), grown_[i].begin(), any.begin(), std::bit_or<>());
        }
    }
    std::vector<Stretch> stretches;
    for (int x = left; x < right && !any.empty(); x += kShortStretch) {
        const int count = std::min(kShortStretch, right - x);
        bool holdsSome = false;
        for (int k = 0; k < count; ++k) {
            holdsSome |= HasColumn(any, x + k);
        }
        if (holdsSome) {
            stretches.push_back({x, row, plane, count});
        }
    }
    return stretches;
}

/// Makes what is dropped for its neighbours' sake invalid, and takes down where.
void Workbench::LeaveOutGrown(const Stretch& stretch, Coverage coverage)
{
    int has[kShortStretch] = {};
    int left[kShortStretch] = {};
    leftOut_.clear();
    for (std::size_t i = 0; i < lines.size(); ++i) {
        for (int k = 0; k < stretch.count && takesPart_[i] != 0; ++k) {
            const bool hasValue = HasValue(lines[i], k);
            const bool isGrown = hasValue && HasColumn(grown_[i], stretch.x + k);
            has[k] += hasValue ? 1 : 0;
            left[k] += hasValue && !isGrown ? 1 : 0;
            if (isGrown) {
                leftOut_.emplace_back(i, k);
            }
        }
    }
    const auto all = std::count(takesPart_.begin(), takesPart_.end(), 1);
    std::erase_if(leftOut_, [&](const auto& place) {
        const int k = place.second;
        return left[k] < kFewestLeft || (coverage == Coverage::kAll && has[k] < all);
    });
    for (const auto& [frame, k] : leftOut_) {
        Valid(frame)[k] = 0;
    }
}

void Workbench::CombineAgain(const Stretch& stretch, Coverage coverage, const CombinedRow& result, bool isCounted)
{
    const int count = stretch.count;
    float value[kShortStretch];
    float tooLow[kShortStretch];
    float tooHigh[kShortStretch];
    float noise[kShortStretch];
    RejectionTally* const counted = tally && isCounted ? &*tally : nullptr;
    if (counted != nullptr) { // takes back what was counted
        combiner.Combine(lines.data(), count, {value, nullptr, nullptr, nullptr, low, high});
        counted->Add(stretch.x, stretch.row, count, lines, low, high, -1);
    }
    LeaveOutGrown(stretch, coverage);
    again_.Combine(lines.data(), count,
                   {value, nullptr, tooLow, tooHigh, low, high, result.noise != nullptr ? noise : nullptr});
    if (counted != nullptr) {
        counted->Add(stretch.x, stretch.row, count, lines, low, high);
    }
    for (const auto& [frame, k] : leftOut_) { // the last one of a pixel has counted all
        const auto set = [k = k](float* row, const float* from) {
            if (row != nullptr) {
                row[k] = from[k];
            }
        };
        set(result.values, value);
        set(result.rejectedLow, tooLow);
        set(result.noise, noise);
        tooHigh[k] += 1.0F;
        set(result.rejectedHigh, tooHigh);
        if (counted != nullptr) {
            counted->AddHigh(frame, stretch.x + k, stretch.row);
        }
    }
}

} // namespace corvane::stack
