#include "python/core/operations.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "catalogue/apply.h"
#include "catalogue/operations.h"
#include "corvane/core/error.h"
#include "python/core/image.h"
#include "python/core/run.h"
#include "python/core/values.h"

namespace corvane::python {
namespace {

/// Images that are given, by the names of the inputs.
using Given = std::map<std::string, std::vector<SharedImage>>;

bool TakesMany(const catalogue::Operation& operation, const std::string& name)
{
    return std::any_of(operation.inputs.begin(), operation.inputs.end(), [&](const catalogue::Input& input) {
        return input.name == name &&
               (input.count == catalogue::Count::Several || input.count == catalogue::Count::Any);
    });
}

Given GivenTo(const catalogue::Operation& operation, const py::dict& images)
{
    Given given;
    for (const auto& [key, value] : images) {
        const auto name = key.cast<std::string>();
        if (!TakesMany(operation, name)) {
            given[name].push_back(ImageOf(value, name));
            continue;
        }
        for (const py::handle image : py::iter(value)) {
            given[name].push_back(ImageOf(image, name));
        }
    }
    return given;
}

std::vector<SharedImage> AllOf(const Given& given)
{
    std::vector<SharedImage> all;
    for (const auto& [name, images] : given) {
        all.insert(all.end(), images.begin(), images.end());
    }
    return all;
}

/// Frames that an operation may take over: copies, unless it only looks at them.
catalogue::Inputs InputsOf(const catalogue::Operation& operation, const Given& given)
{
    const bool looks = operation.outputs.front().kind != catalogue::OutputKind::Image;
    catalogue::Inputs inputs;
    for (const auto& [name, images] : given) {
        for (const SharedImage& image : images) {
            const CStlImage& from = image->frame.image;
            inputs[name].push_back(FrameOf(*image, looks ? from.Shared() : CStlImage(from)));
        }
    }
    return inputs;
}

py::object Made(std::variant<io::Frame, catalogue::Table>& output)
{
    if (auto* frame = std::get_if<io::Frame>(&output)) {
        return py::cast(Shared(std::move(*frame)));
    }
    return ColumnsOf(std::get<catalogue::Table>(output));
}

py::object RunSeveral(const catalogue::Operation& operation, const Given& given, const catalogue::Settings& settings,
                      PythonRun& python)
{
    catalogue::Outputs outputs = python.Do([&](const Run& run) {
        const Hold hold(AllOf(given));
        return Apply(operation.name, InputsOf(operation, given), settings, run);
    });
    py::dict made;
    for (const catalogue::Output& output : operation.outputs) {
        if (const auto found = outputs.find(output.name); found != outputs.end()) {
            made[py::str(output.name)] = Made(found->second);
        }
    }
    return made;
}

py::object RunSteps(const SharedImage& image, const std::vector<catalogue::Step>& steps, PythonRun& python)
{
    io::Frame made = python.Do([&](const Run& run) {
        const Hold hold({image});
        return Apply(FrameOf(*image, image->frame.image.Shared()), steps, run);
    });
    return py::cast(Shared(std::move(made)));
}

/// A step gives its image, other operations what they make by the names of the outputs.
py::object RunNamed(const std::string& name, const py::dict& images, const py::dict& values, const py::object& progress,
                    int threads)
{
    const catalogue::Operation& operation = catalogue::FindOperation(name);
    const catalogue::Settings settings = SettingsOf(operation, values);
    const Given given = GivenTo(operation, images);
    PythonRun run(progress, threads);
    if (!operation.IsStep()) {
        return RunSeveral(operation, given, settings, run);
    }
    return RunSteps(given.begin()->second.front(), {catalogue::Step(operation.name, settings)}, run);
}

py::object RunTexts(const py::object& image, const std::vector<std::string>& steps, const py::object& progress,
                    int threads)
{
    const std::vector<catalogue::Step> parsed(steps.begin(), steps.end());
    PythonRun run(progress, threads);
    return RunSteps(ImageOf(image, "image"), parsed, run);
}

} // namespace

void BindOperations(py::module_& module)
{
    module.def("run", &RunNamed, py::arg("operation"), py::arg("images"), py::arg("values"), py::arg("progress"),
               py::arg("threads"));
    module.def("apply", &RunTexts, py::arg("image"), py::arg("steps"), py::arg("progress"), py::arg("threads"));
    module.def(
        "read",
        [](const std::string& path) {
            const py::gil_scoped_release release;
            return Shared(io::Load(path));
        },
        py::arg("path"));
    module.def(
        "write",
        [](const std::string& path, const SharedImage& image, int bits, const std::string& scale) {
            static const std::map<std::string, io::SampleScale> scales{{"counts", io::SampleScale::kCounts},
                                                                       {"none", io::SampleScale::kNone},
                                                                       {"levels", io::SampleScale::kLevels},
                                                                       {"minmax", io::SampleScale::kMinMax},
                                                                       {"unit", io::SampleScale::kUnit}};
            const auto found = scales.find(scale);
            if (found == scales.end()) {
                throw ParameterError("scale", scale, "must be counts, none, levels, minmax or unit");
            }
            const py::gil_scoped_release release;
            const Hold hold({image});
            const io::Frame frame = FrameOf(*image, image->frame.image.Shared());
            io::Save(path, frame.image, frame.header, {bits, found->second});
        },
        py::arg("path"), py::arg("image"), py::arg("bits"), py::arg("scale"));
}

} // namespace corvane::python
