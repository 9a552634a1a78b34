#include "catalogue/display_levels.h"

#include "corvane/tone/auto_level.h"

namespace corvane::catalogue {
namespace {

/// Chooses levels, without a copy of the samples.
void SetAutoLevels(CStlImage& image, double lowSigma, double highSigma)
{
    CImgAutoLevel levels;
    levels.Swap(&image);
    levels.Do(lowSigma, highSigma, 0, nullptr);
    image.Swap(&levels);
}

} // namespace

Sky MeasureSky(CStlImage& image)
{
    image.SetOrgLevel();
    SetAutoLevels(image, 0.0, 1.0);
    const Sky sky{image.GetLevelMin(0), image.GetLevelRange(0)};
    image.RestoreOrgLevel();
    return sky;
}

void GiveLevels(CStlImage& image, double lowSigma, double highSigma)
{
    if (image.HasOwnLevel() == 0) {
        SetAutoLevels(image, lowSigma, highSigma);
        image.SetOwnLevel(1);
    }
}

} // namespace corvane::catalogue
