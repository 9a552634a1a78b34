#include "corvane/geometry/crop.h"

#include <algorithm>

#include "corvane/geometry/canvas.h"
#include "corvane/geometry/rows.h"

using namespace corvane;

namespace {

constexpr int kNoText = 3072; // not in the string table: the text that applications show for a crop is empty
constexpr int kParts = 2;     // the bar of applications ends half full

} // namespace

int CImgCrop::Do(CRect rect, CStlImage* source, int showProgress)
{
    return Do(rect, *source, WindowRun(*this, showProgress));
}

int CImgCrop::Do(CRect rect, const CStlImage& source, const Run& run)
{
    InitStdPt();
    const long long width = static_cast<long long>(rect.right) - rect.left;
    const long long height = static_cast<long long>(rect.bottom) - rect.top;
    if (MakeCanvas(*this, source, width, height, run) == 0) {
        return 0;
    }
    const SourceRows from(source);
    const int left = std::clamp(static_cast<int>(rect.left), 0, from.Width() - 1);
    const auto fill = [&](int plane, int y, float* row) {
        from.Copy(left, static_cast<int>(rect.top) + y, plane, GetWidth(), row);
    };
    FillRows(*this, source, run, kNoText, fill, kParts);
    TranslatePhysicalCoords(-static_cast<double>(rect.left), -static_cast<double>(rect.top));
    return 1;
}
