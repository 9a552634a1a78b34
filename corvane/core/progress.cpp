// The progress channel: messages to a window, and ESC from the thread's message queue.

#include <algorithm>

#include "corvane/core/progress_message.h"
#include "corvane/core/stl_image.h"
#include "corvane/core/truncate.h"
#include "corvane/platform/messages.h"
#include "corvane/resources/string_table.h"

namespace {

constexpr int kMessages = 50; // about as many as an operation sends

// Systems offer a window for painting until it says that it is painted; one that never does must not hold up the work.
constexpr int kMostPaints = 1000;

// Takes the next message with the number out of the queue. The end of the program is handed out whatever is asked for:
// it goes back, for the application's own loop.
bool TakeMessage(MSG& message, UINT number)
{
    if (PeekMessageA(&message, nullptr, number, number, PM_REMOVE) == 0) {
        return false;
    }
    if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return false;
    }
    return true;
}

const char* Text(int id)
{
    const char* const text = corvane::FindString(static_cast<unsigned>(id));
    return text == nullptr ? "" : text;
}

} // namespace

void CStlImage::SendProgress(int word, const char* text) const
{
    SendMessageA(progressWindow_, corvane::kProgressMessage, static_cast<WPARAM>(word), reinterpret_cast<LPARAM>(text));
}

void CStlImage::ShowProgressInit(int show, const char* text, int total)
{
    progressTotal_ = total;
    progressStep_ = std::max(total / kMessages, 1);
    progressCount_ = 0;
    progressThreshold_ = 0;
    progressDirect_ = 0;
    progressActive_ = show;
    if (show != 0) {
        SendProgress(corvane::kProgressStart, text);
    }
}

void CStlImage::ShowProgressInit(int show, int id, int total)
{
    ShowProgressInit(show, Text(id), total);
}

void CStlImage::ShowProgressInit(const char* text)
{
    progressActive_ = 1;
    progressDirect_ = 1;
    progressTotal_ = 0;
    progressStep_ = 0;
    progressCount_ = 0;
    progressThreshold_ = 0;
    SendProgress(corvane::kProgressStart, text);
}

void CStlImage::ShowProgressInit(int id)
{
    ShowProgressInit(Text(id));
}

int CStlImage::ShowProgress(int n)
{
    if (progressActive_ == 0) {
        return 1;
    }
    if (progressDirect_ != 0) {
        SendMessageA(progressWindow_, corvane::kProgressMessage, corvane::kProgressStep, n);
        return ShowProgressContinue();
    }
    progressCount_ += n;
    if (progressCount_ > progressThreshold_) {
        const double done = static_cast<double>(progressCount_) / static_cast<double>(progressTotal_);
        SendMessageA(progressWindow_, corvane::kProgressMessage, corvane::kProgressStep,
                     corvane::Truncate(done * 100.0));
        progressThreshold_ += progressStep_;
    }
    return ShowProgressContinue();
}

void CStlImage::ShowProgressMsg(const char* text)
{
    SendProgress(corvane::kProgressText, text);
}

void CStlImage::ShowProgressMsg(int id)
{
    ShowProgressMsg(Text(id));
}

void CStlImage::ShowProgressEnd(const char* text)
{
    if (progressActive_ != 0) {
        SendProgress(corvane::kProgressEnd, text);
    }
    progressActive_ = 0;
}

void CStlImage::ShowProgressEnd(int id)
{
    ShowProgressEnd(Text(id));
}

int CStlImage::ShowProgressContinue()
{
    MSG message;
    while (TakeMessage(message, WM_KEYDOWN)) {
        if (message.wParam == VK_ESCAPE) {
            return 0;
        }
    }
    for (int n = 0; n < kMostPaints && TakeMessage(message, WM_PAINT); ++n) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 1;
}
