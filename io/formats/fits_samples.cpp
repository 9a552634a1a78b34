#include "io/formats/fits_samples.h"

#include <algorithm>
#include <vector>

#include "corvane/core/error.h"
#include "corvane/core/walk.h"
#include "corvane/platform/workers.h"

namespace corvane::io {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{256} << 10;

template <class T>
void DecodePiece(Bytes stored, const StoredScale& scale, float* samples)
{
    constexpr std::size_t kMost = 1024;
    T values[kMost];
    const std::size_t count = stored.size() / sizeof(T);
    for (std::size_t done = 0; done < count; done += kMost) {
        const std::size_t length = std::min(kMost, count - done);
        for (std::size_t i = 0; i < length; ++i) {
            values[i] = LoadBigEndian<T>(stored.data() + (done + i) * sizeof(T));
        }
        ToSamples(values, length, scale, samples + done);
    }
}

/// Unsigned integers of 64 bits lose nothing to a sum in floating point.
void DecodeUnsigned(Bytes stored, float* samples)
{
    for (std::size_t i = 0; i < stored.size() / sizeof(std::uint64_t); ++i) {
        const auto value = LoadBigEndian<std::uint64_t>(stored.data() + i * sizeof(std::uint64_t));
        samples[i] = static_cast<float>(value ^ std::uint64_t{1} << 63U);
    }
}

class PlainSamples : public FitsSamples {
public:
    PlainSamples(FitsFile& file, const FitsImage& image, const StoredScale& scale)
        : file_(file), bits_(image.bits), width_(static_cast<std::uint64_t>(image.sizes[0])),
          height_(static_cast<std::uint64_t>(image.sizes[1])), data_(file.Hdu().data), scale_(scale)
    {}

    void Read(long long plane, long long firstRow, long long rowCount, float* samples) override
    {
        const std::uint64_t first =
            (static_cast<std::uint64_t>(plane) * height_ + static_cast<std::uint64_t>(firstRow)) * width_;
        const std::uint64_t bytes = static_cast<std::uint64_t>(rowCount) * width_ * SampleBytes();
        const int threads = ThreadsFor(rowCount * static_cast<long long>(width_));
        pieces_.resize(std::max(pieces_.size(), static_cast<std::size_t>(threads)));
        const auto read = [&](int block, int thread) {
            const std::uint64_t done = static_cast<std::uint64_t>(block) * kPieceBytes;
            std::vector<unsigned char>& piece = pieces_[static_cast<std::size_t>(thread)];
            piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kPieceBytes, bytes - done)));
            if (file_.Source().Read(data_ + first * SampleBytes() + done, piece) < piece.size()) {
                throw FileError(file_.Name(),
                                "is truncated: it ends within rows from " + std::to_string(firstRow) + " on");
            }
            ToSamples(bits_, piece, scale_, samples + done / SampleBytes());
        };
        const auto blocks = static_cast<int>((bytes + kPieceBytes - 1) / kPieceBytes);
        platform::ForBlocks(blocks, threads, read, [](int) {});
    }

private:
    std::uint64_t SampleBytes() const { return static_cast<std::uint64_t>(std::abs(bits_)) / 8; }

    FitsFile& file_;
    int bits_;
    std::uint64_t width_;
    std::uint64_t height_;
    std::uint64_t data_;
    StoredScale scale_;
    std::vector<std::vector<unsigned char>> pieces_; ///< one for each thread
};

} // namespace

void ToSamples(int bits, Bytes stored, const StoredScale& scale, float* samples)
{
    constexpr double kUnsignedZero = 9223372036854775808.0;
    switch (bits) {
    case 8:
        return DecodePiece<std::uint8_t>(stored, scale, samples);
    case 16:
        return DecodePiece<std::int16_t>(stored, scale, samples);
    case 32:
        return DecodePiece<std::int32_t>(stored, scale, samples);
    case 64:
        return scale.scale == 1.0 && scale.zero == kUnsignedZero && !scale.undefined
                   ? DecodeUnsigned(stored, samples)
                   : DecodePiece<std::int64_t>(stored, scale, samples);
    case -32:
        return DecodePiece<float>(stored, {scale.scale, scale.zero, {}}, samples);
    default:
        return DecodePiece<double>(stored, {scale.scale, scale.zero, {}}, samples);
    }
}

std::unique_ptr<FitsSamples> OpenPlainSamples(FitsFile& file, const FitsImage& image, const StoredScale& scale)
{
    return std::make_unique<PlainSamples>(file, image, scale);
}

} // namespace corvane::io
