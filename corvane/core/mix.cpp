#include "corvane/core/mix.h"

#include <algorithm>
#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/defined.h"
#include "corvane/core/independent.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

/// original + part * (changed - original), and the bits of either where that is all of it.
float MixedSample(float original, float changed, double part)
{
    const auto mixed = static_cast<float>(original + part * (static_cast<double>(changed) - original));
    const float between = part == 0.0 ? original : mixed;
    return part == 1.0 ? changed : between;
}

/// Mixes rows of two images by those of a mask; a null one is 1 everywhere.
class RowMixer {
public:
    RowMixer(const CStlImage& result, const CStlImage& original, const CStlImage* mask, double strength)
        : isResultDefined_(result), isOriginalDefined_(original), isPart_(mask == nullptr ? result : *mask),
          hasMask_(mask != nullptr),
          hasBlanks_(result.IsBlankUsed() || original.IsBlankUsed() || (mask != nullptr && mask->IsBlankUsed())),
          strength_(strength)
    {
        const bool keepsBlank = result.IsBlankUsed() && result.GetBlank() == original.GetBlank();
        becomesNaN_ = keepsBlank ? BlankTest() : BlankTest(original);
    }

    void operator()(const float* original, float* row, int count, const float* mask) const
    {
        for (int first = 0; first < count; first += kMixBlock) {
            const int size = std::min(kMixBlock, count - first);
            if (mask == nullptr) {
                MixBlock(original + first, row + first, size, [](int) { return 1.0F; });
            } else {
                MixBlock(original + first, row + first, size, [parts = mask + first](int x) { return parts[x]; });
            }
        }
    }

private:
    static constexpr int kMixBlock = 1024; // what is made of it stays in the nearest cache

    template <class PartOf>
    void MixBlock(const float* original, float* row, int count, PartOf partOf) const
    {
        float mixed[kMixBlock];
        if (!hasBlanks_ && MixNumbers(original, row, count, partOf, mixed)) {
            std::copy_n(mixed, count, row);
        } else {
            MixAny(original, row, count, partOf);
        }
    }

    /// Of samples that all are numbers: false when something else has come out.
    template <class PartOf>
    bool MixNumbers(const float* original, const float* row, int count, PartOf partOf, float* mixed) const
    {
        int others = 0;
        CORVANE_INDEPENDENT
        for (int x = 0; x < count; ++x) {
            mixed[x] = MixedSample(original[x], row[x], partOf(x) * strength_);
            others |= mixed[x] - mixed[x] == 0.0F ? 0 : 1;
        }
        return others == 0;
    }

    template <class PartOf>
    void MixAny(const float* original, float* row, int count, PartOf partOf) const
    {
        for (int x = 0; x < count; ++x) {
            const double part = !hasMask_ || isPart_(partOf(x)) ? partOf(x) * strength_ : 0.0;
            const bool areDefined = isOriginalDefined_(original[x]) && isResultDefined_(row[x]);
            const float before = becomesNaN_(original[x]) ? std::numeric_limits<float>::quiet_NaN() : original[x];
            row[x] = MixedSample(before, row[x], areDefined ? part : (part < 0.5 ? 0.0 : 1.0));
        }
    }

    DefinedTest isResultDefined_;
    DefinedTest isOriginalDefined_;
    DefinedTest isPart_;
    BlankTest becomesNaN_;
    bool hasMask_;
    bool hasBlanks_;
    double strength_;
};

} // namespace

void MixImages(CStlImage& result, const CStlImage& original, const CStlImage* mask, double strength, const Run& run)
{
    const RowMixer mixer(result, original, mask, strength);
    const int count = result.GetWidth();
    Stage stage(run, "Mixing with the image...", result.GetHeight() * result.GetPlanes());
    const auto mixRow = [&](int y, int plane) {
        const float* const from = original.GetImageAdr(0, y, plane, 1);
        float* const row = result.GetImageAdr(0, y, plane);
        mixer(from, row, count, mask == nullptr ? nullptr : mask->GetImageAdr(0, y, 0, 1));
    };
    WalkBlocks(RowBlocks(WorkingArea(result, nullptr), result.GetPlanes()), result, {&original, mask}, stage, 1,
               [&](const RowBlock& block) {
                   for (int y = block.first; y < block.end; ++y) {
                       mixRow(y, block.plane);
                   }
               });
}

} // namespace corvane
