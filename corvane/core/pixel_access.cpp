// Reading single samples: by pointer, by whole coordinates, between samples, and through an alignment.

#include "corvane/core/alignment.h"
#include "corvane/core/display_scale.h"
#include "corvane/core/interpolation.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/truncate.h"

using namespace corvane;

namespace {

int Clamp(int v, int size)
{
    return v >= size ? size - 1 : (v < 0 ? 0 : v);
}

/// Clamps a position so that its whole part is a sample; NaN becomes 0.
double Clamp(double v, int size)
{
    return v >= size ? size - 1.0 : (v >= 0.0 ? v : 0.0);
}

unsigned char LowByte(double v)
{
    return static_cast<unsigned char>(static_cast<unsigned>(Truncate(v)));
}

/// Brightness as the pointer forms add it: green, blue, red.
double BrightnessGreenFirst(double r, double g, double b)
{
    return 0.587 * g + 0.114 * b + 0.299 * r;
}

void Store(double* place, double v)
{
    if (place != nullptr) {
        *place = v;
    }
}

/// The shared frame of the aligned readers: finds the position, reports it, and tells whether it is inside.
bool FindPosition(const CStlImage& image, const Alignment& alignment, int x, int y, int* outOfImage, double* sx,
                  double* sy, Position& position)
{
    position = alignment.Map(x, y);
    Store(sx, position.x);
    Store(sy, position.y);
    const bool inside =
        position.x >= 0.0 && position.x < image.GetWidth() && position.y >= 0.0 && position.y < image.GetHeight();
    if (outOfImage != nullptr) {
        *outOfImage = inside ? 0 : 1;
    }
    return inside;
}

/// The raw sample of a plane at a position inside, interpolated or the nearest one.
double ReadAt(const CStlImage& image, const Position& position, int plane, int nearest)
{
    return nearest != 0 ? image.GetPixelGrayRaw(Truncate(position.x + 0.5), Truncate(position.y + 0.5), plane)
                        : image.GetPixelGrayRaw(position.x, position.y, plane);
}

/// The value that an aligned reader gives for `plane`, where `valueOf(plane)` reads one plane; -1 is the brightness.
template <class ValueOf>
double PlaneOrBrightness(const CStlImage& image, int plane, ValueOf valueOf)
{
    if (image.GetDimension() < 3) {
        return valueOf(0);
    }
    return plane == -1 ? BrightnessOf(valueOf(0), valueOf(1), valueOf(2)) : valueOf(plane);
}

/// Gives the three planes' values, or one plane's three times.
template <class ValueOf>
void DeliverRgb(const CStlImage& image, double* r, double* g, double* b, ValueOf valueOf)
{
    const bool colour = image.GetDimension() >= 3;
    const double first = valueOf(0);
    Store(r, first);
    Store(g, colour ? valueOf(1) : first);
    Store(b, colour ? valueOf(2) : first);
}

} // namespace

float* CStlImage::GetImageAdr(int x, int y, int plane, int flags, void** lockHandle) const
{
    if (GetStore() == nullptr || GetStore()->GetBytes() == 0) {
        static thread_local float nothing;
        nothing = 0.0F;
        return &nothing;
    }
    return reinterpret_cast<float*>(
        CImage::GetImageAdr(Clamp(x, GetWidth()), Clamp(y, GetHeight()), plane, flags, lockHandle));
}

float CStlImage::GetPixelGrayRaw(const float* p, int plane, int step) const
{
    const double min = GetLevelMin(plane);
    const double max = GetLevelMax(plane);
    if (*p <= min) {
        return static_cast<float>(min);
    }
    if (*p >= max) {
        return static_cast<float>(max);
    }
    const int steps = Truncate((*p - min) / step);
    return static_cast<float>(min + Truncate(static_cast<double>(steps) * step));
}

unsigned char CStlImage::GetPixelGray256(const float* p, int plane) const
{
    if (*p <= GetLevelMin(plane)) {
        return 0;
    }
    return *p < GetLevelMax(plane) ? LowByte(To256(static_cast<double>(*p), plane)) : 255;
}

unsigned char CStlImage::GetPixelGray256(const float* p, float min, float max, float factor) const
{
    if (*p <= min) {
        return 0;
    }
    return *p < max ? LowByte((*p - min) * factor) : 255;
}

double CStlImage::GetPixelBright256f(const float* r, const float* g, const float* b) const
{
    const double red = To256(static_cast<double>(*r), 0);
    if (GetDimension() < 3) {
        return red;
    }
    return BrightnessGreenFirst(red, To256(static_cast<double>(*g), 1), To256(static_cast<double>(*b), 2));
}

double CStlImage::GetPixelBrightRaw(const float* r, const float* g, const float* b) const
{
    return ToRaw(GetPixelBright256f(r, g, b), 0);
}

double CStlImage::GetPixelBrightRaw(int x, int y) const
{
    return BrightnessOf(*Read(x, y, 0), *Read(x, y, 1), *Read(x, y, 2));
}

double CStlImage::GetPixelBright256f(int x, int y) const
{
    const float* const first = Read(x, y, 0);
    return GetDimension() < 3 ? To256(static_cast<double>(*first), 0)
                              : GetPixelBright256f(first, Read(x, y, 1), Read(x, y, 2));
}

double CStlImage::GetPixelBright(int x, int y) const
{
    return BrightnessToRaw(GetPixelBright256f(x, y));
}

