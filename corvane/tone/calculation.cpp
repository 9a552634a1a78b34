#include "corvane/tone/calculation.h"

#include <algorithm>
#include <limits>

#include "corvane/core/blank.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"

using namespace corvane;

namespace {

/// 1 / value, kept finite: a sample of 0 divided by the tiniest value is 0, not NaN.
double Reciprocal(double value)
{
    using Limits = std::numeric_limits<double>;
    return std::clamp(1.0 / value, Limits::lowest(), Limits::max());
}

} // namespace

void CImgCalculation::Do(double value, int mode, int clipNegative, CStlImage* source, CRect* rect, int showProgress)
{
    Do(value, mode, clipNegative, *source, rect, WindowRun(*this, showProgress));
}

void CImgCalculation::Do(double value, int mode, int clipNegative, const CStlImage& source, const CRect* rect,
                         const Run& run)
{
    const auto apply = [&](auto calculate) {
        MapPlanes(*this, source, rect, run, IDS_CALCULATION, [&](int) {
            return [=, isBlank = BlankTest(*this)](double v) {
                const double calculated = calculate(v); // of blanks too: the compiler makes no select of a call
                return isBlank(v) ? v : calculated;
            };
        });
    };
    if (mode == 0) {
        apply([=](double v) { return v + value; });
    } else if (mode == 1 && clipNegative != 0) { // clipped as floats, twice as many to a vector
        apply([=](double v) { return std::max(static_cast<float>(v - value), 0.0F); });
    } else if (mode == 1) {
        apply([=](double v) { return v - value; });
    } else if (mode == 2) {
        apply([=](double v) { return v * value; });
    } else if (mode == 3 && value == 0.0) {
        apply([blank = static_cast<double>(GetBlank())](double) { return blank; });
    } else if (mode == 3) {
        apply([perValue = Reciprocal(value)](double v) { return v * perValue; });
    } else {
        MapPlanes(*this, source, rect, run, IDS_CALCULATION, [](int) { return [](double v) { return v; }; });
    }
}
