#pragma once

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "tests/support/plain.h"

namespace corvane::test {

/// Gives an image a reference point, the reference pixel (10, 20) and the matrix 1, 2, 3, 4.
inline void SetReference(CStlImage& image)
{
    image.SetCRPix(0, 10.0);
    image.SetCRPix(1, 20.0);
    tagMATRIX2_2 matrix{1.0, 2.0, 3.0, 4.0};
    image.SetLTMtx(&matrix, kCdMatrix);
    image.SetStdPt(0, CfPoint(3, 4));
}

/// Calls check(source, canvas): awkward images that are both, and sources smaller and larger than the canvas.
template <class Check>
void ForEachSource(Check check)
{
    ForEachImage([&](CStlImage& source) {
        SetReference(source);
        check(source, source);
    });
    CStlImage images[] = {RandomImage({3, 2}, 1, 1), RandomImage({7, 5}, 3, 2)};
    for (const int i : {0, 1}) {
        SetReference(images[1 - i]);
        check(images[i], images[1 - i]);
    }
}

/// Compares the size, and every sample with value(x, y, plane) rounded to float.
template <class Value>
testing::AssertionResult Holds(const CStlImage& image, long long width, long long height, Value value)
{
    Plain expected(image);
    expected.width = static_cast<int>(width);
    expected.height = static_cast<int>(height);
    expected.samples.resize(static_cast<std::size_t>(width * height * expected.planes));
    return Agree(image, expected.Map([&](double, int x, int y, int p) { return value(x, y, p); }));
}

/// Compares the reference pixel and, as far as they are given, the elements of the matrix.
inline void ExpectCoordinates(const CStlImage& image, const std::vector<double>& expected)
{
    const auto& [axes, matrix, kind, dispersion] = image.GetCoordinates();
    const double coordinates[] = {
        *axes[0].referencePixel, *axes[1].referencePixel, matrix.m11, matrix.m12, matrix.m21, matrix.m22};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(coordinates[i], expected[i], 1e-6) << "value " << i;
    }
}

} // namespace corvane::test