double CStlImage::GetPixelBrightRaw(double x, double y) const
{
    return BrightnessOf(GetPixelGrayRaw(x, y, 0), GetPixelGrayRaw(x, y, 1), GetPixelGrayRaw(x, y, 2));
}

double CStlImage::GetPixelBright256f(double x, double y) const
{
    const double red = GetPixelGray256f(x, y, 0);
    return GetDimension() < 3 ? red : BrightnessGreenFirst(red, GetPixelGray256f(x, y, 1), GetPixelGray256f(x, y, 2));
}

double CStlImage::GetPixelBright(double x, double y) const
{
    return BrightnessToRaw(GetPixelBright256f(x, y));
}

double CStlImage::BrightnessToRaw(double bright) const
{
    // 1 / 255 in single precision, as this reader has always had it.
    constexpr double kSinglePer255 = 0.003921569F;
    const double low = BrightnessGreenFirst(GetLevelMin(0), GetLevelMin(1), GetLevelMin(2));
    const double high = BrightnessGreenFirst(GetLevelMax(0), GetLevelMax(1), GetLevelMax(2));
    return bright * (high - low) * kSinglePer255 + low;
}

double CStlImage::GetPixelGrayRaw(double x, double y, int plane) const
{
    x = Clamp(x, GetWidth());
    y = Clamp(y, GetHeight());
    const int ix = Truncate(x);
    const int iy = Truncate(y);
    const float* const above = Read(ix, iy, plane);
    if (x == ix && y == iy) {
        return *above;
    }
    const int next = Clamp(iy + 1, GetHeight());
    const float* const below = Read(ix, next, plane);
    return Bilinear(*above, NextInStorage(above, ix, iy, plane), *below, NextInStorage(below, ix, next, plane), x - ix,
                    y - iy);
}

double CStlImage::NextInStorage(const float* sample, int x, int y, int plane) const
{
    return x + 1 < GetWidth() ? sample[1] : *reinterpret_cast<const float*>(CImage::GetImageAdr(x + 1, y, plane, 1));
}

double CStlImage::GetPixelGray(double x, double y, int plane) const
{
    return GetPixelGrayRaw(x, y, plane) - GetLevelMin(plane);
}

double CStlImage::GetPixelGray256f(double x, double y, int plane) const
{
    return To256(GetPixelGrayRaw(x, y, plane), plane);
}

unsigned char CStlImage::GetPixelGray256(double x, double y, int plane) const
{
    return LowByte(GetPixelGray256f(x, y, plane));
}

double CStlImage::GetPixelGray256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale,
                                   int plane, double outside, int nearest, int* outOfImage, double* sx,
                                   double* sy) const
{
    Position at{};
    if (!FindPosition(*this, {dx, dy, sinA, cosA, scale, stdCtr_}, x, y, outOfImage, sx, sy, at)) {
        return outside;
    }
    return PlaneOrBrightness(*this, plane, [&](int p) { return To256(ReadAt(*this, at, p, nearest), p); });
}

double CStlImage::GetPixelGray256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                                   double outside, int nearest, int* outOfImage, double* sx, double* sy) const
{
    return GetPixelGray256f(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, plane, outside,
                            nearest, outOfImage, sx, sy);
}

double CStlImage::GetPixelGrayRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, int plane,
                                  double outside, int nearest, int* outOfImage, double* sx, double* sy) const
{
    Position at{};
    if (!FindPosition(*this, {dx, dy, sinA, cosA, scale, stdCtr_}, x, y, outOfImage, sx, sy, at)) {
        return outside;
    }
    return PlaneOrBrightness(*this, plane, [&](int p) { return ReadAt(*this, at, p, nearest); });
}

double CStlImage::GetPixelGrayRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, int plane,
                                  double outside, int nearest, int* outOfImage, double* sx, double* sy) const
{
    return GetPixelGrayRaw(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, plane, outside,
                           nearest, outOfImage, sx, sy);
}

void CStlImage::GetPixelRgb256f(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r,
                                double* g, double* b, double outside, int* outOfImage, double* sx, double* sy) const
{
    Position at{};
    const bool inside = FindPosition(*this, {dx, dy, sinA, cosA, scale, stdCtr_}, x, y, outOfImage, sx, sy, at);
    DeliverRgb(*this, r, g, b, [&](int p) { return inside ? GetPixelGray256f(at.x, at.y, p) : outside; });
}

void CStlImage::GetPixelRgb256f(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r,
                                double* g, double* b, double outside, int* outOfImage, double* sx, double* sy) const
{
    GetPixelRgb256f(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, r, g, b, outside,
                    outOfImage, sx, sy);
}

void CStlImage::GetPixelRgbRaw(int x, int y, double dx, double dy, double sinA, double cosA, double scale, double* r,
                               double* g, double* b, double outside, int* outOfImage, double* sx, double* sy) const
{
    Position at{};
    const bool inside = FindPosition(*this, {dx, dy, sinA, cosA, scale, stdCtr_}, x, y, outOfImage, sx, sy, at);
    DeliverRgb(*this, r, g, b, [&](int p) { return inside ? GetPixelGrayRaw(at.x, at.y, p) : outside; });
}

void CStlImage::GetPixelRgbRaw(int x, int y, int dx, int dy, double sinA, double cosA, double scale, double* r,
                               double* g, double* b, double outside, int* outOfImage, double* sx, double* sy) const
{
    GetPixelRgbRaw(x, y, static_cast<double>(dx), static_cast<double>(dy), sinA, cosA, scale, r, g, b, outside,
                   outOfImage, sx, sy);
}
