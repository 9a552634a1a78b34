#include "corvane/tone/color_balance.h"

#include <algorithm>

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

void CImgColorBalance::Do(double offsetPlane0, double offsetPlane1, double offsetPlane2, CStlImage* source, CRect* rect,
                          int showProgress)
{
    Do(offsetPlane0, offsetPlane1, offsetPlane2, *source, rect, WindowRun(*this, showProgress));
}

void CImgColorBalance::Do(double offsetPlane0, double offsetPlane1, double offsetPlane2, const CStlImage& source,
                          const CRect* rect, const Run& run)
{
    const double offsets[] = {offsetPlane0, offsetPlane1, offsetPlane2};
    const DisplayScale scale(*this, 0);
    const double roundTrip = scale.RoundTrip();
    MapPlanes(*this, source, rect, run, IDS_COLOR_BALANCE, [&](int plane) {
        const double shift = offsets[std::min(plane, 2)] * scale.range * kPer255;
        return [=](double v) { return v * roundTrip + shift; };
    });
}
