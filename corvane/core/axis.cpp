// What the axes of an image stand for.

#include "corvane/core/axis_kind.h"
#include "corvane/core/axis_type.h"
#include "corvane/core/physical_constants.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/unit.h"

using namespace corvane;

namespace {

int SizeAlong(const CStlImage& image, int axis)
{
    return axis == 0 ? image.GetWidth() : axis == 1 ? image.GetHeight() : axis == 2 ? image.GetPlanes() : 0;
}

/// Whether the axis is the one along which a spectrum was spread out (DISPAXIS).
bool IsDispersionAxis(const CImage& image, int axis)
{
    int dispersion = 0;
    return image.GetDispAxis(&dispersion) != 0 && dispersion == axis + 1;
}

/// Physical units per sample along an axis; false when they depend on other axes too.
bool FindStep(const CImage& image, int axis, double* step)
{
    tagMATRIX2_2 m{};
    const int kind = axis < 2 ? image.GetLTMtx(&m) : static_cast<int>(kNoTransform);
    image.GetCDelt(axis, step);
    if (kind == kNoTransform) {
        return true;
    }
    const double own = axis == 0 ? m.m11 : m.m22;
    *step = kind == kCdMatrix ? own : own * *step;
    return (axis == 0 ? m.m12 : m.m21) == 0.0;
}

bool IsSpectralKind(int kind)
{
    return kind >= kWavelengthAxis && kind <= kVelocityAxis;
}

} // namespace

int CStlImage::GetAxisInfo(int axis, CString* name, CString* unit, int* kind) const
{
    CString type;
    CString stated;
    const int isPresent = GetCType(axis, &type);
    const AxisType known = ParseAxisType(type);
    const bool hasUnit = GetCUnit(axis, &stated) != 0 && !stated.IsEmpty();
    const CString counting = hasUnit ? stated : CString(known.unit);
    const bool isSpread = known.kind == kUnknownAxis && IsDispersionAxis(*this, axis);
    if (name != nullptr) {
        *name = known.name.c_str();
    }
    if (unit != nullptr) {
        *unit = counting;
    }
    if (kind != nullptr) {
        *kind = isSpread ? SpectralKindOfUnit(SplitPrefix(counting.GetString()).base) : known.kind;
    }
    return isPresent;
}

int CStlImage::GetPhysicalValue(int axis, double pixel, double* value) const
{
    CString type;
    GetCType(axis, &type);
    double step = 0.0;
    double reference = 0.0;
    double referencePixel = 0.0;
    *value = 0.0;
    if (GetCRVal(axis, &reference) == 0 || !FindStep(*this, axis, &step) || !ParseAxisType(type).isLinear) {
        return 0;
    }
    GetCRPix(axis, &referencePixel);
    *value = reference + (pixel + 1.0 - referencePixel) * step;
    return 1;
}

double CStlImage::AnalyzeUnitPrefix(const char* unit, CString* base)
{
    const SplitUnit split = SplitPrefix(unit == nullptr ? "" : unit);
    if (base != nullptr) {
        *base = split.base.c_str();
    }
    return split.factor;
}

int CStlImage::IsSpectrum(int* axis) const
{
    for (int i = 0; i < 3; ++i) {
        int kind = kUnknownAxis;
        GetAxisInfo(i, nullptr, nullptr, &kind);
        if (IsSpectralKind(kind) && SizeAlong(*this, i) > 1) {
            if (axis != nullptr) {
                *axis = i;
            }
            return 1;
        }
    }
    return 0;
}

int CStlImage::IsSpectrumFalseColorSupported() const
{
    int axis = 0;
    if (IsSpectrum(&axis) == 0) {
        return 0;
    }
    CString unit;
    int kind = kUnknownAxis;
    GetAxisInfo(axis, nullptr, &unit, &kind);
    return kind != kVelocityAxis && SpectralKindOfUnit(SplitPrefix(unit.GetString()).base) == kind ? 1 : 0;
}

double CStlImage::CalcAngstrom2m(double angstrom)
{
    return angstrom * 1e-10;
}

double CStlImage::CalcEV2J(double electronVolts)
{
    return electronVolts * kElementaryCharge;
}

double CStlImage::CalcErg2J(double erg)
{
    return erg * 1e-7;
}

double CStlImage::CalcFreq2WL(double hertz)
{
    return kSpeedOfLight / hertz;
}

double CStlImage::CalcEner2WL(double joule)
{
    return kPlanck * kSpeedOfLight / joule;
}

double CStlImage::CalcWavn2WL(double perMetre)
{
    return 1.0 / perMetre;
}
