#include <string>
#include <thread>

#include "corvane/core/memory_budget.h"
#include "corvane/core/threads.h"
#include "python/core/image.h"
#include "python/core/operations.h"

namespace py = pybind11;

// The engine as Python calls it; what people call is made of it in the package.
PYBIND11_MODULE(_core, module)
{
    using namespace corvane::python;
    module.doc() = "The engine of corvane.";
    module.attr("__version__") = CORVANE_VERSION;
    BindErrors(module);
    BindHeader(module);
    BindImage(module);
    BindOperations(module);
    BindNight(module);
    BindFrames(module);
    BindParts(module);
    BindTiles(module);
    BindPictures(module);
    module.def("set_memory_budget", &corvane::SetMemoryBudget, py::arg("bytes"),
               "Sets how much memory images may take together [bytes]; others lie in files.");
    module.def("memory_budget", &corvane::MemoryBudget, "How much memory images may take together [bytes].");
    module.def("set_threads", &corvane::SetThreads, py::arg("threads"),
               "Sets how many threads work where a call does not say; 0: as many as there are processors.");
    module.def("threads", &corvane::Threads, "How many threads work where a call does not say.");
}
