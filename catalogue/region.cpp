#include "catalogue/region.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/fold.h"
#include "corvane/measure/pixel_info.h"

namespace corvane::catalogue {
namespace {

constexpr int kUndefined = std::numeric_limits<int>::min();

/// One plane of a region, in an image of its own whose blanks are the samples that do not count.
class Cut {
public:
    Cut(const CStlImage& image, int plane, const CRect& rect)
        : info_(CStlImage(-32, rect.Width(), rect.Height(), 1, 1.0, 0.0, 1))
    {
        info_.SetBlank(kUndefined);
        const BlankTest isBlank(image);
        const auto copyBlock = [&](const RowBlock& block) {
            RegionMeasures part;
            for (int y = block.first; y < block.end; ++y) {
                const float* const in =
                    image.GetImageAdr(static_cast<int>(rect.left), static_cast<int>(rect.top) + y, plane, 1);
                CopyRow(in, isBlank, rect.Width(), info_.GetImageAdr(0, y, 0), part);
            }
            return part;
        };
        FoldBlocks(RowBlocks({0, 0, rect.Width(), rect.Height()}), ThreadsOn(info_, {&image}), copyBlock,
                   [this](const RegionMeasures& part) {
                       measures_.blank += part.blank;
                       measures_.infinite += part.infinite;
                       measures_.counted += part.counted;
                   });
        info_.SetBlankUsed(measures_.blank + measures_.infinite > 0);
        BeginWithOneThatCounts();
    }

    RegionMeasures Measure()
    {
        if (measures_.counted > 0) {
            double values[4][3];
            info_.Calc(CRect(0, 0, info_.GetWidth(), info_.GetHeight()), values[0], values[1], values[2], values[3]);
            measures_.max = values[0][0];
            measures_.min = values[1][0];
            measures_.mean = values[2][0];
            measures_.median = values[3][0];
        }
        return measures_;
    }

private:
    static void CopyRow(const float* in, const BlankTest& isBlank, int count, float* out, RegionMeasures& counts)
    {
        for (int x = 0; x < count; ++x) {
            const bool blank = isBlank(in[x]);
            const bool infinite = !std::isfinite(in[x]);
            const bool counted = !blank & !infinite;
            counts.blank += blank;
            counts.infinite += infinite;
            counts.counted += counted;
            out[x] = counted ? in[x] : static_cast<float>(kUndefined);
        }
    }

    /// The extremes begin with the first sample, be it blank or not; the order of the others does not matter.
    void BeginWithOneThatCounts()
    {
        float* const first = info_.GetImageAdr(0, 0, 0);
        for (int y = 0; y < info_.GetHeight() && *first == static_cast<float>(kUndefined); ++y) {
            float* const row = info_.GetImageAdr(0, y, 0);
            float* const end = row + info_.GetWidth();
            float* const found = std::find_if(row, end, [](float v) { return v != static_cast<float>(kUndefined); });
            if (found != end) {
                std::swap(*first, *found);
            }
        }
    }

    CImgPixelInfo info_;
    RegionMeasures measures_;
};

} // namespace

std::vector<RegionMeasures> MeasureRegion(const CStlImage& image, const CRect* rect)
{
    const CRect whole(0, 0, image.GetWidth(), image.GetHeight());
    const CRect area = rect != nullptr ? *rect : whole;
    std::vector<RegionMeasures> planes;
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        planes.push_back(Cut(image, plane, area).Measure());
    }
    return planes;
}

} // namespace corvane::catalogue
