#include "corvane/colour/separation.h"

#include <iterator>

#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// Two planes of which the mean is taken, which of one plane twice is its own value.
struct PlanePair {
    int first;
    int second;
};

constexpr PlanePair kSamplePlanes[] = {{0, 0}, {1, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}};
constexpr PlanePair kLevelPlanes[] = {{0, 0}, {1, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 2}};

void MeanRow(const float* first, const float* second, int count, float* result)
{
    for (int x = 0; x < count; ++x) {
        result[x] = static_cast<float>((static_cast<double>(first[x]) + second[x]) * 0.5);
    }
}

bool Fits(const CImage& result, const CImage& source)
{
    return result.GetPlanes() == 1 && source.GetPlanes() == 3 && result.GetWidth() == source.GetWidth() &&
           result.GetHeight() == source.GetHeight();
}

} // namespace

void CImgSeparation::Do(CStlImage* source, int component, int showProgress)
{
    Do(*source, component, WindowRun(*this, showProgress));
}

void CImgSeparation::Do(const CStlImage& source, int component, const Run& run)
{
    Stage stage(run, IDS_SPLIT_RGB, GetHeight());
    const bool isKnown = component >= 0 && component < static_cast<int>(std::size(kSamplePlanes));
    if (Fits(*this, source)) {
        const PlanePair planes = isKnown ? kSamplePlanes[component] : PlanePair{};
        const RowBlocks blocks(WorkingArea(*this, nullptr));
        WalkBlocks(blocks, *this, {&source}, stage, 1, [&](const RowBlock& block) {
            for (int y = block.first; isKnown && y < block.end; ++y) {
                MeanRow(source.GetImageAdr(0, y, planes.first, 1), source.GetImageAdr(0, y, planes.second, 1),
                        GetWidth(), GetImageAdr(0, y, 0));
            }
        });
        if (isKnown) {
            const auto [low, high] = kLevelPlanes[component];
            SetLevel(0, (source.GetLevelMin(low) + source.GetLevelMin(high)) * 0.5,
                     (source.GetLevelMax(low) + source.GetLevelMax(high)) * 0.5);
        }
    }
}
