// Stacks that several processes make.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "corvane/core/error.h"
#include "python/core/night.h"
#include "python/core/operations.h"
#include "python/core/run.h"
#include "stack/parts/band_file.h"
#include "stack/parts/saved_plan.h"
#include "stack/stack_job.h"

namespace corvane::python {
namespace {

/// A job with the run that it tells, which both stay in one place. It belongs to one thread at a time.
class Job {
public:
    Job(const std::string& options, const std::string& name, int threads) : python_(py::none(), threads)
    {
        python_.Do([&](const Run& run) {
            job_ = std::make_unique<stack::StackJob>(stack::OptionsOfText(options, name), run);
            return 0;
        });
    }
    Job(stack::SavedPlan plan, int threads) : key_(plan.key), python_(py::none(), threads)
    {
        python_.Do([&](const Run& run) {
            job_ = std::make_unique<stack::StackJob>(std::move(plan), run);
            return 0;
        });
    }

    /// work(job), without the interpreter's lock.
    template <class Work>
    auto Do(Work work)
    {
        return python_.Do([&](const Run&) { return work(*job_); });
    }
    const std::string& Key() const { return key_; }

private:
    std::string key_{}; ///< of its plan; empty before there is one
    PythonRun python_;
    std::unique_ptr<stack::StackJob> job_{};
};

std::unique_ptr<Job> JobOfPlan(const std::string& text, const std::string& name, int threads)
{
    return std::make_unique<Job>(stack::PlanOfText(text, name), threads);
}

/// Refuses a light that is not there.
int CheckedLight(const stack::StackJob& job, int light)
{
    const int count = static_cast<int>(job.GetOptions().lights.size());
    if (light < 0 || light >= count) {
        throw ParameterError("light", std::to_string(light), "must be 0 to " + std::to_string(count - 1));
    }
    return light;
}

std::string Measure(Job& job, int light)
{
    return job.Do([&](stack::StackJob& work) {
        stack::LightRecord record = work.Measure(CheckedLight(work, light));
        record.seen.thumbnail = CStlImage(); // for the page of a report, which there is none of here
        return ToText(record);
    });
}

void Take(Job& job, int light, const std::string& text, const std::string& name)
{
    job.Do([&](stack::StackJob& work) {
        work.Take(CheckedLight(work, light), stack::LightOfText(text, name));
        return 0;
    });
}

std::string Plan(Job& job)
{
    return job.Do([](stack::StackJob& work) {
        work.Place();
        return ToText(work.GetPlan());
    });
}

void CombineBand(Job& job, int band, int of, const std::string& path)
{
    job.Do([&](stack::StackJob& work) {
        WriteBand(path, work.Combine(stack::RowsOf({band, of}, work.Rows())), job.Key());
        return 0;
    });
}

py::dict Join(Job& job, const std::vector<std::string>& paths)
{
    return StackDict(job.Do([&](stack::StackJob& work) {
        stack::Band whole = work.EmptyStack();
        stack::ReadBands(paths, job.Key(), whole, {});
        return work.Finish(std::move(whole));
    }));
}

/// What the frames of a night are to become, as one job.
std::string NightOptions(const Paths& paths, const py::dict& values, const std::string& masters,
                         const std::string& registered, const std::vector<std::string>& follow, bool both, bool maps,
                         const py::object& progress, int threads)
{
    const stack::Options asked = AskedOptions("stack", paths, values, {masters, registered, follow, both, maps});
    stack::CheckParts(asked);
    PythonRun python(progress, threads);
    return ToText(python.Do([&](const Run& run) { return SortedOptions(asked, run); }));
}

} // namespace

void BindParts(py::module_& module)
{
    module.def("night_options", &NightOptions, py::arg("paths"), py::arg("values"), py::arg("masters"),
               py::arg("registered"), py::arg("follow"), py::arg("both"), py::arg("maps"), py::arg("progress"),
               py::arg("threads"));
    py::class_<Job>(module, "StackJob", "The work that makes a stack, in steps that processes share.")
        .def(py::init<const std::string&, const std::string&, int>(), py::arg("options"), py::arg("name"),
             py::arg("threads"))
        .def_static("of_plan", &JobOfPlan, py::arg("text"), py::arg("name"), py::arg("threads"))
        .def(
            "way_of_reading",
            [](Job& job, int light) {
                return job.Do([&](stack::StackJob& work) { return work.WayOfReading(CheckedLight(work, light)); });
            },
            py::arg("light"))
        .def("calibrate",
             [](Job& job) {
                 job.Do([](stack::StackJob& work) {
                     work.Calibrate();
                     return 0;
                 });
             })
        .def("measure", &Measure, py::arg("light"))
        .def("take", &Take, py::arg("light"), py::arg("text"), py::arg("name"))
        .def("plan", &Plan)
        .def_property_readonly("rows",
                               [](Job& job) { return job.Do([](stack::StackJob& work) { return work.Rows(); }); })
        .def("combine", &CombineBand, py::arg("band"), py::arg("of"), py::arg("path"))
        .def("join", &Join, py::arg("paths"));
}

} // namespace corvane::python
