#include "corvane/core/mix.h"

#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/defined.h"
#include "corvane/core/walk.h"

namespace corvane {
namespace {

/// Mixes rows of two images.
class RowMixer {
public:
    RowMixer(const CStlImage& result, const CStlImage& original, double strength)
        : isResultDefined_(result), isOriginalDefined_(original), strength_(strength)
    {
        const bool keepsBlank = result.IsBlankUsed() && result.GetBlank() == original.GetBlank();
        becomesNaN_ = keepsBlank ? BlankTest() : BlankTest(original);
    }

    /// partOf(x) is the mask's.
    template <class PartOf>
    void operator()(const float* original, float* row, int count, PartOf partOf) const
    {
        for (int x = 0; x < count; ++x) {
            const double part = partOf(x) * strength_;
            const bool areDefined = isOriginalDefined_(original[x]) & isResultDefined_(row[x]);
            const float before = becomesNaN_(original[x]) ? std::numeric_limits<float>::quiet_NaN() : original[x];
            const auto mixed = static_cast<float>(before + part * (static_cast<double>(row[x]) - before));
            const float nearer = part < 0.5 ? before : row[x];
            const float between = areDefined ? mixed : nearer;
            const float atEnd = part == 1.0 ? row[x] : before;
            const bool isEnd = (part == 1.0) | (part == 0.0);
            row[x] = isEnd ? atEnd : between;
        }
    }

private:
    DefinedTest isResultDefined_;
    DefinedTest isOriginalDefined_;
    BlankTest becomesNaN_;
    double strength_;
};

} // namespace

void MixImages(CStlImage& result, const CStlImage& original, const CStlImage* mask, double strength, const Run& run)
{
    const RowMixer mixer(result, original, strength);
    const DefinedTest isPart(mask == nullptr ? result : *mask);
    const int count = result.GetWidth();
    Stage stage(run, "Mixing with the image...", result.GetHeight() * result.GetPlanes());
    const auto mixRow = [&](int y, int plane) {
        const float* const from = original.GetImageAdr(0, y, plane, 1);
        float* const row = result.GetImageAdr(0, y, plane);
        if (mask == nullptr) {
            mixer(from, row, count, [](int) { return 1.0; });
        } else {
            const float* const parts = mask->GetImageAdr(0, y, 0, 1);
            mixer(from, row, count, [=](int x) { return isPart(parts[x]) ? static_cast<double>(parts[x]) : 0.0; });
        }
    };
    WalkBlocks(RowBlocks(WorkingArea(result, nullptr), result.GetPlanes()), result, {&original, mask}, stage, 1,
               [&](const RowBlock& block) {
                   for (int y = block.first; y < block.end; ++y) {
                       mixRow(y, block.plane);
                   }
               });
}

} // namespace corvane
