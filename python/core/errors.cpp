#include <exception>
#include <string>

#include "corvane/core/error.h"
#include "corvane/core/run.h"
#include "corvane/platform/memory_exception.h"
#include "python/core/operations.h"

namespace corvane::python {

namespace py = pybind11;

namespace {

bool IsOfFile(const Error& error)
{
    return error.Is(Error::Kind::kFile) || error.Is(Error::Kind::kName);
}

void Raise(const Error& error)
{
    const py::object errors = py::module_::import("corvane.errors");
    const py::object type = errors.attr(IsOfFile(error) ? "FileError" : "ArgumentError");
    const py::object made = type(error.what(), error.Subject(), error.Value(), error.Reason(), error.Operation());
    PyErr_SetObject(type.ptr(), made.ptr());
}

} // namespace

void BindErrors(py::module_&)
{
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            std::rethrow_exception(thrown);
        } catch (const Error& error) {
            Raise(error);
        } catch (const CMemoryException&) {
            PyErr_SetString(PyExc_MemoryError, kMemoryText);
        } catch (const Cancelled&) {
            PyErr_SetNone(PyExc_KeyboardInterrupt);
        }
    });
}

} // namespace corvane::python
