#include "corvane/core/color.h"

#include "corvane/core/lab.h"

using namespace corvane;

CColor::~CColor() = default;

void CColor::SetRgb(double r, double g, double b)
{
    r_ = r;
    g_ = g;
    b_ = b;
}

void CColor::SetXyz(double x, double y, double z)
{
    x_ = x;
    y_ = y;
    z_ = z;
}

void CColor::SetLab(double l, double a, double b)
{
    labL_ = l;
    labA_ = a;
    labB_ = b;
}

void CColor::RgbToXyz(double r, double g, double b)
{
    const Rgb linear = Linearise({r, g, b});
    const Xyz xyz = ToXyz(linear);
    SetRgb(linear.r, linear.g, linear.b);
    SetXyz(xyz.x, xyz.y, xyz.z);
}

void CColor::XyzToRgb(double x, double y, double z)
{
    const Rgb rgb = ToRgb({x, y, z});
    SetXyz(x, y, z);
    SetRgb(rgb.r, rgb.g, rgb.b);
}

void CColor::RgbToLab(double r, double g, double b)
{
    RgbToXyz(r, g, b);
    const Lab lab = ToLab({x_, y_, z_});
    SetLab(lab.l, lab.a, lab.b);
}

void CColor::LabToRgb(double l, double a, double b)
{
    const Xyz xyz = ToXyz(Lab{l, a, b});
    SetLab(l, a, b);
    XyzToRgb(xyz.x, xyz.y, xyz.z);
}
