#pragma once

#include <algorithm>
#include <string>

#include "bench/support/line.h"
#include "corvane/core/stl_image.h"

namespace corvane::bench {

/// Throws std::runtime_error with the text unless the condition holds.
void Require(bool holds, const std::string& what);

/// True for equal floats, neighbouring ones, and two NaN.
bool IsClose(float a, float b);

/// Throws std::runtime_error that names the position unless the values are close.
void RequireClose(float got, float expected, int x, int y, int plane = 0);

/// Calls visit(x, y) on a lattice over an area, the first and last columns and rows included.
template <class Visit>
void VisitSome(int width, int height, Visit visit)
{
    constexpr int kSteps = 53; // no divisor of a vector's or a page's length
    for (int j = 0; j <= kSteps; ++j) {
        for (int i = 0; i <= kSteps; ++i) {
            visit((width - 1) * i / kSteps, (height - 1) * j / kSteps);
        }
    }
}

/// Compares samples all over an image with expected(x, y, plane), a double that is rounded to float.
template <class Expected>
void CheckSamples(const CStlImage& image, Expected expected)
{
    for (int plane = 0; plane < image.GetPlanes(); ++plane) {
        VisitSome(image.GetWidth(), image.GetHeight(), [&](int x, int y) {
            RequireClose(image.GetPixelGrayRaw(x, y, plane), static_cast<float>(expected(x, y, plane)), x, y, plane);
        });
    }
}

/// Times what work(result, source, rect, showProgress) makes of a frame, all of it and in silence, once that agrees
/// with expected(x, y, plane).
template <class Operation, class Work, class Expected>
void TimeOperation(Run& run, CStlImage& frame, Work work, Expected expected)
{
    Operation result(frame);
    const auto again = [&] { work(result, &frame, static_cast<CRect*>(nullptr), 0); };
    again();
    CheckSamples(result, expected);
    run.Time(frame.GetImageSize(), again);
}

/// The same for work(result) that changes the size of the copy: each time it gets a new one. The bytes are those of the
/// larger image.
template <class Operation, class Work, class Expected>
void TimeChange(Run& run, CStlImage& frame, Work work, Expected expected)
{
    Operation checked(frame);
    work(checked);
    CheckSamples(checked, expected);
    run.Time(
        std::max(frame.GetImageSize(), checked.GetImageSize()), [&] { return Operation(frame); }, work);
}

} // namespace corvane::bench
