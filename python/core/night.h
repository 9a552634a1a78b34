#pragma once

#include <map>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "corvane/core/run.h"
#include "stack/stack.h"

namespace corvane::python {

namespace py = pybind11;

/// Files, by the names of the inputs.
using Paths = std::map<std::string, std::vector<std::string>, std::less<>>;

/// What is asked for besides the frames and the parameters that the catalogue describes.
struct Besides {
    std::string masters;
    std::string registered{};
    std::vector<std::string> follow{};
    bool both = false;
    bool maps = false;
};

stack::Options AskedOptions(const char* name, const Paths& paths, const py::dict& values, const Besides& besides);

/// The frames sorted by their headers: those of one stack.
stack::Options SortedOptions(const stack::Options& asked, const Run& run);

/// A stack with all that is known of it, by names.
py::dict StackDict(stack::Result&& result);

} // namespace corvane::python
