#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/support/bench.h"
#include "corvane/core/stl_image.h"
#include "corvane/platform/global_memory.h"

namespace corvane::bench {
namespace {

/// A locked bitmap that reads as red, green and blue by image coordinates.
class Bitmap {
public:
    explicit Bitmap(HDIB dib) : dib_(dib)
    {
        Require(dib_ != nullptr, "no bitmap");
        bytes_ = static_cast<const unsigned char*>(GlobalLock(dib_));
        std::memcpy(&header_, bytes_, sizeof header_);
    }
    ~Bitmap()
    {
        GlobalUnlock(dib_);
        GlobalFree(dib_);
    }
    Bitmap(const Bitmap&) = delete;
    Bitmap& operator=(const Bitmap&) = delete;

    int Channel(int x, int y, int channel) const
    {
        const int bytesPixel = header_.biBitCount / 8;
        const unsigned char* const table = bytes_ + header_.biSize;
        const std::size_t stride = (static_cast<std::size_t>(header_.biWidth) * bytesPixel + 3) / 4 * 4;
        const unsigned char* const row =
            table + (bytesPixel == 1 ? 1024 : 0) + static_cast<std::size_t>(header_.biHeight - 1 - y) * stride;
        const int blueFirst = 2 - channel;
        return bytesPixel == 1 ? table[row[x] * 4 + blueFirst] : row[x * 3 + blueFirst];
    }

private:
    HDIB dib_;
    const unsigned char* bytes_ = nullptr;
    BITMAPINFOHEADER header_{};
};

/// Checks how far channels are from the samples' bytes in the mean; 0 asks for every one to be equal.
void CheckBitmap(const CStlImage& image, const Bitmap& bitmap, double tolerance)
{
    double sum = 0.0;
    double count = 0.0;
    VisitSome(image.GetWidth(), image.GetHeight(), [&](int x, int y) {
        for (int channel = 0; channel < 3; ++channel) {
            const int expected = image.GetPixelGray256(x, y, image.IsColor() ? channel : 0);
            sum += std::abs(bitmap.Channel(x, y, channel) - expected);
            count += 1.0;
        }
    });
    Require(sum / count <= tolerance, "colours are off by " + std::to_string(sum / count));
}

void TimeDib(Run& run, const CStlImage& image, int bitCount, double tolerance)
{
    CheckBitmap(image, Bitmap(image.GetDib(bitCount)), tolerance);
    run.Time(image.GetImageSize(), [&] { GlobalFree(image.GetDib(bitCount)); });
}

const Line mono8("core/GetDib8/mono", {}, [](Run& run) { TimeDib(run, LargeFrame(), 8, 0.0); });
const Line mono24("core/GetDib24/mono", {}, [](Run& run) { TimeDib(run, LargeFrame(), 24, 0.0); });

const Line colour8("core/GetDib8/colour", {}, [](Run& run) {
    constexpr double kHalfBox = 12.0; // what a cut into 256 colours leaves of noise in three channels
    TimeDib(run, Sky(Size(4096, 67), Size(4096, 45), 3, 2), 8, kHalfBox);
});

const Line colour24("core/GetDib24/colour", {},
                    [](Run& run) { TimeDib(run, Sky(Size(4096, 67), Size(4096, 45), 3, 2), 24, 0.0); });

} // namespace
} // namespace corvane::bench
