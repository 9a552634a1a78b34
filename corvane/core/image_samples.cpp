// The members of the base record that look at stored samples: physical values, extremes, conversion.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "corvane/core/blank.h"
#include "corvane/core/fold.h"
#include "corvane/core/image.h"
#include "corvane/core/noted_rows.h"
#include "corvane/core/sample_type.h"
#include "corvane/platform/memory_exception.h"

namespace {

/// Calls `action` with a value of the type in which samples are stored. 8-bit samples are always unsigned.
template <class Action>
void WithTypeOf(const CImage& image, Action action)
{
    corvane::WithSampleType(image.GetBitsPixel(), image.IsSigned() != 0 && image.GetBitsPixel() != 8, action);
}

/// How a stored sample becomes another one.
struct Conversion {
    double scale;
    double zero;
    bool saturate;
    double undefined; ///< what NaN becomes in an integer
};

template <class T>
double Load(const unsigned char* ptr)
{
    T stored;
    std::memcpy(&stored, ptr, sizeof stored);
    return static_cast<double>(stored);
}

template <class T>
T ConvertSample(double v, const Conversion& how)
{
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(v);
    } else {
        if (std::isnan(v)) {
            v = how.undefined;
        }
        constexpr double kLow = std::numeric_limits<T>::min();
        constexpr double kHigh = std::numeric_limits<T>::max();
        if (how.saturate) {
            return static_cast<T>(std::clamp(std::nearbyint(v), kLow, kHigh));
        }
        constexpr double kBeyondInt64 = 9.2e18;
        return static_cast<T>(static_cast<std::int64_t>(std::clamp(v, -kBeyondInt64, kBeyondInt64)));
    }
}

template <class From, class To>
void ConvertRow(const unsigned char* from, unsigned char* to, int count, const Conversion& how)
{
    for (int x = 0; x < count; ++x) {
        const To converted = ConvertSample<To>(Load<From>(from + x * sizeof(From)) * how.scale + how.zero, how);
        std::memcpy(to + x * sizeof(To), &converted, sizeof converted);
    }
}

using RowConverter = void (*)(const unsigned char*, unsigned char*, int, const Conversion&);

RowConverter FindConverter(const CImage& from, const CImage& to)
{
    RowConverter converter = nullptr; // for formats that do not exist
    WithTypeOf(from, [&](auto source) {
        WithTypeOf(to, [&](auto target) { converter = ConvertRow<decltype(source), decltype(target)>; });
    });
    return converter;
}

} // namespace

double CImage::GetPixel(const unsigned char* ptr) const
{
    double value = 0.0;
    WithTypeOf(*this, [&](auto type) { value = Load<decltype(type)>(ptr) * record_.bscale + record_.bzero; });
    return value;
}

void CImage::GetMinMax(int plane, double* min, double* max) const
{
    const corvane::BlankTest isBlank(*this);
    const bool hasSamples = store_ != nullptr && plane >= 0 && plane < GetPlanes();
    const CRect area(0, 0, GetWidth(), hasSamples ? GetHeight() : 0);
    const corvane::Extremes extremes = corvane::ExtremesOf(area, [&](corvane::Extremes& part, int y) {
        const unsigned char* row = GetImageAdr(0, y, plane, 1);
        if (record_.bitsPixel == -32) {
            part.Add(reinterpret_cast<const float*>(row), GetWidth(), isBlank);
        } else {
            part.Add(
                GetWidth(), [&](int x) { return GetPixel(row + x * GetBytesPixel()); }, isBlank);
        }
    });
    *min = extremes.Empty() ? 0.0 : extremes.Min();
    *max = extremes.Empty() ? 0.0 : extremes.Max();
}

int CImage::ChangeBits(int bits, int physical, int saturate, HWND window, const char* text)
{
    return corvane::OrNothing([&] { return Convert(bits, physical, saturate, window, text); });
}

int CImage::Convert(int bits, int physical, int saturate, HWND window, const char* text)
{
    CImage changed;
    changed.record_ = record_;
    changed.record_.bitsPixel = bits;
    changed.record_.isSigned = bits == 8 ? 0 : record_.isSigned;
    const RowConverter convert = FindConverter(*this, changed);
    if (convert == nullptr || store_ == nullptr) {
        return 0;
    }
    changed.store_ = std::make_shared<CVmImage>(GetWidth(), GetHeight(), GetPlanes(), changed.GetBytesPixel(),
                                                CVmImage::Contents::kUndefined);
    Conversion how{1.0, 0.0, saturate != 0, IsBlankUsed() ? static_cast<double>(GetBlank()) : 0.0};
    if (physical != 0) {
        how.scale = std::exchange(changed.record_.bscale, 1.0);
        how.zero = std::exchange(changed.record_.bzero, 0.0);
    }
    corvane::ForNotedRows(changed, *this, GetWidth(), GetHeight(), window, text, [&](int y, int plane) {
        convert(GetImageAdr(0, y, plane, 1), changed.GetImageAdr(0, y, plane), GetWidth(), how);
    });
    Swap(&changed);
    return 1;
}
