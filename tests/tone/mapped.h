#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "tests/support/images.h"
#include "tests/support/plain.h"

namespace corvane::test {

/// Compares an operation with its plain form on every kind of image and rectangle: run(operation, source, rect) must
/// make value(v, plane, levels) of each sample inside, where `levels` is the operation before. Its levels are not those
/// of the source.
template <class Operation, class Run, class Value>
void ExpectMapped(Run run, Value value)
{
    ForEachImage([&](CStlImage& source) {
        ForEachRect(source, [&](CRect* rect) {
            Operation operation(source);
            operation.CImage::SetLevel(0, -4.5, 177.25);
            operation.CImage::SetLevel(1, 20.0, 199.0);
            const Plain before(operation);
            const Plain expected = before.Map([&](double v, int x, int y, int p) {
                const bool inside = rect == nullptr || rect->PtInRect({x, y});
                return inside ? value(v, p, before) : v;
            });
            run(operation, &source, rect);
            EXPECT_TRUE(Agree(operation, expected, 1, 1e-13 * before.range[0]));
        });
    });
}

/// One row of samples; with the levels 0 and 255 the samples are display values.
inline CStlImage Row(const std::vector<float>& samples, int planes = 1, double min = 0.0, double max = 255.0)
{
    CStlImage image(-32, static_cast<int>(samples.size()), 1, planes, 1.0, 0.0, 1);
    for (int p = 0; p < planes; ++p) {
        image.CImage::SetLevel(p, min, max);
        std::copy(samples.begin(), samples.end(), image.GetImageAdr(0, 0, p));
    }
    return image;
}

/// Calls check(row) for rows of samples on and next to the places that divide the levels into equal steps, and far
/// outside, with levels round and odd, close to each other, on both sides of 0, equal, and turned over.
template <class Check>
void ForEachSteppedRow(double steps, Check check)
{
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const auto& [min, max] : {std::pair{0.0, 255.0},
                                   {0.0, 13005.0},
                                   {890.0, 6000.0},
                                   {900.1, 1400.7},
                                   {-1.0, 1.0},
                                   {12345.678, 12346.789},
                                   {1.0, 1.0 + 1e-12},
                                   {-3e38, 3e38},
                                   {7.0, 7.0},
                                   {100.0, 0.5}}) {
        SCOPED_TRACE(testing::Message() << "levels " << min << ", " << max << ", " << steps << " steps");
        std::vector<float> samples{kInfinity, -kInfinity, NAN, static_cast<float>(max + 1e3),
                                   static_cast<float>(min - 1e3)};
        for (int i = 0; i <= steps; ++i) {
            const auto on = static_cast<float>(min + (max - min) * i / steps);
            samples.insert(samples.end(), {std::nextafter(on, -kInfinity), on, std::nextafter(on, kInfinity)});
        }
        check(Row(samples, 1, min, max));
    }
}

} // namespace corvane::test
