// Images of lightness and of the colour axes a and b: making them and sampling them.

#include <algorithm>
#include <memory>

#include "corvane/core/display_scale.h"
#include "corvane/core/lab.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/walk.h"
#include "corvane/platform/memory_exception.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

constexpr double kMost = 5000.0; ///< display values far above white keep their lightness

/// A stretch of a row in three channels.
struct Stretch {
    static constexpr int kLength = 256;

    double channels[3][kLength];
};

/// The colours that an image displays, in the unit range, display values clamped to 0..most. NaN stays NaN.
class DisplayColours {
public:
    DisplayColours(const CStlImage& image, double most) : image_(image), most_(most) {}

    void Read(int x, int y, int count, Stretch& stretch) const
    {
        auto& channels = stretch.channels;
        if (image_.GetPlanes() >= 3) {
            for (int p = 0; p < 3; ++p) {
                const double min = image_.GetLevelMin(p);
                const double factor = 255.0 / image_.GetLevelRange(p);
                ReadPlane(x, y, p, count, channels[p], [=](double v) { return (v - min) * factor; });
            }
            return;
        }
        ReadPlane(x, y, 0, count, channels[0], [scale = DisplayScale(image_, 0)](double v) { return scale.To256(v); });
        std::copy_n(channels[0], count, channels[1]);
        std::copy_n(channels[0], count, channels[2]);
    }

private:
    template <class ToDisplay>
    void ReadPlane(int x, int y, int plane, int count, double* out, ToDisplay toDisplay) const
    {
        const float* const in = image_.GetImageAdr(x, y, plane, 1);
        for (int i = 0; i < count; ++i) {
            const double v = toDisplay(in[i]);
            const double notAbove = v >= most_ ? most_ : v;
            out[i] = (v <= 0.0 ? 0.0 : notAbove) * kPer255;
        }
    }

    const CStlImage& image_;
    double most_;
};

/// Which of L, a and b become planes of an image: `count` of them from `first` on.
struct Selection {
    int first;
    int count;
};

void Convert(int count, const Selection& selection, Stretch& stretch)
{
    auto& [first, second, third] = stretch.channels;
    if (selection.first + selection.count == 1) {
        RgbToLightnessRow(count, first, second, third, first);
    } else {
        RgbToLabRow(count, first, second, third, first, second, third);
    }
}

void ConvertRow(const DisplayColours& colours, int y, const Selection& selection, CStlImage& made)
{
    for (int x = 0; x < made.GetWidth(); x += Stretch::kLength) {
        const int count = std::min(Stretch::kLength, made.GetWidth() - x);
        Stretch stretch;
        colours.Read(x, y, count, stretch);
        Convert(count, selection, stretch);
        for (int p = 0; p < selection.count; ++p) {
            const double* const in = stretch.channels[selection.first + p];
            std::transform(in, in + count, made.GetImageAdr(x, y, p), [](double v) { return static_cast<float>(v); });
        }
    }
}

std::unique_ptr<CStlImage> MakePlanes(const CStlImage& source, int textId, double most, Selection selection,
                                      const Run& run)
{
    auto made = std::make_unique<CStlImage>(-32, source.GetWidth(), source.GetHeight(), selection.count, 1.0, 0.0,
                                            0); // with undefined samples
    const DisplayColours colours(source, most);
    made->SetStdCtr(source.GetStdCtr());
    WalkLines(*made, {&source}, WorkingArea(source, nullptr), run, textId,
              [&](int y) { ConvertRow(colours, y, selection, *made); });
    return made;
}

} // namespace

double CStlImage::CalcBrightL(double r, double g, double b)
{
    const auto unit = [](double v) { return std::clamp(v, -kMost, kMost) * kPer255; };
    return 255.0 * Linearise({unit(r), unit(g), unit(b)}).r;
}

CStlImage* CStlImage::MakeLPlane()
{
    return OrNothing([&] { return MakeLPlane(WindowRun(*this, 1)); }).release();
}

CStlImage* CStlImage::MakeAbPlane(int clipTo255)
{
    return OrNothing([&] { return MakeAbPlane(clipTo255, WindowRun(*this, 1)); }).release();
}

CStlImage* CStlImage::MakeLabPlane()
{
    return OrNothing([&] { return MakeLabPlane(WindowRun(*this, 1)); }).release();
}

std::unique_ptr<CStlImage> CStlImage::MakeLPlane(const Run& run) const
{
    auto made = MakePlanes(*this, IDS_MAKE_L, kMost, {0, 1}, run);
    made->SetLevel(0, GetLevelMin(0), GetLevelMax(0));
    return made;
}

std::unique_ptr<CStlImage> CStlImage::MakeAbPlane(int clipTo255, const Run& run) const
{
    return MakePlanes(*this, IDS_MAKE_AB, clipTo255 != 0 && GetPlanes() >= 3 ? 255.0 : kMost, {1, 2}, run);
}

std::unique_ptr<CStlImage> CStlImage::MakeLabPlane(const Run& run) const
{
    return MakePlanes(*this, IDS_MAKE_LAB, kMost, {0, 3}, run);
}

float CStlImage::GetPixelL(int x, int y, double dx, double dy, double sinA, double cosA, double scale,
                           double outside) const
{
    return static_cast<float>(
        GetPixelGrayRaw(x, y, dx, dy, sinA, cosA, scale, 0, outside, 0, nullptr, nullptr, nullptr));
}

void CStlImage::GetPixelAb(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* a,
                           double* b, double outside) const
{
    const auto read = [&](int plane) {
        return GetPixelGrayRaw(x, y, dx, dy, sinA, cosA, scale, plane, outside, 0, nullptr, nullptr, nullptr);
    };
    if (a != nullptr) {
        *a = read(0);
    }
    if (b != nullptr) {
        *b = read(1);
    }
}
