#pragma once

#include <cmath>

#include "tests/support/plain.h"

namespace corvane::test {

/// Reads all planes of an image, placed on a frame, at a pixel of the frame; true inside of the image.
inline bool SampleAt(int x, int y, const CStlImage& image, double dx, double dy, double angle, bool isColour,
                     bool isDisplay, double outside, double* v)
{
    const double s = std::sin(angle * 0.017453292522222223);
    const double k = std::cos(angle * 0.017453292522222223);
    int out = 0;
    if (isColour && isDisplay) {
        image.GetPixelRgb256f(x, y, dx, dy, s, k, 1.0, v, v + 1, v + 2, outside, &out, nullptr, nullptr);
    } else if (isColour) {
        image.GetPixelRgbRaw(x, y, dx, dy, s, k, 1.0, v, v + 1, v + 2, outside, &out, nullptr, nullptr);
    } else if (isDisplay) {
        v[0] = image.GetPixelGray256f(x, y, dx, dy, s, k, 1.0, -1, outside, 0, &out, nullptr, nullptr);
    } else {
        v[0] = image.GetPixelGrayRaw(x, y, dx, dy, s, k, 1.0, -1, outside, 0, &out, nullptr, nullptr);
    }
    return out == 0;
}

/// Checks that run(rect) gives what run(nullptr) gives inside of a rectangle, and leaves the rest as it was before.
template <class Run>
void ExpectToKeepToRects(const CStlImage& before, Run run)
{
    const Plain whole(run(nullptr));
    ForEachRect(before, [&](CRect* rect) {
        const Plain expected = Plain(before).Map([&](double v, int x, int y, int p) {
            return rect == nullptr || rect->PtInRect({x, y}) ? static_cast<double>(whole.At(x, y, p)) : v;
        });
        EXPECT_TRUE(Agree(run(rect), expected));
    });
}

} // namespace corvane::test
