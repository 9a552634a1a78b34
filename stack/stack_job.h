#pragma once

#include <optional>
#include <string>
#include <vector>

#include "corvane/core/aligned_row.h"
#include "corvane/platform/export.h"
#include "stack/parts/band.h"
#include "stack/parts/saved_plan.h"
#include "stack/prepared_lights.h"
#include "stack/stack.h"
#include "stack/stopwatch.h"

namespace corvane::stack {

/// The work that makes a stack, step by step. `Stack` takes the steps one after the other. In several processes, each
/// with a job of the same options, one measures some lights, one places what all have measured, and each of many
/// combines a band of rows by the plan of that: the stack has the same bits.
///
/// Members throw Error, Cancelled, and CMemoryException when there is no room.
class CORVANE_VISIBLE StackJob {
public:
    /// Opens all frames and checks what can be judged before the work.
    explicit StackJob(Options options, Run run = {});
    /// The same of lights that were placed in another process.
    explicit StackJob(SavedPlan plan, Run run = {});
    ~StackJob();
    StackJob(const StackJob&) = delete;
    StackJob& operator=(const StackJob&) = delete;

    const Options& GetOptions() const { return options_; }
    const Registration& Lights() const { return result_; }

    /// @name Before a plan
    /// @{
    /// Makes the masters. What needs them calls it; a master that a folder keeps is made once for all processes.
    void Calibrate();
    /// Measures all lights and places them.
    void Register();
    LightRecord Measure(int light);
    void Take(int light, LightRecord record);
    /// Places the lights, when all were measured or taken over.
    void Place();
    SavedPlan GetPlan() const;
    /// How a light is read, which other frames have a say in: records of light and plan are good for no other way.
    std::string WayOfReading(int light) const;
    /// @}

    /// @name Once lights are placed
    /// @{
    /// How many rows there are to combine: of the stack or, of a drizzled one, of the reference.
    int Rows() { return Combining().grid.height; }
    /// Combines some of these rows.
    Band Combine(const RowSpan& rows);
    /// Room for all rows, and for what is known of each sample, filled with zeros.
    Band EmptyStack();
    /// The stack, given all of its rows; the last step.
    Result Finish(Band whole);
    /// @}

private:
    const CombinePlan& Combining();
    Grid StackGrid();
    Band EmptyBand(const RowSpan& rows);
    void CheckRecord(int light, const LightRecord& record) const;
    void TakeRejected(Band& whole);
    void TakeImage(Band& whole);
    void CombineStars();

    Options options_;
    Run run_;
    Result result_;
    Stopwatch stopwatch_;
    PreparedLights lights_;
    std::optional<CombinePlan> combining_; ///< once it was asked for
};

/// Refuses options whose stack cannot be made in bands by several processes.
CORVANE_VISIBLE void CheckParts(const Options& options);

} // namespace corvane::stack
