#include "corvane/tone/reduce_tone.h"

#include <algorithm>
#include <cmath>

#include "corvane/core/display_scale.h"
#include "corvane/core/walk.h"
#include "corvane/resources/string_table.h"
#include "corvane/tone/steps.h"

using namespace corvane;

namespace {

/// The step from 0 on which a sample lies, as the definition has it.
struct ExactStep {
    DisplayScale scale;
    double steps;

    double operator()(double v) const
    {
        const double shown = std::min(255.0, std::max(0.0, scale.To256(v)));
        return std::floor(steps * shown * 0.00390625);
    }
};

/// The same without a division.
struct QuickStep {
    double min;
    double perStep;
    double last;

    double operator()(double v) const { return std::floor(std::min(last, std::max(0.0, (v - min) * perStep))); }
};

} // namespace

void CImgReduceTone::Do(int levels, CStlImage* source, CRect* rect, int showProgress)
{
    Do(levels, *source, rect, WindowRun(*this, showProgress));
}

void CImgReduceTone::Do(int levels, const CStlImage& source, const CRect* rect, const Run& run)
{
    const int steps = std::clamp(levels, 1, 256);
    WalkRows(*this, source, rect, run, IDS_COMPRESS_GRAY, [&](int plane) {
        const DisplayScale scale(*this, plane);
        const ExactStep exact{scale, static_cast<double>(steps)};
        const double width = scale.range / 255.0 * 256.0 / steps;
        const QuickStep quick{scale.min, kStepLift / width, steps - 1.0};
        const bool isQuick = AgreeOnSteps(scale, width, steps - 1, exact, quick);
        const double rawStep = scale.range * (255.0 / steps) * kPer255;
        return [=](const float* in, float* out, int count) {
            const auto map = [=](auto stepOf) {
                for (int x = 0; x < count; ++x) {
                    out[x] = static_cast<float>(stepOf(in[x]) * rawStep + scale.min);
                }
            };
            isQuick ? map(quick) : map(exact);
        };
    });
}
