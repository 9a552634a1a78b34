#pragma once

namespace corvane {

/// @name CIE L*a*b* of the pixels of a row
/// The conversions of `CColor`, with the same bits, on arrays that vectorise. Red, green and blue are in the unit range,
/// not clipped. An output may be the array of any input.
/// @{
void RgbToLabRow(int count, const double* red, const double* green, const double* blue, double* lightness, double* a,
                 double* b);
void RgbToLightnessRow(int count, const double* red, const double* green, const double* blue, double* lightness);
void LabToRgbRow(int count, const double* lightness, const double* a, const double* b, double* red, double* green,
                 double* blue);
/// @}

} // namespace corvane
