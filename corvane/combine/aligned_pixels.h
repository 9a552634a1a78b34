#pragma once

#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/core/stl_image.h"

namespace corvane {

/// The channels in which two images are brought together, after the image that takes the result.
enum class Channels {
    kGrey,   ///< one; a colour image gives its brightness
    kColour, ///< three; a monochrome image gives its plane three times
};

inline Channels ChannelsOf(const CImage& result)
{
    return result.GetDimension() < 3 ? Channels::kGrey : Channels::kColour;
}

/// Raw values, or those of the display scale 0 to 255 by the levels of the image that is read.
enum class Space { kRaw, kDisplay };

/// An image aligned onto a frame, read one row of the frame at a time: the values that `GetPixelGrayRaw` with plane -1
/// and `GetPixelRgbRaw`, or their 256f forms, give pixel by pixel.
class AlignedPixels {
public:
    /// Prepares rows of the frame's columns 0 to `count` - 1. The image must outlive this object.
    AlignedPixels(const CStlImage& image, const Alignment& alignment, Channels channels, Space space, int count);

    /// Reads row y; pixels outside of the image get `outside`, whatever the space.
    void Sample(int y, double outside);

    /// The values of a channel [0..2; grey has the first alone].
    const double* Channel(int channel) const
    {
        return rows_[channels_ == Channels::kColour ? Stored(channel) : 0].data();
    }
    /// 1 for pixels inside of the image, 0 for those outside.
    const int* Inside() const { return inside_.data(); }

private:
    int Stored(int channel) const { return channel < static_cast<int>(rows_.size()) ? channel : 0; }
    void ToDisplay(int plane);
    void ToBrightness(double outside);

    const CStlImage& image_;
    Alignment alignment_;
    Channels channels_;
    Space space_;
    std::vector<std::vector<double>> rows_; ///< one for each plane that is read
    std::vector<int> inside_;
};

} // namespace corvane
