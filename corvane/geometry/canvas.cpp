#include "corvane/geometry/canvas.h"

#include <limits>

#include "corvane/resources/string_table.h"

namespace corvane {

int MakeCanvas(CStlImage& target, const CStlImage& source, long long width, long long height, const Run& run)
{
    constexpr long long kLongest = std::numeric_limits<int>::max();
    if (width < 1 || height < 1 || width > kLongest || height > kLongest) {
        return 0;
    }
    const Stage stage(run, IDS_CANVAS_SIZE, 0);
    const int w = static_cast<int>(width);
    const int h = static_cast<int>(height);
    return &target == &source ? target.ChangeSize(w, h) : target.CreateCanvas(target, w, h);
}

} // namespace corvane
