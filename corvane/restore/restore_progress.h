#pragma once

#include "corvane/core/convolver.h"
#include "corvane/core/run.h"

namespace corvane {

/// How a restoration engine ended.
enum class Restored {
    kDone = 0,
    kNoMemory = 1,
    kCancelled = 2,
    kNotANumber = 3, ///< the fit came to none: no failure, but nothing to show either
};

/// True when a restoration stopped, and the image stays as it is.
inline bool HasStopped(Restored end)
{
    return end == Restored::kNoMemory || end == Restored::kCancelled;
}

/// Tells the user in a message box why a restoration did not finish; nothing when it did.
void TellFailure(Restored end, int noMemoryId, int cancelledId);

/// What a restoration engine tells its run of how far it is, in percent.
class RestoreProgress {
public:
    /// The run must outlive it.
    explicit RestoreProgress(const Run& run) : run_(run) {}
    ~RestoreProgress();
    RestoreProgress(const RestoreProgress&) = delete;
    RestoreProgress& operator=(const RestoreProgress&) = delete;

    /// Begins again, with the text of an id into which the numbers go.
    void Open(int id, int first = 0, int second = 0);
    /// Begins an iteration; `id` has a place for its number, `planeId` for the plane's before it. Plane 0 is the only
    /// one.
    void OpenIteration(int id, int planeId, int plane, int iteration);
    /// Tells that so many percent are done. Throws Cancelled when the run asks to stop.
    void Reach(double percent) const;
    /// Tells of a step that goes from one percentage to another; it must not outlive this object.
    ShareSink Between(double from, double to) const;

private:
    void Send(const Progress& progress) const;

    const Run& run_;
    bool isOpen_ = false;
};

} // namespace corvane
