#pragma once

#include <limits>
#include <memory>
#include <optional>

#include "io/formats/big_endian.h"
#include "io/formats/fits_file.h"

namespace corvane::io {

/// How stored values become samples.
struct StoredScale {
    double scale = 1.0;
    double zero = 0.0;
    std::optional<long long> undefined; ///< the stored integer that becomes NaN

    bool IsPlain() const { return scale == 1.0 && zero == 0.0; }
};

/// Samples of an image by rows of its planes, which are counted over all axes beyond the second.
class FitsSamples {
public:
    virtual ~FitsSamples() = default;
    virtual void Read(long long plane, long long firstRow, long long rowCount, float* samples) = 0;
};

/// The reader of an image that is stored as it is.
std::unique_ptr<FitsSamples> OpenPlainSamples(FitsFile& file, const FitsImage& image, const StoredScale& scale);

/// Physical values of integers; those beyond the range of float become infinite.
template <class T>
void ToSamples(const T* values, std::size_t count, const StoredScale& scale, float* samples)
{
    if (scale.IsPlain()) {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = static_cast<float>(values[i]);
        }
    } else {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = static_cast<float>(static_cast<double>(values[i]) * scale.scale + scale.zero);
        }
    }
    if (scale.undefined) {
        for (std::size_t i = 0; i < count; ++i) {
            samples[i] = static_cast<long long>(values[i]) == *scale.undefined ? std::numeric_limits<float>::quiet_NaN()
                                                                               : samples[i];
        }
    }
}

/// The same of values as FITS stores them: BITPIX `bits`, the high byte first.
void ToSamples(int bits, Bytes stored, const StoredScale& scale, float* samples);

} // namespace corvane::io
