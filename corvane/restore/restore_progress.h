#pragma once

#include "corvane/core/stl_image.h"

namespace corvane {

/// The user pressed ESC during a restoration.
struct RestorationCancelled {};

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

/// The progress channel of a restoration engine, which shows percentages. Without an owner nothing is shown, and
/// nothing stops the engine.
class RestoreProgress {
public:
    explicit RestoreProgress(CStlImage* owner) : owner_(owner) {}
    ~RestoreProgress();
    RestoreProgress(const RestoreProgress&) = delete;
    RestoreProgress& operator=(const RestoreProgress&) = delete;

    /// Opens the channel again, with the text of an id into which the numbers go.
    void Open(int id, int first = 0, int second = 0);
    /// Opens it for an iteration; `id` has a place for its number, `planeId` for the plane's before it. Plane 0 is the
    /// only one.
    void OpenIteration(int id, int planeId, int plane, int iteration);
    /// Shows so many percent. Throws RestorationCancelled when ESC was pressed.
    void Reach(double percent);

private:
    CStlImage* owner_;
    bool isOpen_ = false;
};

/// A part of the percentages, as one step of an engine sees it.
class RestoreStage {
public:
    RestoreStage(RestoreProgress& progress, double from, double to) : progress_(progress), from_(from), to_(to) {}

    /// Shows that a share [0..1] of the step is done. Throws RestorationCancelled when ESC was pressed.
    void Reach(double share) const { progress_.Reach(from_ + (to_ - from_) * share); }

private:
    RestoreProgress& progress_;
    double from_;
    double to_;
};

} // namespace corvane
