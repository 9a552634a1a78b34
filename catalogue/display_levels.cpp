#include "catalogue/display_levels.h"

#include "corvane/tone/auto_level.h"

namespace corvane::catalogue {

void SetAutoLevels(CStlImage& image, double lowSigma, double highSigma, bool perPlane, const CRect* rect)
{
    CRect area = rect == nullptr ? CRect() : *rect;
    CImgAutoLevel levels;
    levels.Swap(&image);
    levels.Do(lowSigma, highSigma, perPlane, rect == nullptr ? nullptr : &area);
    image.Swap(&levels);
}

Sky MeasureSky(const CStlImage& image)
{
    CStlImage measured = image.Shared();
    SetAutoLevels(measured, 0.0, 1.0, false, nullptr);
    return {measured.GetLevelMin(0), measured.GetLevelRange(0)};
}

CStlImage WithLevels(const CStlImage& image, double lowSigma, double highSigma)
{
    CStlImage shown = image.Shared();
    if (shown.HasOwnLevel() == 0) {
        SetAutoLevels(shown, lowSigma, highSigma, false, nullptr);
        shown.SetOwnLevel(1);
    }
    return shown;
}

} // namespace corvane::catalogue
