#include "python/core/image.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include "corvane/core/error.h"
#include "corvane/core/vm_image.h"
#include "io/formats/cards.h"

namespace corvane::python {
namespace {

constexpr const char* kImageDoc = R"(Samples with their header, display levels and coordinates.

As an array it has the shape (rows, columns) or (planes, rows, columns), 32-bit floats and the
file's order of rows. ``numpy.asarray(image)`` is a view without a copy that is read-only and keeps
the image alive. ``image[...] = values`` writes, and raises BufferError while an operation works on
the image, ValueError where it has its samples of a read-only array. What may write through
``__dlpack__`` must not while one does.

Parameters
----------
samples : array_like, shape (rows, columns) or (planes, rows, columns)
    1 or 3 planes; taken without a copy where they are 32-bit floats row after row.

Raises
------
ArgumentError
    Another shape, or no samples.
)";

using Floats = py::array_t<float, py::array::c_style | py::array::forcecast>;

/// Samples in the memory of an array, which they keep alive.
std::shared_ptr<CVmImage> Adopted(const Floats& array, int width, int height, int planes)
{
    auto* const owner = new py::object(array);
    const std::shared_ptr<unsigned char> memory(reinterpret_cast<unsigned char*>(const_cast<float*>(array.data())),
                                                [owner](unsigned char*) {
                                                    const py::gil_scoped_acquire lock;
                                                    delete owner;
                                                });
    return std::make_shared<CVmImage>(memory, width, height, planes, static_cast<int>(sizeof(float)));
}

SharedImage ImageOfArray(const Floats& array, const std::string& what)
{
    const py::ssize_t dimensions = array.ndim();
    const bool isCube = dimensions == 3 && (array.shape(0) == 1 || array.shape(0) == 3);
    if (dimensions != 2 && !isCube) {
        throw InputError(what, "must have the shape (rows, columns) or (planes, rows, columns) with 1 or 3 planes");
    }
    const py::ssize_t height = array.shape(dimensions - 2);
    const py::ssize_t width = array.shape(dimensions - 1);
    constexpr py::ssize_t kMost = 1 << 30;
    if (width < 1 || height < 1 || width > kMost || height > kMost) {
        throw InputError(what, "has no samples, or more than " + std::to_string(kMost) + " in a row or column");
    }
    io::Frame frame;
    frame.image = CStlImage(Adopted(array, static_cast<int>(width), static_cast<int>(height),
                                    isCube ? static_cast<int>(array.shape(0)) : 1));
    io::SetFullLevels(frame.image);
    SharedImage image = Shared(std::move(frame));
    image->isReadOnly = !array.writeable();
    return image;
}

std::vector<py::ssize_t> ShapeOf(const CStlImage& image)
{
    std::vector<py::ssize_t> shape{image.GetHeight(), image.GetWidth()};
    if (image.GetPlanes() > 1) {
        shape.insert(shape.begin(), image.GetPlanes());
    }
    return shape;
}

bool IsPaged(const CStlImage& image)
{
    const CVmImage* const store = image.GetStore();
    return store != nullptr && store->IsPaged();
}

float* SamplesOf(const Image& image)
{
    if (IsPaged(image.frame.image)) {
        throw py::buffer_error("the image is larger than the memory budget and lies in a file: take parts with rows()");
    }
    return image.frame.image.GetImageAdr(0, 0, 0);
}

py::array View(const SharedImage& image, bool isWriteable)
{
    const py::capsule owner(new SharedImage(image), [](void* held) { delete static_cast<SharedImage*>(held); });
    py::array view(py::dtype::of<float>(), ShapeOf(image->frame.image), SamplesOf(*image), owner);
    if (!isWriteable) {
        view.attr("flags").attr("writeable") = false;
    }
    return view;
}

/// The buffer protocol by that of a view.
int GetBuffer(PyObject* self, Py_buffer* buffer, int flags)
{
    buffer->obj = nullptr;
    try {
        return PyObject_GetBuffer(View(py::handle(self).cast<SharedImage>(), false).ptr(), buffer, flags);
    } catch (py::error_already_set& error) {
        error.restore();
    } catch (const py::builtin_exception& error) {
        error.set_error();
    }
    return -1;
}

/// Rows first to end of all planes, as an array of their own.
py::array Rows(const Image& image, int first, int end)
{
    const CStlImage& from = image.frame.image;
    if (first < 0 || end <= first || end > from.GetHeight()) {
        throw ParameterError("rows", std::to_string(first) + ":" + std::to_string(end),
                             "must lie within 0:" + std::to_string(from.GetHeight()));
    }
    std::vector<py::ssize_t> shape = ShapeOf(from);
    shape[shape.size() - 2] = end - first;
    py::array_t<float> rows(shape);
    float* to = rows.mutable_data();
    const auto width = static_cast<std::size_t>(from.GetWidth());
    for (int plane = 0; plane < from.GetPlanes(); ++plane) {
        for (int y = first; y < end; ++y, to += width) {
            std::memcpy(to, from.GetImageAdr(0, y, plane, 1), width * sizeof(float));
        }
    }
    return rows;
}

void Write(const SharedImage& image, const py::object& where, const py::object& values)
{
    const std::unique_lock lock(image->inUse, std::try_to_lock);
    if (!lock.owns_lock()) {
        throw py::buffer_error("the image cannot be written to while an operation works on it");
    }
    if (image->isReadOnly) {
        throw py::value_error("the array that the image has its samples of is read-only: write to a copy()");
    }
    View(image, true)[where] = values;
}

using Levels = std::vector<std::pair<double, double>>;

Levels LevelsOf(const Image& image)
{
    Levels levels;
    for (int plane = 0; plane < image.frame.image.GetPlanes(); ++plane) {
        levels.emplace_back(image.frame.image.GetLevelMin(plane), image.frame.image.GetLevelMax(plane));
    }
    return levels;
}

void SetLevels(Image& image, const Levels& levels)
{
    CStlImage& of = image.frame.image;
    if (levels.size() != static_cast<std::size_t>(of.GetPlanes())) {
        throw ParameterError("levels", std::to_string(levels.size()),
                             "must be a pair (black, white) for each of " + std::to_string(of.GetPlanes()) + " planes");
    }
    for (std::size_t plane = 0; plane < levels.size(); ++plane) {
        of.SetLevel(static_cast<int>(plane), levels[plane].first, levels[plane].second);
    }
    of.SetOwnLevel(1);
}

std::optional<int> BlankOf(const Image& image)
{
    return image.frame.image.IsBlankUsed() != 0 ? std::optional(image.frame.image.GetBlank()) : std::nullopt;
}

SharedImage Copy(const Image& image)
{
    io::Frame frame = FrameOf(image);
    frame.image = CStlImage(frame.image);
    return Shared(std::move(frame));
}

std::string Description(const Image& image)
{
    const CStlImage& of = image.frame.image;
    std::string text = "<corvane.Image " + std::to_string(of.GetWidth()) + " x " + std::to_string(of.GetHeight());
    text += of.GetPlanes() > 1 ? " x " + std::to_string(of.GetPlanes()) + " planes" : "";
    const std::string name = of.GetOrgFileName();
    return text + (name.empty() ? "" : ", " + name) + ">";
}

} // namespace

