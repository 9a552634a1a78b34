#include "corvane/colour/lab_color_enhance.h"

#include <algorithm>

#include "corvane/core/display_scale.h"
#include "corvane/core/lab.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

constexpr int kStretch = 256;

/// The gains of one axis on either side of grey.
struct Gains {
    double plus = 1.0;
    double minus = 1.0;

    double operator()(double v) const { return v * (v >= 0.0 ? plus : minus); }
};

/// Reads `own` samples; the rest of the stretch repeats the last of them.
void Load(const float* in, int own, int count, const Gains& gains, double* out)
{
    std::transform(in, in + own, out, [gains](double v) { return gains(v); });
    std::fill(out + own, out + count, out[own - 1]);
}

void Store(const double* in, int count, const DisplayScale& scale, float* out)
{
    std::transform(in, in + count, out, [scale](double v) { return static_cast<float>(scale.ToRaw(v * 255.0)); });
}

/// Converts a stretch of L, a and b into as many planes as the target has.
void Enhance(const CStlImage& lab, const Gains (&gains)[3], int x, int y, int count, CStlImage& target)
{
    double channels[3][kStretch];
    const int own = std::clamp(lab.GetWidth() - x, 1, count);
    for (int p = 0; p < 3; ++p) {
        Load(lab.GetImageAdr(x, y, PlaneOf(lab, p), 1), own, count, gains[p], channels[p]);
    }
    auto& [first, second, third] = channels;
    LabToRgbRow(count, first, second, third, first, second, third);
    for (int p = 0; p < std::min(3, target.GetPlanes()); ++p) {
        Store(channels[p], count, DisplayScale(target, p), target.GetImageAdr(x, y, p));
    }
}

} // namespace

void CImgLabColorEnhance::Do(CStlImage* lab, double aPlus, double aMinus, double bPlus, double bMinus, CRect* rect,
                             int showProgress)
{
    Do(*lab, aPlus, aMinus, bPlus, bMinus, rect, WindowRun(*this, showProgress));
}

void CImgLabColorEnhance::Do(const CStlImage& lab, double aPlus, double aMinus, double bPlus, double bMinus,
                             const CRect* rect, const Run& run)
{
    const Gains gains[] = {{}, {aPlus, aMinus}, {bPlus, bMinus}};
    const CRect area = WorkingArea(*this, rect);
    const int end = lab.GetPixelCount() == 0 ? 0 : static_cast<int>(area.right);
    WalkLines(*this, {&lab}, area, run, IDS_LAB_ENHANCE, [&](int y) {
        for (int x = static_cast<int>(area.left); x < end; x += kStretch) {
            Enhance(lab, gains, x, y, std::min(kStretch, end - x), *this);
        }
    });
}

void CImgLabColorEnhance::Do(CStlImage* lab, double aGain, double bGain, CRect* rect, int showProgress)
{
    Do(*lab, aGain, bGain, rect, WindowRun(*this, showProgress));
}

void CImgLabColorEnhance::Do(const CStlImage& lab, double aGain, double bGain, const CRect* rect, const Run& run)
{
    Do(lab, aGain, aGain, bGain, bGain, rect, run);
}
