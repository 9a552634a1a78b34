#include "catalogue/own_samples.h"

namespace corvane::catalogue {

void OwnSamples(CStlImage& image)
{
    constexpr long kOwners = 2; // the image, and who asks
    if (image.ShareStore().use_count() > kOwners) {
        image = CStlImage(image);
    }
}

} // namespace corvane::catalogue
