#include "corvane/tone/invert.h"

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

void CImgInvert::Do(CStlImage* source, CRect* rect, int showProgress)
{
    Do(*source, rect, WindowRun(*this, showProgress));
}

void CImgInvert::Do(const CStlImage& source, const CRect* rect, const Run& run)
{
    MapPlanes(*this, source, rect, run, IDS_INVERT, [&](int plane) {
        const DisplayScale from(source, plane);
        const DisplayScale to(*this, plane);
        const double perRange = 1.0 / from.range;
        return [=](double v) { return to.ToRaw(255.0 - (v - from.min) * perRange * 255.0); };
    });
}
