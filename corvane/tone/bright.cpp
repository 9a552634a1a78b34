#include "corvane/tone/bright.h"

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

void CImgBright::Do(double brightness, double contrast, double centre, CStlImage* source, CRect* rect, int showProgress)
{
    Do(brightness, contrast, centre, *source, rect, WindowRun(*this, showProgress));
}

void CImgBright::Do(double brightness, double contrast, double centre, const CStlImage& source, const CRect* rect,
                    const Run& run)
{
    // The mapping is linear in the sample too: what is added to a display value is added in raw units.
    const DisplayScale scale(*this, 0);
    const double steepness = contrast * 0.00390625;
    const double gain = steepness * scale.RoundTrip();
    const double shift = (brightness - centre * steepness) * scale.range * kPer255;
    MapPlanes(*this, source, rect, run, IDS_BRIGHTNESS,
              [=](int) { return [=](double v) { return v + ((v - scale.min) * gain + shift); }; });
}
