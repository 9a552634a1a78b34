#include "python/core/operations.h"

#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "catalogue/apply.h"
#include "catalogue/operations.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "python/core/image.h"
#include "python/core/run.h"
#include "python/core/values.h"

namespace corvane::python {
namespace {

bool TakesMany(const catalogue::Operation& operation, const std::string& name)
{
    return std::any_of(operation.inputs.begin(), operation.inputs.end(), [&](const catalogue::Input& input) {
        return input.name == name && (input.count == catalogue::Count::Several || input.count == catalogue::Count::Any);
    });
}

/// Frames over the images that are given by the names of the inputs; the images join those that are used.
catalogue::Inputs InputsOf(const catalogue::Operation& operation, const py::dict& images,
                           std::vector<SharedImage>& used)
{
    catalogue::Inputs inputs;
    for (const auto& [key, value] : images) {
        const auto name = key.cast<std::string>();
        const auto add = [&, &frames = inputs[name]](py::handle image) {
            used.push_back(ImageOf(image, name));
            frames.push_back(FrameOf(*used.back()));
        };
        if (!TakesMany(operation, name)) {
            add(value);
            continue;
        }
        for (const py::handle image : py::iter(value)) {
            add(image);
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

py::object RunSeveral(const catalogue::Operation& operation, catalogue::Inputs inputs,
                      const catalogue::Settings& settings, const std::vector<SharedImage>& used, PythonRun& python)
{
    catalogue::Outputs outputs = python.Do([&](const Run& run) {
        const Hold hold(used);
        return Apply(operation.name, std::move(inputs), settings, run);
    });
    py::dict made;
    for (const catalogue::Output& output : operation.outputs) {
        if (const auto found = outputs.find(output.name); found != outputs.end()) {
            made[py::str(output.name)] = Made(found->second);
        }
    }
    return made;
}

py::object RunSteps(const io::Frame& frame, const std::vector<catalogue::Step>& steps,
                    const std::vector<SharedImage>& used, PythonRun& python)
{
    return py::cast(Shared(python.Do([&](const Run& run) {
        const Hold hold(used);
        return Apply(frame, steps, run);
    })));
}

/// A step gives its image, other operations what they make by the names of the outputs.
py::object RunNamed(const std::string& name, const py::dict& images, const py::dict& values, const py::object& progress,
                    int threads)
{
    const catalogue::Operation& operation = catalogue::FindOperation(name);
    std::vector<SharedImage> used;
    const catalogue::Settings settings = SettingsOf(operation, values, &used);
    catalogue::Inputs inputs = InputsOf(operation, images, used);
    PythonRun run(progress, threads);
    if (!operation.IsStep()) {
        return RunSeveral(operation, std::move(inputs), settings, used, run);
    }
    return RunSteps(inputs.begin()->second.front(), {catalogue::Step(operation.name, settings)}, used, run);
}

py::object RunTexts(const py::object& image, const std::vector<std::string>& steps, const py::object& progress,
                    int threads)
{
    const std::vector<catalogue::Step> parsed(steps.begin(), steps.end());
    PythonRun run(progress, threads);
    const SharedImage given = ImageOf(image, "image");
    return RunSteps(FrameOf(*given), parsed, {given}, run);
}

/// The files that steps read, and those that they write.
std::pair<std::vector<std::string>, std::vector<std::string>> FilesOfSteps(const std::vector<std::string>& texts)
{
    std::pair<std::vector<std::string>, std::vector<std::string>> files;
    for (const std::string& text : texts) {
        const catalogue::Step step(text);
        const auto add = [](std::vector<std::string>& to, const std::vector<std::string>& more) {
            to.insert(to.end(), more.begin(), more.end());
        };
        add(files.first, catalogue::FilesOf(step.arguments));
        add(files.second, catalogue::WrittenFilesOf(step.arguments));
    }
    return files;
}

} // namespace

void BindOperations(py::module_& module)
{
    module.def("run", &RunNamed, py::arg("operation"), py::arg("images"), py::arg("values"), py::arg("progress"),
               py::arg("threads"));
    module.def("files_of", &FilesOfSteps, py::arg("steps"));
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
            const io::Frame frame = FrameOf(*image);
            const py::gil_scoped_release release;
            const Hold hold({image});
            io::Save(path, frame.image, frame.header, {bits, found->second});
        },
        py::arg("path"), py::arg("image"), py::arg("bits"), py::arg("scale"));
}

} // namespace corvane::python
