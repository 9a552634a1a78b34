#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include <gtest/gtest.h>

#include "corvane/core/stl_image.h"

namespace corvane::test {

/// Numbers that look random and are the same on every machine.
class Random {
public:
    explicit Random(std::uint64_t seed) : state_(seed) {}
    std::uint64_t Next();
    double Between(double low, double high);
    int Whole(int low, int high); ///< both ends included

private:
    std::uint64_t state_;
};

struct Size {
    int width;
    int height;
};

/// Random samples in -20..300 with fractions, and levels of its own on each plane.
CStlImage RandomImage(Size size, int planes, std::uint64_t seed);
/// An image of the samples value(x, y, plane).
template <class Value>
CStlImage Make(int width, int height, int planes, Value value)
{
    CStlImage image(-32, width, height, planes, 1.0, 0.0, 1);
    for (int i = 0; i < planes * height * width; ++i) {
        const int x = i % width;
        const int y = i / width % height;
        const int p = i / width / height;
        image.SetPixelGrayRaw(x, y, static_cast<float>(value(x, y, p)), p);
    }
    return image;
}

/// Puts one of the values on about every eighth sample.
void Sprinkle(CStlImage& image, std::initializer_list<float> values, std::uint64_t seed);
/// Makes -7 the blank value and sprinkles samples that are blank, nearly blank and, unless `finite`, NaN and infinite.
void SprinkleOddities(CStlImage& image, std::uint64_t seed, bool finite = false);
/// All samples, plane after plane.
std::vector<float> Samples(const CImage& image);

/// Calls check(image) for images of awkward sizes, of one and three planes, without and with oddities.
template <class Check>
void ForEachImage(Check check, bool finite = false)
{
    for (const Size size : {Size{1, 1}, {1, 7}, {9, 1}, {3, 3}, {17, 13}, {641, 5}}) {
        for (const int kind : {0, 1, 2, 3}) {
            const int planes = kind % 2 == 0 ? 1 : 3;
            SCOPED_TRACE(testing::Message()
                         << size.width << " x " << size.height << " x " << planes << ", kind " << kind);
            CStlImage image = RandomImage(size, planes, 1);
            if (kind >= 2) {
                SprinkleOddities(image, 2, finite);
            }
            check(image);
        }
    }
}

/// Calls check(rect) for null, and for rectangles inside, across the edges, outside, empty and inverted.
template <class Check>
void ForEachRect(const CImage& image, Check check)
{
    const int w = image.GetWidth();
    const int h = image.GetHeight();
    check(static_cast<CRect*>(nullptr));
    for (CRect rect : {CRect(0, 0, w, h), CRect(w / 4, h / 3, w - w / 4, h - h / 3),
                       CRect(-10, -10, w / 2 + 1, h / 2 + 1), CRect(w / 2, h / 2, w + 9, h + 9),
                       CRect(w + 3, 0, w + 9, h), CRect(0, -9, w, -2), CRect(w / 2, 0, w / 2, h), CRect(w, h, 0, 0)}) {
        SCOPED_TRACE(testing::Message() << "rect " << rect.left << ' ' << rect.top << ' ' << rect.right << ' '
                                        << rect.bottom);
        check(&rect);
    }
}

} // namespace corvane::test
