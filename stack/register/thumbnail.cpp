#include "stack/register/thumbnail.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "corvane/core/defined.h"

namespace corvane::stack {

CStlImage Thumbnail(const CStlImage& image, int plane, int longest)
{
    const int cell = std::max((std::max(image.GetWidth(), image.GetHeight()) + longest - 1) / longest, 1);
    const int width = (image.GetWidth() + cell - 1) / cell;
    const DefinedTest isDefined(image);
    CStlImage small(-32, width, (image.GetHeight() + cell - 1) / cell, 1, 1.0, 0.0, 1);
    for (int y = 0; y < small.GetHeight(); ++y) {
        std::vector<double> sums(static_cast<std::size_t>(width));
        std::vector<int> counts(static_cast<std::size_t>(width));
        for (int row = y * cell; row < std::min((y + 1) * cell, image.GetHeight()); ++row) {
            const float* const samples = image.GetImageAdr(0, row, plane, 1);
            for (int x = 0; x < image.GetWidth(); ++x) {
                const bool has = isDefined(samples[x]);
                sums[x / cell] += has ? samples[x] : 0.0F;
                counts[x / cell] += has ? 1 : 0;
            }
        }
        std::transform(sums.begin(), sums.end(), counts.begin(), small.GetImageAdr(0, y, 0),
                       [](double sum, int count) { return static_cast<float>(sum / count); });
    }
    return small;
}

} // namespace corvane::stack
