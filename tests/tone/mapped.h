#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "corvane/core/walk.h"
#include "tests/support/plain.h"
#include "tests/support/progress_window.h"

namespace corvane::test {

/// Compares an operation with its plain form on every kind of image and rectangle: run(operation, source, rect) must
/// make value(x, y, plane, source, levels) of each sample inside, where `levels` is the operation before. Its levels
/// are not those of the source; those of the first plane are equal, too. Each row must be a step of progress with this
/// text; without a text, nothing may be reported.
template <class Operation, class Run, class Value>
void ExpectArea(const char* text, Run run, Value value)
{
    ProgressWindow window;
    const auto check = [&](CStlImage& source, CRect* rect, double max) {
        Operation operation(source);
        operation.CImage::SetLevel(0, -4.5, max);
        operation.CImage::SetLevel(1, 20.0, 199.0);
        const Plain before(operation);
        const Plain from(source);
        const Plain expected = before.Map([&](double v, int x, int y, int p) {
            const bool inside = rect == nullptr || rect->PtInRect({x, y});
            return inside ? value(x, y, p, from, before) : v;
        });
        window.Take();
        run(operation, &source, rect);
        EXPECT_TRUE(Agree(operation, expected, 1, 1.8e-11));
        const int rows = WorkingArea(operation, rect).Height() * before.planes;
        const std::vector<int> steps(static_cast<std::size_t>(std::max(rows, 0)), 1);
        EXPECT_EQ(window.Take(), text != nullptr ? Counted(text, rows, steps) : std::vector<std::string>());
    };
    ForEachImage([&](CStlImage& source) {
        source.SetProgressHandle(window.Handle());
        ForEachRect(source, [&](CRect* rect) {
            check(source, rect, 177.25);
            check(source, rect, -4.5);
        });
    });
}

/// The same for an operation that makes value(v, plane, levels) of a sample.
template <class Operation, class Run, class Value>
void ExpectMapped(const char* text, Run run, Value value)
{
    ExpectArea<Operation>(text, run, [&](int x, int y, int p, const Plain&, const Plain& levels) {
        return value(static_cast<double>(levels.At(x, y, p)), p, levels);
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

/// Compares an operation with its plain form, as above, on rows of samples on and next to the places that divide the
/// levels into equal steps, and far outside, with levels round and odd, close to each other, on both sides of 0, equal,
/// and turned over. The quick way to a step must not move samples that lie on one: rounding decides there.
template <class Operation, class Run, class Value>
void ExpectSteps(double steps, Run run, Value value)
{
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
        std::vector<float> samples{INFINITY, -INFINITY, NAN, static_cast<float>(max + 1e3),
                                   static_cast<float>(min - 1e3)};
        for (int i = 0; i <= steps; ++i) {
            const auto on = static_cast<float>(min + (max - min) * i / steps);
            samples.insert(samples.end(), {std::nextafter(on, -INFINITY), on, std::nextafter(on, INFINITY)});
        }
        CStlImage row = Row(samples, 1, min, max);
        Operation operation(row);
        const Plain plain(row);
        run(operation, &row, nullptr);
        const auto expected = [&](double v, int, int, int p) { return value(v, p, plain); };
        EXPECT_TRUE(Agree(operation, plain.Map(expected), 1, 1e-13 * std::fabs(plain.range[0])));
    }
}

} // namespace corvane::test
