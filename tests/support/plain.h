#pragma once

#include <vector>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"
#include "tests/support/images.h"

namespace corvane::test {

/// A plain copy of an image for the slow, obvious forms that the library's members are compared with.
struct Plain {
    explicit Plain(const CStlImage& image);

    bool Colour() const { return planes > 1; }
    float& At(int x, int y, int p) { return samples[Index(x, y, p)]; } ///< x, y and p clamped into the image
    float At(int x, int y, int p) const { return samples[Index(x, y, p)]; }
    double To256(double v, int p) const { return (v - min[p]) / range[p] * 255.0; }
    double ToRaw(double d, int p) const { return range[p] * d * 0.00392156862745098 + min[p]; }
    /// The byte that the screen shows.
    unsigned char Byte(int x, int y, int p) const;
    bool IsBlank(double v) const;
    /// The mean of a plane, in each row up to its first blank.
    double Average(int p) const;
    /// The brightness of what of(p) gives for each plane; one plane stands for itself.
    template <class Of>
    double Bright(Of of) const
    {
        return Colour() ? 0.299 * of(0) + 0.587 * of(1) + 0.114 * of(2) : of(0);
    }

    /// Bilinear between samples; the right-hand neighbour is the next sample in storage.
    double Between(double x, double y, int p) const;
    /// Calls visit(x, y, p) for every sample, in the order of storage.
    template <class Visit>
    void ForEach(Visit visit) const
    {
        for (int i = 0; i < width * height * planes; ++i) {
            visit(i % width, i / width % height, i / width / height);
        }
    }

    /// A copy in which every sample is value(v, x, y, p) of the present one.
    template <class Value>
    Plain Map(Value value) const
    {
        Plain mapped(*this);
        ForEach([&](int x, int y, int p) {
            mapped.At(x, y, p) = static_cast<float>(value(static_cast<double>(At(x, y, p)), x, y, p));
        });
        return mapped;
    }

    int width;
    int height;
    int planes;
    double min[3];
    double max[3];
    double range[3];
    bool blankUsed;
    int blank;
    std::vector<float> samples;

private:
    std::size_t Index(int x, int y, int p) const;
    double Next(int x, int y, int p) const; ///< the sample that follows in storage; of the last one, itself
};

/// Equal, or both NaN, or apart by no more than a part of b.
bool Same(double a, double b, double part = 0.0);
/// Both NaN, at most `ulps` floats apart, or closer than `slack`.
bool Near(float a, float b, int ulps, double slack = 0.0);
/// Compares all samples of an image with the expected ones.
testing::AssertionResult Agree(const CStlImage& image, const Plain& expected, int ulps = 0, double slack = 0.0);

} // namespace corvane::test
