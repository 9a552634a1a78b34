#include "stack/combine/rejection_tally.h"

#include <algorithm>
#include <functional>

#include "stack/combine/workbench.h"

namespace corvane::stack {

namespace {

constexpr int kLongestSide = 256; // of the picture

} // namespace

RejectionTally::RejectionTally(const CombinePlan& plan)
    : cell_(std::max((std::max(plan.grid.width, plan.grid.height) + kLongestSide - 1) / kLongestSide, 1))
{
    across_ = (plan.grid.width + cell_ - 1) / cell_;
    down_ = (plan.grid.height + cell_ - 1) / cell_;
    if (plan.rule.rejection != nullptr) {
        takesPart_ = TakingPart(plan);
        frames_.resize(plan.frames.size());
        dropped_.resize(static_cast<std::size_t>(across_) * down_);
    }
}

void RejectionTally::Add(int x, int row, int count, const std::vector<CombineLine>& lines, const double* low,
                         const double* high, int times)
{
    int dropped[kStretch] = {};
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        const auto& [values, valid] = lines[i];
        int seen = 0;
        int below = 0;
        int above = 0;
        for (int k = 0; k < count && takesPart_[i] != 0; ++k) {
            const double v = values[k];
            const int has = (valid[k] != 0) & (v == v); // NOLINT(misc-redundant-expression): false for NaN alone
            const int isBelow = has & (v < low[k] ? 1 : 0);
            const int isAbove = has & (v > high[k] ? 1 : 0);
            seen += has;
            below += isBelow;
            above += isAbove;
            dropped[k] += isBelow + isAbove;
        }
        frames_[i].values += static_cast<long long>(times) * seen;
        frames_[i].low += static_cast<long long>(times) * below;
        frames_[i].high += static_cast<long long>(times) * above;
    }
    int* const cells = dropped_.data() + static_cast<std::ptrdiff_t>(row / cell_) * across_;
    for (int k = 0; k < count && !frames_.empty(); ++k) {
        cells[(x + k) / cell_] += times * dropped[k];
    }
}

void RejectionTally::AddHigh(std::size_t frame, int x, int row)
{
    if (!frames_.empty()) {
        ++frames_[frame].values;
        ++frames_[frame].high;
        ++dropped_[static_cast<std::size_t>(row / cell_) * across_ + x / cell_];
    }
}

void RejectionTally::Add(const RejectionTally& other)
{
    for (std::size_t i = 0; i < frames_.size(); ++i) {
        frames_[i].values += other.frames_[i].values;
        frames_[i].low += other.frames_[i].low;
        frames_[i].high += other.frames_[i].high;
    }
    std::transform(dropped_.begin(), dropped_.end(), other.dropped_.begin(), dropped_.begin(), std::plus<>());
}

CStlImage RejectionTally::Picture() const
{
    CStlImage picture(-32, across_, down_, 1, 1.0, 0.0, 1);
    for (int y = 0; y < down_ && !dropped_.empty(); ++y) {
        std::copy_n(dropped_.begin() + static_cast<std::ptrdiff_t>(y) * across_, across_, picture.GetImageAdr(0, y, 0));
    }
    return picture;
}

} // namespace corvane::stack
