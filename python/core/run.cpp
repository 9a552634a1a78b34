#include "python/core/run.h"

#include <utility>
#include <variant>

#include "corvane/core/error.h"

namespace corvane::python {
namespace {

constexpr auto kBetweenCalls = std::chrono::milliseconds(50);
constexpr int kMostThreads = 1024;

int CheckedThreads(int threads)
{
    if (threads < 0 || threads > kMostThreads) {
        throw ParameterError("threads", std::to_string(threads),
                             "must be 0 to " + std::to_string(kMostThreads) + "; 0: as many as there are processors");
    }
    return threads;
}

} // namespace

PythonRun::PythonRun(py::object progress, int threads) : progress_(std::move(progress))
{
    run_.threads = CheckedThreads(threads);
    run_.cancelled = [this] { return MustEnd(); };
    if (!progress_.is_none()) {
        run_.progress = [this](const Progress& to) { Follow(to); };
    }
    run_.diagnostics = [this](const Diagnostic& diagnostic) {
        if (!std::holds_alternative<RestoreEvent>(diagnostic)) {
            told_.push_back(diagnostic);
        }
    };
}

template <class Call>
void PythonRun::InPython(Call call)
{
    const py::gil_scoped_acquire lock;
    try {
        call();
    } catch (py::error_already_set&) {
        raised_ = std::current_exception();
    }
}

bool PythonRun::IsDue()
{
    const auto now = std::chrono::steady_clock::now();
    const bool isDue = now - last_ >= kBetweenCalls;
    last_ = isDue ? now : last_;
    return isDue;
}

bool PythonRun::MustEnd()
{
    if (!raised_ && IsDue()) {
        InPython([] {
            if (PyErr_CheckSignals() != 0) {
                throw py::error_already_set();
            }
        });
    }
    return raised_ != nullptr;
}

void PythonRun::Follow(const Progress& progress)
{
    const bool isCounted = progress.state == Progress::State::kCounted || progress.state == Progress::State::kReached;
    if (!isCounted && progress.state != Progress::State::kBegun) {
        return;
    }
    if (!isCounted) {
        stage_ = progress.text;
    }
    const bool isLast = isCounted && progress.done >= progress.total && progress.total > 0;
    if (!raised_ && (!isCounted || isLast || IsDue())) {
        const int total = progress.total == Progress::kPercent ? 100 : progress.total;
        InPython([&] { progress_(stage_, progress.done, total); });
    }
}

void PythonRun::Log() const
{
    if (told_.empty()) {
        return;
    }
    const py::object logger = py::module_::import("logging").attr("getLogger")("corvane");
    for (const Diagnostic& diagnostic : told_) {
        if (const Note* note = std::get_if<Note>(&diagnostic)) {
            logger.attr("warning")("%s", note->text);
        } else if (const Finding* finding = std::get_if<Finding>(&diagnostic)) {
            logger.attr("info")("%s", finding->text);
        }
    }
}

} // namespace corvane::python
