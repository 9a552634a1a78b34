#pragma once

#include <cmath>
#include <limits>

#include "corvane/core/blank.h"

namespace corvane {

/// Tells samples that are numbers: neither blank nor NaN nor infinite. In single precision, so that a loop over samples
/// needs no conversion.
class DefinedTest {
public:
    explicit DefinedTest(const CImage& image)
    {
        const BlankTest blank(image);
        blankLow_ = Rounded(blank.low, kInfinity);
        blankHigh_ = Rounded(blank.high, -kInfinity);
    }

    bool operator()(float v) const
    {
        return (v > -kInfinity) & (v < kInfinity) & !((v >= blankLow_) & (v <= blankHigh_));
    }

private:
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    /// The float nearest to a bound on the side of `towards`: no float lies between both.
    static float Rounded(double bound, float towards)
    {
        const auto rounded = static_cast<float>(bound);
        const bool isInside = towards > 0.0F ? rounded >= bound : rounded <= bound;
        return isInside ? rounded : std::nextafter(rounded, towards);
    }

    float blankLow_;
    float blankHigh_;
};

} // namespace corvane
