#pragma once

#include <vector>

#include <pybind11/pybind11.h>

#include "catalogue/operation.h"
#include "catalogue/step.h"
#include "python/core/image.h"

namespace corvane::python {

namespace py = pybind11;

/// What Python gives for the parameters of an operation, by their names with underscores for hyphens. None, and what is
/// the default anyway, are as if not given. Images take an `Image`, an array or the name of a file; the first two join
/// those that are used.
catalogue::Settings SettingsOf(const catalogue::Operation& operation, const py::dict& values,
                               std::vector<SharedImage>* used = nullptr);

/// A table as (name, digits, cells) of each column.
py::list ColumnsOf(const catalogue::Table& table);

} // namespace corvane::python
