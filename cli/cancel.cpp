#include "cli/cancel.h"

#include <csignal>

#include <unistd.h>

#include "cli/session.h"
#include "corvane/core/run.h"

namespace corvane::cli {
namespace {

volatile std::sig_atomic_t requested = 0;

// Only what is safe in a signal handler: nothing is flushed or destroyed when the second request ends the process.
extern "C" void Request(int)
{
    if (requested != 0) {
        _exit(kCancelled);
    }
    requested = 1;
}

} // namespace

void WatchForCancel()
{
    struct sigaction action {};
    action.sa_handler = Request;
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction inherited {};
    sigaction(SIGHUP, nullptr, &inherited);
    if (inherited.sa_handler != SIG_IGN) { // as nohup leaves it
        sigaction(SIGHUP, &action, nullptr);
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

bool CancelRequested()
{
    return requested != 0;
}

void ThrowIfCancelled()
{
    if (CancelRequested()) {
        throw Cancelled();
    }
}

} // namespace corvane::cli
