#pragma once

#include <pybind11/pybind11.h>

namespace corvane::python {

/// Adds `run`, which runs an operation of the catalogue, and `apply`, which runs a list of steps.
void BindOperations(pybind11::module_& module);

/// Adds `stack` and `register`.
void BindNight(pybind11::module_& module);

/// Adds `combine` and `bring_onto`.
void BindFrames(pybind11::module_& module);

/// Adds `night_options` and `StackJob`.
void BindParts(pybind11::module_& module);

/// Adds `Tiles`, `fits_head` and `fits_part`.
void BindTiles(pybind11::module_& module);

/// Adds `png`, `render` and `develop`.
void BindPictures(pybind11::module_& module);

/// Has errors raised as those of corvane.errors.
void BindErrors(pybind11::module_& module);

} // namespace corvane::python
