// Images as people look at them.

#include "io/picture.h"

#include <string>

#include "catalogue/recipe.h"
#include "catalogue/shown.h"
#include "io/metadata.h"
#include "python/core/image.h"
#include "python/core/operations.h"
#include "python/core/run.h"

namespace corvane::python {
namespace {

void MakePicture(io::Frame& frame, const std::string& stretch, int size)
{
    catalogue::Reduce(frame, size);
    catalogue::MakeShown(frame, stretch);
}

py::bytes Png(const SharedImage& image, const std::string& stretch, int size)
{
    std::string bytes;
    io::Frame frame = FrameOf(*image);
    {
        const py::gil_scoped_release release;
        const Hold hold({image});
        MakePicture(frame, stretch, size);
        bytes = io::EncodePicture(frame.image, io::IsBottomUp(frame.header));
    }
    return bytes;
}

void SaveShown(const SharedImage& image, const std::string& path, const std::string& stretch, int size, int bits,
               int quality)
{
    const io::PictureFormat format{bits, quality};
    io::CheckPicture(path, format);
    io::Frame frame = FrameOf(*image);
    const py::gil_scoped_release release;
    const Hold hold({image});
    MakePicture(frame, stretch, size);
    io::SavePicture(path, frame.image, io::IsBottomUp(frame.header), format);
}

py::object Developed(const py::object& given, const std::string& recipe, const py::object& progress, int threads)
{
    const SharedImage image = ImageOf(given, "image");
    const catalogue::Recipe steps = catalogue::FindRecipe(recipe);
    PythonRun python(progress, threads);
    io::Frame frame = FrameOf(*image);
    return py::cast(Shared(python.Do([&](const Run& run) {
        const Hold hold({image});
        frame.image = CStlImage(frame.image);
        catalogue::RunRecipe(steps, frame, run);
        return std::move(frame);
    })));
}

} // namespace

void BindPictures(py::module_& module)
{
    module.def("png", &Png, py::arg("image"), py::arg("stretch"), py::arg("size"));
    module.def("render", &SaveShown, py::arg("image"), py::arg("path"), py::arg("stretch"), py::arg("size"),
               py::arg("bits"), py::arg("quality"));
    module.def("develop", &Developed, py::arg("image"), py::arg("recipe"), py::arg("progress"), py::arg("threads"));
}

} // namespace corvane::python
