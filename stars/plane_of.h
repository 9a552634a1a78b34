#pragma once

#include <memory>

#include "corvane/core/stl_image.h"

namespace corvane::stars {

/// One plane of an image, with the image's blanks, as an image of its own over the same samples, which live as long as
/// either.
inline CStlImage PlaneOf(const CStlImage& image, int plane)
{
    auto* const first = reinterpret_cast<unsigned char*>(image.GetImageAdr(0, 0, plane, 1));
    CStlImage alone(std::make_shared<CVmImage>(std::shared_ptr<unsigned char>(image.ShareStore(), first),
                                               image.GetWidth(), image.GetHeight(), 1, sizeof(float)));
    alone.SetBlankUsed(image.IsBlankUsed());
    alone.SetBlank(image.GetBlank());
    return alone;
}

} // namespace corvane::stars
