#include "corvane/core/walk.h"

#include <functional>

namespace corvane {
namespace {

constexpr int kBlockSamples = 1 << 16; // its rows stay in a near cache, and threads end at about the same time

/// Whether any byte belongs to the samples of both.
bool Overlap(const CImage& a, const CImage& b)
{
    if (a.GetStore() == nullptr || b.GetStore() == nullptr || a.GetPixelCount() == 0 || b.GetPixelCount() == 0) {
        return false;
    }
    const std::less<const unsigned char*> isBefore;
    const unsigned char* const ofA = a.GetStore()->GetImageAdr(0, 1);
    const unsigned char* const ofB = b.GetStore()->GetImageAdr(0, 1);
    return isBefore(ofA, ofB + b.GetStore()->GetBytes()) && isBefore(ofB, ofA + a.GetStore()->GetBytes());
}

} // namespace

RowBlocks::RowBlocks(const CRect& area, int planes, int band)
    : first_(static_cast<int>(area.top)), end_(std::max(static_cast<int>(area.bottom), first_)),
      columns_(std::max(static_cast<int>(area.right - area.left), 1)), planes_(planes),
      rowsOfBlock_((std::max(kBlockSamples / columns_, 1) - 1) / band * band + band),
      blocksOfPlane_(end_ > first_ ? (end_ - first_ - 1) / rowsOfBlock_ + 1 : 0)
{}

RowBlock RowBlocks::operator[](int i) const
{
    const int first = first_ + i % blocksOfPlane_ * rowsOfBlock_;
    return {i / blocksOfPlane_, first, first + std::min(rowsOfBlock_, end_ - first)};
}

bool IsPaged(const CImage& image)
{
    return image.GetStore() != nullptr && image.GetStore()->IsPaged();
}

bool MayShareWork(const CImage& target, std::initializer_list<const CImage*> sources)
{
    return !IsPaged(target) && std::none_of(sources.begin(), sources.end(), [&](const CImage* source) {
        return source != nullptr && (IsPaged(*source) || Overlap(target, *source));
    });
}

} // namespace corvane
