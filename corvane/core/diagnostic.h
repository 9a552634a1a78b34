#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <variant>
#include <vector>

#include "corvane/platform/export.h"

namespace corvane {

/// How far a restoration is.
struct RestoreState {
    int plane = 0;                                               ///< from 1 on; 0: the only one
    int iteration = 0;                                           ///< 0: none yet
    int limit = 0;                                               ///< iterations at most
    double chiSquare = std::numeric_limits<double>::quiet_NaN(); ///< reduced; NaN where it is not known
};

/// @name What engines tell of themselves
/// @{

/// The iteration of Richardson and Lucy has its first estimate.
struct LucyStart {
    RestoreState state;
    const float* data = nullptr; ///< the plane; good during the call
    int stride = 0;              ///< from row to row
    int width = 0;
    int height = 0;
    int left = 0; ///< where the plane begins in the grid that it is worked on in
    int top = 0;
    double least = 0.0;  ///< samples below take no part
    double sigmas = 0.0; ///< that this is below 0; 0 or less: all samples take part
};

/// How an estimate is moved along.
enum class LucyMode {
    kPlain = 0,       ///< by the correction factor
    kAccelerated = 1, ///< by a multiple of its step, found by a line search
    kTurbo = 2,       ///< by a multiple of a direction that the previous step is combined into
};

/// Whether an iteration was the last one, the limit apart.
enum class LucyEnd { kNone, kReached, kNotANumber };

/// An iteration of Richardson and Lucy is done.
struct LucyIteration {
    /// A sample that the step would have taken below 0.
    struct Negative {
        std::size_t at; ///< in the grid
        float value;
    };

    RestoreState state;
    std::vector<Negative> negatives;  ///< samples that had fallen below 0, and were set to it
    LucyMode mode = LucyMode::kPlain; ///< that it went by
    double least = 1.0;               ///< limits of the factor
    double most = 1.0;
    double factor = 1.0; ///< of the step
    double target = 0.0; ///< chi-square that is to be reached
    LucyEnd end = LucyEnd::kNone;
};

/// Maximum entropy has its first image.
struct MemStart {
    RestoreState state;
    std::size_t dimension = 0; ///< samples of an array
    std::size_t data = 0;
    std::size_t unknowns = 0;
    int arrays = 0;
    double factor = 0.0; ///< that brings samples to a mean of about 1
};

/// An iteration of maximum entropy is done; chi-square is that before its step.
struct MemIteration {
    RestoreState state;
    double objective = 0.0; ///< multiplier * entropy - chi-square
    int subIterations = 0;  ///< of the line search
    double amount = 0.0;    ///< of the direction that was taken
    double leastAmount = 0.0;
    double mostAmount = 0.0;
    int directions = 0;    ///< that the step was looked for in
    double rmsStep = 0.0;  ///< [raw units]
    double mostStep = 0.0; ///< [raw units]
    double multiplier = 0.0;
    double rmsResidual = 0.0; ///< [raw units]
    double deviations = 0.0;  ///< of chi-square from its target, in standard deviations
};
/// @}

using RestoreEvent = std::variant<LucyStart, LucyIteration, MemStart, MemIteration>;

/// What the user should know, such as an assumption that was made.
struct Note {
    std::string text; ///< one sentence, which names the file
};

/// What an operation measured on its way to the result.
struct Finding {
    std::string text; ///< one line
};

/// What work tells of itself besides how far it is.
using Diagnostic = std::variant<RestoreEvent, Note, Finding>;

/// What every event has.
inline const RestoreState& StateOf(const RestoreEvent& event)
{
    return std::visit([](const auto& any) -> const RestoreState& { return any.state; }, event);
}

/// The event as a report for people, in lines; the last one may go on with the next event.
CORVANE_VISIBLE std::string ReportOf(const RestoreEvent& event);

} // namespace corvane
