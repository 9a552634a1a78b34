#include <algorithm>

#include "corvane/combine/rejection.h"

namespace corvane {
namespace {

class EndsDropped final : public Rejection {
public:
    EndsDropped(int lowest, int highest) : lowest_(lowest), highest_(highest) {}

    void Choose(const SortedBlock& block, Kept& kept) const override
    {
        for (int k = 0; k < kColumns; ++k) {
            const int count = block.count[k];
            const bool hasMore = count > lowest_ + highest_;
            kept.first[k] = hasMore ? lowest_ : std::max(count - 1, 0) / 2;
            kept.count[k] = hasMore ? count - lowest_ - highest_ : std::min(count, 1);
        }
    }

private:
    int lowest_;
    int highest_;
};

} // namespace

std::unique_ptr<const Rejection> DropEnds(int lowest, int highest)
{
    return std::make_unique<EndsDropped>(lowest, highest);
}

} // namespace corvane
