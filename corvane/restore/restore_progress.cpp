#include "corvane/restore/restore_progress.h"

#include "corvane/platform/application.h"
#include "corvane/platform/cstring.h"

namespace corvane {

void TellFailure(Restored end, int noMemoryId, int cancelledId)
{
    if (!HasStopped(end)) {
        return;
    }
    const bool isCancelled = end == Restored::kCancelled;
    CString text;
    text.LoadString(static_cast<UINT>(isCancelled ? cancelledId : noMemoryId));
    AfxMessageBox(text, isCancelled ? MB_ICONINFORMATION : MB_OK);
}

RestoreProgress::~RestoreProgress()
{
    if (isOpen_) {
        Send({.state = Progress::State::kEnded, .total = Progress::kPercent});
    }
}

void RestoreProgress::Open(int id, int first, int second)
{
    if (run_.progress) {
        CString pattern;
        pattern.LoadString(static_cast<UINT>(id));
        CString text;
        text.Format(pattern, first, second);
        Send({.state = Progress::State::kBegun, .text = text, .total = Progress::kPercent});
    }
    isOpen_ = true;
}

void RestoreProgress::OpenIteration(int id, int planeId, int plane, int iteration)
{
    if (plane == 0) {
        Open(id, iteration);
    } else {
        Open(planeId, plane, iteration);
    }
    Reach(0.0);
}

void RestoreProgress::Reach(double percent) const
{
    const int done = static_cast<int>(percent);
    Send({.state = Progress::State::kReached, .done = done, .total = Progress::kPercent});
    run_.ThrowIfCancelled();
}

ShareSink RestoreProgress::Between(double from, double to) const
{
    return [=, this](double share) { Reach(from + (to - from) * share); };
}

void RestoreProgress::Send(const Progress& progress) const
{
    if (run_.progress) {
        run_.progress(progress);
    }
}

} // namespace corvane
