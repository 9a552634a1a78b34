#include "corvane/core/diagnostic.h"

#include <cstddef>
#include <cstdio>

namespace corvane {

namespace {

template <class... Values>
std::string Formatted(const char* format, Values... values)
{
    char text[1024];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/// A sample with its place in the plane, and in the grid where that is larger; both count from 1.
std::string PixelText(const LucyStart& start, int x, int y, double value)
{
    std::string text = Formatted("pixel (%d,%d)", x + 1, y + 1);
    if (start.left != 0 || start.top != 0) {
        text += Formatted("  [%d,%d]", x + 1 + start.left, y + 1 + start.top);
    }
    return text + Formatted("; value %g\n", value);
}

std::string Report(const LucyStart& start)
{
    std::string text;
    for (int y = 0; start.sigmas > 0.0 && y < start.height; ++y) {
        const float* row = start.data + static_cast<std::ptrdiff_t>(y) * start.stride;
        for (int x = 0; x < start.width; ++x) {
            if (!(row[x] < start.least)) {
                continue;
            }
            if (text.empty()) {
                text = Formatted("List of pixels below threshold %g (-%g sigma)\n", start.least, start.sigmas);
            }
            text += PixelText(start, x, y, row[x]);
        }
    }
    return text + Formatted("Initial chi-sq = %g\n", start.state.chiSquare);
}

std::string Report(const LucyIteration& step)
{
    std::string text;
    for (const LucyIteration::Negative& negative : step.negatives) {
        text += Formatted("Negative pixel (%zu): %g\n", negative.at, static_cast<double>(negative.value));
    }
    if (step.mode != LucyMode::kPlain) {
        text += step.mode == LucyMode::kTurbo ? "Turbo iteration      " : "Accelerated iteration";
        text += Formatted("  CMIN = %g, CMAX = %g, C = %g\n", step.least, step.most, step.factor);
    }
    text += Formatted("Iteration %d : chi-sq = %g\nTotal Iterations %d  ", step.state.iteration, step.state.chiSquare,
                      step.state.iteration);
    if (step.end == LucyEnd::kReached) {
        text += Formatted("chi-sq <= %g,  converged\n", step.target);
    } else if (step.end == LucyEnd::kNotANumber) {
        text += "chi-sq is not a number,  given up\n";
    }
    return text;
}

std::string Report(const MemStart& start)
{
    return Formatted("array dimension       %20zu\n"
                     "number of data        %20zu\n"
                     "number of unknowns    %20zu\n"
                     "number of work-arrays %20d\n"
                     "factor to o(1)-scale  %20.12e\n",
                     start.dimension, start.data, start.unknowns, start.arrays, start.factor);
}

std::string Report(const MemIteration& step)
{
    return Formatted("\nmain iter %20d     g function %20.12e\n"
                     "sub  iter %20.1f     a value    %20.12e\n"
                     "sdir iuch %20d     a limit    %20.12e\n"
                     "rms step  %20.12f     low limit  %20.12e\n"
                     "max step  %20.12e     lagpar     %20.12e\n"
                     "rms res   %20.12e     nsd        %20.12e\n",
                     step.state.iteration, step.objective, static_cast<double>(step.subIterations), step.amount,
                     step.directions, step.mostAmount, step.rmsStep, step.leastAmount, step.mostStep, step.multiplier,
                     step.rmsResidual, step.deviations);
}

} // namespace

std::string ReportOf(const RestoreEvent& event)
{
    return std::visit([](const auto& any) { return Report(any); }, event);
}

} // namespace corvane