SharedImage Shared(io::Frame frame)
{
    io::WriteCoordinates(frame.image, frame.header);
    auto image = std::make_shared<Image>();
    image->frame = std::move(frame);
    return image;
}

io::Frame FrameOf(const Image& image)
{
    CStlImage samples = image.frame.image.Shared();
    samples.SetCoordinates({});
    io::ReadCoordinates(image.frame.header, samples);
    return {std::move(samples), image.frame.header};
}

SharedImage ImageOf(py::handle object, const std::string& what)
{
    if (py::isinstance<Image>(object)) {
        return object.cast<SharedImage>();
    }
    const Floats array = Floats::ensure(object);
    if (!array) {
        PyErr_Clear();
        throw py::type_error(what + " must be an image or an array of numbers, not " +
                             std::string(py::str(py::type::of(object).attr("__name__"))));
    }
    return ImageOfArray(array, what);
}

// An image is held once, however often it is given.
Hold::Hold(std::vector<SharedImage> images) : images_(std::move(images))
{
    std::sort(images_.begin(), images_.end(), std::less<>());
    images_.erase(std::unique(images_.begin(), images_.end()), images_.end());
    for (const SharedImage& image : images_) {
        locks_.emplace_back(image->inUse);
    }
}

void BindImage(py::module_& module)
{
    py::class_<Image, SharedImage>(module, "Image", py::custom_type_setup([](PyHeapTypeObject* type) {
                                       type->as_buffer.bf_getbuffer = &GetBuffer;
                                       type->ht_type.tp_as_buffer = &type->as_buffer;
                                   }),
                                   kImageDoc)
        .def(py::init([](const py::object& samples) { return ImageOf(samples, "samples"); }), py::arg("samples"))
        .def_property_readonly(
            "shape", [](const Image& image) { return py::tuple(py::cast(ShapeOf(image.frame.image))); },
            "(rows, columns), or (planes, rows, columns) of a colour image.")
        .def_property_readonly(
            "ndim", [](const Image& image) { return ShapeOf(image.frame.image).size(); }, "2, or 3 for colour.")
        .def_property_readonly(
            "dtype", [](const Image&) { return py::dtype::of<float>(); }, "numpy.float32.")
        .def_property_readonly(
            "header", [](const SharedImage& image) { return std::shared_ptr<io::Header>(image, &image->frame.header); },
            "What the image says about itself, as FITS header cards.")
        .def_property("levels", &LevelsOf, &SetLevels, "(black, white) of each plane [counts].")
        .def_property_readonly("blank", &BlankOf, "The value of samples that are not known; None where there is none.")
        .def_property_readonly(
            "is_paged", [](const Image& image) { return IsPaged(image.frame.image); },
            "True for an image beyond the memory budget: take parts of it with rows().")
        .def("rows", &Rows, py::arg("first"), py::arg("end"),
             "A copy of rows first to end, of all planes: for images of any size.")
        .def("copy", &Copy, "The same once more, with samples of its own.")
        .def(
            "__array__",
            [](const SharedImage& image, const py::object& dtype, const py::object& copy) {
                return py::module_::import("numpy").attr("array")(View(image, false), dtype, py::arg("copy") = copy);
            },
            py::arg("dtype") = py::none(), py::arg("copy") = py::none())
        .def(
            "__dlpack__",
            [](const SharedImage& image, const py::object& stream) {
                return View(image, !image->isReadOnly).attr("__dlpack__")(py::arg("stream") = stream);
            },
            py::arg("stream") = py::none())
        .def("__dlpack_device__", [](const Image&) { return py::make_tuple(1, 0); })
        .def("__getitem__", [](const SharedImage& image,
                               const py::object& where) { return View(image, false)[where].cast<py::object>(); })
        .def("__setitem__", &Write)
        .def("__len__", [](const Image& image) { return ShapeOf(image.frame.image).front(); })
        .def("__repr__", &Description);
}

} // namespace corvane::python
