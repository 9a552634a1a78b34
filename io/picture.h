#pragma once

#include <string>

#include "corvane/core/stl_image.h"
#include "corvane/platform/export.h"

namespace corvane::io {

/// How a picture is stored.
struct PictureFormat {
    int bits = 0;     ///< 8 or 16 in each sample; 0: 16 for TIFF, else 8
    int quality = 90; ///< of a JPEG [1..100]
};

/// Throws the Error that `SavePicture` would throw for path and format alone: NameError unless the path ends with .png,
/// .jpg, .jpeg, .tif or .tiff; a JPEG has 8 bits.
CORVANE_VISIBLE void CheckPicture(const std::string& path, const PictureFormat& format = {});

/// Writes the image as it shows on the screen: through its display levels, grey or RGB, in the format of the path's
/// extension. All say that their colours are sRGB: a PNG by a chunk, JPEG and TIFF by a profile.
///
/// With bottomUp the last row comes first in the picture (FITS; `IsBottomUp` tells). NaN shows black. The file appears
/// whole or not at all. Throws Error.
CORVANE_VISIBLE void SavePicture(const std::string& path, const CStlImage& image, bool bottomUp,
                                 const PictureFormat& format = {});

/// The picture as a PNG of 8 bits, in memory.
CORVANE_VISIBLE std::string EncodePicture(const CStlImage& image, bool bottomUp);

/// The picture as a JPEG, in memory: a tenth of the bytes where there is noise.
CORVANE_VISIBLE std::string EncodePhoto(const CStlImage& image, bool bottomUp, int quality);

} // namespace corvane::io
