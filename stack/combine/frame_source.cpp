#include "stack/combine/frame_source.h"

#include <algorithm>

namespace corvane::stack {

FrameFacts ImageSource::Facts(int frame) const
{
    const CStlImage& image = *images_[static_cast<std::size_t>(frame)];
    return {image.GetWidth(), image.GetHeight(), image.GetPlanes(),
            image.IsBlankUsed() != 0 ? std::optional(image.GetBlank()) : std::nullopt};
}

void ImageSource::Read(int frame, int firstRow, int rowCount, float* samples, std::ptrdiff_t planeStride)
{
    const CStlImage& image = *images_[static_cast<std::size_t>(frame)];
    const std::ptrdiff_t width = image.GetWidth();
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        for (int row = 0; row < rowCount; ++row) {
            std::copy_n(image.GetImageAdr(0, firstRow + row, plane, 1), width,
                        samples + plane * planeStride + row * width);
        }
    }
}

} // namespace corvane::stack
