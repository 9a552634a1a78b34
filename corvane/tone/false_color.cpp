#include "corvane/tone/false_color.h"

#include <algorithm>

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"
#include "corvane/tone/colour_map.h"

using namespace corvane;

namespace {

/// Finds the place of samples on the scale of a colour map.
class Intensity {
public:
    Intensity(const CStlImage& source, double low, double high)
        : scale_(source, 0), greenMin_(source.GetLevelMin(1)), blueMin_(source.GetLevelMin(2)),
          low_(static_cast<float>(scale_.To256(low))), span_(static_cast<float>(scale_.To256(high) - scale_.To256(low)))
    {}

    void OfMono(const float* samples, float* values, int count) const
    {
        for (int x = 0; x < count; ++x) {
            values[x] = static_cast<float>(Place(static_cast<float>(scale_.To256(samples[x]))));
        }
    }

    void OfColour(const float* red, const float* green, const float* blue, float* values, int count) const
    {
        for (int x = 0; x < count; ++x) {
            const double r = Place(red[x] - scale_.min);
            const double g = Place(green[x] - greenMin_);
            const double b = Place(blue[x] - blueMin_);
            values[x] = static_cast<float>(0.587 * g + 0.299 * r + 0.114 * b);
        }
    }

private:
    double Place(double shown) const { return (shown - low_) / span_ * 255.0; }

    DisplayScale scale_;
    double greenMin_;
    double blueMin_;
    double low_;
    double span_;
};

/// The intensities of `count` pixels from (x, y) on.
void ReadIntensities(const CStlImage& source, const Intensity& intensity, int x, int y, float* values, int count)
{
    const auto row = [&](int plane) { return source.GetImageAdr(x, y, PlaneOf(source, plane), 1); };
    if (source.IsColor()) {
        intensity.OfColour(row(0), row(1), row(2), values, count);
    } else {
        intensity.OfMono(row(0), values, count);
    }
}

/// Writes colours through the levels of the image.
void WriteColours(CStlImage& image, const ColourMap::Block& colours, int x, int y, int count)
{
    for (int plane = 0; plane < 3; ++plane) {
        const DisplayScale scale(image, plane);
        const auto& component = colours[static_cast<std::size_t>(plane)];
        float* const row = image.GetImageAdr(x, y, plane);
        for (int i = 0; i < count; ++i) {
            row[i] = static_cast<float>(scale.ToRaw(component[static_cast<std::size_t>(i)]));
        }
    }
}

} // namespace

void CImgFalseColor::Do(double low, double high, int map, int cycles, CStlImage* source, CRect* rect, int showProgress)
{
    Do(low, high, map, cycles, *source, rect, WindowRun(*this, showProgress));
}

void CImgFalseColor::Do(double low, double high, int map, int cycles, const CStlImage& source, const CRect* rect,
                        const Run& run)
{
    if (GetPlanes() < 3) {
        return;
    }
    const CRect area = WorkingArea(*this, rect);
    const int right = source.GetPixelCount() > 0 ? std::min<int>(area.right, source.GetWidth()) : 0;
    const Intensity intensity(source, low, high);
    const ColourMap& colourMap = ColourMap::Find(map);
    WalkLines(*this, {&source}, area, run, IDS_FALSE_COLOR, [&](int y) {
        float values[ColourMap::kBlock];
        ColourMap::Block colours;
        for (int x = static_cast<int>(area.left); x < right; x += ColourMap::kBlock) {
            const int count = std::min(right - x, ColourMap::kBlock);
            ReadIntensities(source, intensity, x, y, values, count);
            colourMap.Colour(values, count, cycles, colours);
            WriteColours(*this, colours, x, y, count);
        }
    });
}

void CImgFalseColor::GetFalseColor(float value, int map, int cycles, float* red, float* green, float* blue) const
{
    ColourMap::Block colour;
    ColourMap::Find(map).Colour(&value, 1, cycles, colour);
    *red = colour[0][0];
    *green = colour[1][0];
    *blue = colour[2][0];
}
