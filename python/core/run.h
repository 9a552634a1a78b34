#pragma once

#include <chrono>
#include <exception>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "corvane/core/run.h"

namespace corvane::python {

namespace py = pybind11;

/// A run that Python listens to. While work goes on the interpreter's lock is free; every 50 ms signals are looked at,
/// so that Ctrl-C ends the work, and `progress(stage, done, total)` is called. What it or a signal's handler raises
/// ends the work and goes on to the caller. Notes and findings go to the logger "corvane".
class PythonRun {
public:
    PythonRun(py::object progress, int threads);

    /// work(run), without the interpreter's lock.
    template <class Work>
    auto Do(Work work)
    {
        try {
            auto made = WithoutLock(work);
            if (raised_) { // with the last that was told
                std::rethrow_exception(raised_);
            }
            Log();
            return made;
        } catch (const Cancelled&) {
            if (raised_) {
                std::rethrow_exception(raised_);
            }
            throw;
        }
    }

private:
    template <class Work>
    auto WithoutLock(Work& work)
    {
        const py::gil_scoped_release release;
        return work(run_);
    }
    /// Calls into Python; what it raises is kept, and ends the work.
    template <class Call>
    void InPython(Call call);
    bool IsDue();
    bool MustEnd();
    void Follow(const Progress& progress);
    void Log() const;

    py::object progress_;
    Run run_;
    std::string stage_;
    std::vector<Diagnostic> told_;
    std::exception_ptr raised_{};
    std::chrono::steady_clock::time_point last_{};
};

} // namespace corvane::python
