#pragma once

#include "corvane/platform/export.h"

/// A colour held in three forms at once: RGB, XYZ and CIE 1976 L*a*b*.
///
/// Red, green and blue are in the unit range, display value / 255; more than 1 is allowed and nothing is clipped. The
/// primaries are the CIE 1931 RGB ones with an equal-energy white; white, R = G = B = 1, has X = Y = Z = 5.6508 and L =
/// 100, a = b = 0. The display's gamma of 2.2 follows the mean m of the three: each is multiplied by m^1.2, so a grey v
/// becomes v^2.2 and a colour keeps its ratios. Colours whose mean is below 1e-7 keep their values, on the way back
/// too, where that is the linear mean: a display colour of a mean below 0.00066 does not come back but grows darker.
///
/// The same input gives the same bits on every machine. A NaN channel has no part in the mean's power, so the others of
/// red, green and blue keep their values; what is calculated from a NaN is NaN, except that red, green and blue made
/// from XYZ or Lab are 0 where they would be NaN or negative. Infinities give infinities or NaN.
///
/// Source: CIE 15, Colorimetry. The slopes of the linear segments near black, 903.29 and 7.78, are short forms.
class CORVANE_API CColor {
public:
    /// Every value is unset until it is set or calculated.
    CColor() = default;
    CColor(const CColor&) = default;
    CColor& operator=(const CColor&) = default;
    virtual ~CColor();

    /// @name Setting one form; nothing is converted
    /// @{
    void SetRgb(double r, double g, double b);
    void SetXyz(double x, double y, double z);
    void SetLab(double l, double a, double b);
    /// @}

    /// @name Reading
    /// @{
    double GetR() const { return r_; }
    double GetG() const { return g_; }
    double GetB() const { return b_; }
    double GetX() const { return x_; }
    double GetY() const { return y_; }
    double GetZ() const { return z_; }
    double GetL() const { return labL_; }
    double Geta() const { return labA_; }
    double Getb() const { return labB_; }
    /// @}

    /// Calculates XYZ. R, G and B then hold the linear values, not those given.
    void RgbToXyz(double r, double g, double b);
    /// Takes XYZ and calculates display red, green and blue. Those outside the gamut, not above 0, become 0.
    void XyzToRgb(double x, double y, double z);
    /// Calculates XYZ and Lab. R, G and B then hold the linear values, not those given.
    void RgbToLab(double r, double g, double b);
    /// Takes Lab and calculates XYZ and display red, green and blue. Those outside the gamut, not above 0, become 0.
    void LabToRgb(double l, double a, double b);

private:
    double r_ = 0.0;
    double g_ = 0.0;
    double b_ = 0.0;
    double x_ = 0.0;
    double y_ = 0.0;
    double z_ = 0.0;
    double labL_ = 0.0;
    double labA_ = 0.0;
    double labB_ = 0.0;
};
