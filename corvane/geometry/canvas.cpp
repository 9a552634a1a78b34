#include "corvane/geometry/canvas.h"

#include <limits>

#include "corvane/resources/string_table.h"

namespace corvane {

int MakeCanvas(CStlImage& target, const CStlImage& source, long long width, long long height, int showProgress)
{
    constexpr long long kLongest = std::numeric_limits<int>::max();
    if (width < 1 || height < 1 || width > kLongest || height > kLongest) {
        return 0;
    }
    HWND window = showProgress != 0 ? target.GetProgressHandle() : nullptr;
    const char* const text = showProgress != 0 ? FindString(IDS_CANVAS_SIZE) : nullptr;
    const int w = static_cast<int>(width);
    const int h = static_cast<int>(height);
    return &target == &source ? target.ChangeSize(w, h, window, text) : target.CreateCanvas(target, w, h, window, text);
}

} // namespace corvane
