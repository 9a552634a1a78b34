#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <pybind11/pybind11.h>

#include "io/frame.h"

namespace corvane::python {

namespace py = pybind11;

/// An image as Python has it: a frame, and a lock that whoever works on the samples holds.
struct Image {
    io::Frame frame;
    mutable std::mutex inUse{};
};

using SharedImage = std::shared_ptr<Image>;

/// An image of a Python object: an `Image` is itself; an array of (rows, columns) or (planes, rows, columns) becomes the
/// samples of one, in place where it holds floats row after row without gaps, else converted. `what` names it in the
/// ValueError or TypeError that tells what else is wrong.
SharedImage ImageOf(py::handle object, const std::string& what);

/// An image that Python is to have; its header tells where it lies on the sky.
SharedImage Shared(io::Frame frame);

/// A frame for the engine, of samples of the image's: where it lies on the sky its header tells, which Python may have
/// changed.
io::Frame FrameOf(const Image& image, CStlImage samples);

/// Keeps images from being written to, and from work in other threads, as long as it lives. To be made without the
/// interpreter's lock, since it may have to wait.
class Hold {
public:
    explicit Hold(std::vector<SharedImage> images);

private:
    std::vector<SharedImage> images_;
    std::vector<std::unique_lock<std::mutex>> locks_;
};

/// Adds the classes `Image` and `Header`.
void BindImage(py::module_& module);
void BindHeader(py::module_& module);

} // namespace corvane::python
