#pragma once

#include <string>
#include <type_traits>

#include "corvane/core/stl_image.h"
#include "io/formats/samples.h"
#include "io/frame.h"

namespace corvane::io {

/// How a file holds the samples of an image: as floats, or as counts, where sample = zero + step * count.
struct Storage {
    int bits;
    UndefinedTest isUndefined;
    bool isScaled = false;
    bool hasBlank = false; ///< some samples are undefined, and the count 0 stands for them
    double zero = 0.0;
    double step = 1.0;

    /// The smallest count of a defined sample.
    double Low() const { return hasBlank ? 1.0 : 0.0; }

    /// What is stored for a sample. T is float, double or an unsigned integer.
    template <class T>
    T Stored(float sample) const
    {
        if constexpr (std::is_floating_point_v<T>) {
            return isUndefined(sample) ? std::numeric_limits<T>::quiet_NaN() : sample;
        } else {
            return isUndefined(sample) ? T{0} : RoundTo<T>((sample - zero) / step, Low());
        }
    }
};

/// What a format can state about its integers.
struct IntegerFormat {
    const char* name;
    bool isPhysical; ///< which of them is none, and the scale that leads from them to the samples
};

/// Decides how an image is stored with so many bits. Throws Error, naming the path, when integers would lose samples
/// and the scale does not say what to do, and when samples are undefined in a format that has nothing for them.
Storage ChooseStorage(const std::string& path, const CStlImage& image, const SaveOptions& options,
                      const IntegerFormat& format);

/// Throws Error when the scale is one of integers, and the bits are not.
void CheckScale(const std::string& path, const SaveOptions& options);

} // namespace corvane::io
