#pragma once

#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "io/frame.h"

namespace corvane::python {

namespace py = pybind11;

/// An image as Python has it: a frame, and a lock that whoever works on the samples shares.
struct Image {
    io::Frame frame;
    bool isReadOnly = false; ///< its samples are an array's that is not to be written to
    mutable std::shared_mutex inUse{};
};

using SharedImage = std::shared_ptr<Image>;

/// An image of a Python object: an `Image` is itself; an array of (rows, columns) or (planes, rows, columns) becomes
/// the samples of one, in place where it holds floats row after row without gaps, else converted. `what` names it in
/// the ValueError or TypeError that tells what else is wrong.
SharedImage ImageOf(py::handle object, const std::string& what);

/// An image that Python is to have; its header tells where it lies on the sky.
SharedImage Shared(io::Frame frame);

/// A frame for the engine over the image's samples, which stay as they are: where it lies on the sky its header tells,
/// which Python may have changed, and may again: to be made with the interpreter's lock.
io::Frame FrameOf(const Image& image);

/// Keeps images from being written to as long as it lives. To be made without the interpreter's lock, since it may have
/// to wait for who writes.
class Hold {
public:
    explicit Hold(std::vector<SharedImage> images);

private:
    std::vector<SharedImage> images_;
    std::vector<std::shared_lock<std::shared_mutex>> locks_;
};

/// Adds the classes `Image` and `Header`.
void BindImage(py::module_& module);
void BindHeader(py::module_& module);

} // namespace corvane::python
