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
        owner_->ShowProgressEnd(nullptr);
    }
}

void RestoreProgress::Open(int id, int first, int second)
{
    if (owner_ == nullptr) {
        return;
    }
    CString pattern;
    pattern.LoadString(static_cast<UINT>(id));
    CString text;
    text.Format(pattern, first, second);
    owner_->ShowProgressInit(static_cast<const char*>(text));
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

void RestoreProgress::Reach(double percent)
{
    if (isOpen_ && owner_->ShowProgress(static_cast<int>(percent)) == 0) {
        throw RestorationCancelled();
    }
}

} // namespace corvane
