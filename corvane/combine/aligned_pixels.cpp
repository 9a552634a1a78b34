#include "corvane/combine/aligned_pixels.h"

#include <algorithm>

#include "corvane/core/display_scale.h"

namespace corvane {

AlignedPixels::AlignedPixels(const CStlImage& image, const Alignment& alignment, Channels channels, Space space,
                             int count)
    : image_(image), alignment_(alignment), channels_(channels), space_(space), rows_(image.GetDimension() < 3 ? 1 : 3),
      inside_(static_cast<std::size_t>(count))
{
    for (std::vector<double>& row : rows_) {
        row.resize(inside_.size());
    }
}

void AlignedPixels::Sample(int y, double outside)
{
    const int count = static_cast<int>(inside_.size());
    for (int i = 0; i < static_cast<int>(rows_.size()); ++i) {
        const int plane = std::min(i, image_.GetPlanes() - 1);
        SampleAlignedRow(image_, plane, alignment_, y, count, outside, rows_[i].data(), inside_.data());
        if (space_ == Space::kDisplay) {
            ToDisplay(i);
        }
    }
    if (channels_ == Channels::kGrey && rows_.size() > 1) {
        ToBrightness(outside);
    }
}

void AlignedPixels::ToDisplay(int plane)
{
    const DisplayScale scale(image_, plane);
    double* const values = rows_[plane].data();
    const int* const inside = inside_.data();
    for (std::size_t x = 0; x < inside_.size(); ++x) {
        const double v = scale.To256(values[x]);
        values[x] = inside[x] != 0 ? v : values[x];
    }
}

/// Puts the brightness into the place of the red channel.
void AlignedPixels::ToBrightness(double outside)
{
    double* const red = rows_[0].data();
    const double* const green = rows_[1].data();
    const double* const blue = rows_[2].data();
    const int* const inside = inside_.data();
    for (std::size_t x = 0; x < inside_.size(); ++x) {
        const double brightness = BrightnessOf(red[x], green[x], blue[x]);
        red[x] = inside[x] != 0 ? brightness : outside;
    }
}

} // namespace corvane
