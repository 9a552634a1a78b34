// A night's frames, from files.

#include "python/core/night.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "catalogue/names.h"
#include "corvane/core/error.h"
#include "python/core/image.h"
#include "python/core/operations.h"
#include "python/core/run.h"
#include "python/core/values.h"
#include "stack/follow.h"
#include "stack/names.h"
#include "stack/operation.h"
#include "stack/sort/sort.h"
#include "stack/stack.h"

namespace corvane::python {
namespace {

const catalogue::Operation& NightOperation(const char* name)
{
    static const std::vector<catalogue::Operation> operations = stack::Operations();
    return *catalogue::FindNamed(operations, name);
}

py::dict ToDict(const stack::FrameReport& light)
{
    py::dict made;
    made["file"] = light.file;
    made["used"] = light.used;
    made["reason"] = light.reason;
    made["dx"] = light.dx;
    made["dy"] = light.dy;
    made["angle"] = light.angle;
    made["scale"] = light.scale;
    made["matched"] = light.matched;
    made["residual"] = light.residual;
    made["stars"] = light.stars;
    made["fwhm"] = light.fwhm;
    made["background"] = light.background;
    made["noise"] = light.noise;
    made["flux_ratio"] = light.fluxRatio;
    made["weight"] = light.weight;
    made["rejected"] = light.rejected ? py::cast(light.rejected->low + light.rejected->high) : py::none();
    return made;
}

py::dict ToDict(const stack::Registration& lights)
{
    py::list frames;
    for (const stack::FrameReport& light : lights.frames) {
        frames.append(ToDict(light));
    }
    py::dict seconds;
    for (const stack::Lap& lap : lights.laps) {
        seconds[py::str(lap.name)] = lap.seconds;
    }
    py::dict made;
    made["frames"] = frames;
    made["reference"] = lights.referenceLight;
    made["notes"] = lights.notes;
    made["seconds"] = seconds;
    return made;
}

/// What is known of each sample, on the grid of the stack; None where it was not asked for.
py::object MapOf(CStlImage& samples, const CStlImage& image)
{
    if (samples.GetPlanes() == 0) {
        return py::none();
    }
    samples.SetCoordinates(image.GetCoordinates());
    return py::cast(Shared({std::move(samples), {}}));
}

py::object RejectionOf(const stack::Result& result)
{
    return result.rejection ? py::cast(stack::NameOf(stack::kRejectNames, *result.rejection)) : py::none();
}

} // namespace

stack::Options AskedOptions(const char* name, const Paths& paths, const py::dict& values, const Besides& besides)
{
    const catalogue::Operation& operation = NightOperation(name);
    const catalogue::Arguments arguments = catalogue::MakeArguments(operation, SettingsOf(operation, values));
    stack::Options options = stack::OptionsOf(paths, arguments);
    if (options.lights.empty()) {
        throw InputError("light", "is missing");
    }
    options.mastersFolder = besides.masters;
    options.registered = besides.registered;
    for (const std::string& place : besides.follow) {
        options.follow.push_back(stack::ReadFollowedPlace(place));
    }
    options.wantsBoth = besides.both;
    if (besides.maps) {
        stack::WantAllMaps(options);
    }
    options.wantsReport = true; // for the depth
    stack::CheckOptions(options);
    return options;
}

stack::Options SortedOptions(const stack::Options& asked, const Run& run)
{
    stack::SortedNight night = stack::SortFrames(asked, {asked.registered, asked.mastersFolder}, run);
    for (const std::string& warning : night.warnings) {
        run.TellNote(warning);
    }
    if (night.stacks.size() > 1) {
        std::string filters;
        for (const stack::SortedStack& stack : night.stacks) {
            filters += (filters.empty() ? "" : ", ") + stack.filter;
        }
        throw ParameterError("filter", "none", "there are lights of several, of which it takes one: " + filters);
    }
    return night.stacks.front().options;
}

py::dict StackDict(stack::Result&& result)
{
    py::dict made = ToDict(static_cast<const stack::Registration&>(result));
    made["rejection"] = RejectionOf(result);
    made["depth"] = py::none();
    if (result.depth) {
        made["depth"] = py::make_tuple(result.depth->light, result.depth->ideal, result.depth->stack);
    }
    for (const auto& [name, samples] : {std::pair("coverage", &result.coverage), std::pair("weights", &result.weights),
                                        std::pair("rejected", &result.rejected), std::pair("noise", &result.noise)}) {
        made[name] = MapOf(*samples, result.image);
    }
    made["stars"] = py::none();
    if (result.stars.GetPlanes() > 0) {
        made["stars"] = Shared({std::move(result.stars), std::move(result.starsHeader)});
    }
    made["image"] = Shared({std::move(result.image), std::move(result.header)});
    return made;
}

namespace {

py::dict Stack(const Paths& paths, const py::dict& values, const Besides& besides, const py::object& progress,
               int threads)
{
    const stack::Options asked = AskedOptions("stack", paths, values, besides);
    PythonRun python(progress, threads);
    return StackDict(python.Do([&](const Run& run) { return stack::Stack(SortedOptions(asked, run), run); }));
}

py::dict Register(const Paths& paths, const py::dict& values, const Besides& besides, const py::object& progress,
                  int threads)
{
    const stack::Options asked = AskedOptions("register", paths, values, besides);
    PythonRun python(progress, threads);
    return ToDict(python.Do([&](const Run& run) { return stack::Register(SortedOptions(asked, run), run); }));
}

} // namespace

void BindNight(py::module_& module)
{
    module.def(
        "stack",
        [](const Paths& paths, const py::dict& values, const std::string& masters, const std::string& registered,
           const std::vector<std::string>& follow, bool both, bool maps, const py::object& progress, int threads) {
            return Stack(paths, values, {masters, registered, follow, both, maps}, progress, threads);
        },
        py::arg("paths"), py::arg("values"), py::arg("masters"), py::arg("registered"), py::arg("follow"),
        py::arg("both"), py::arg("maps"), py::arg("progress"), py::arg("threads"));
    module.def(
        "register",
        [](const Paths& paths, const py::dict& values, const std::string& masters, const py::object& progress,
           int threads) { return Register(paths, values, {.masters = masters}, progress, threads); },
        py::arg("paths"), py::arg("values"), py::arg("masters"), py::arg("progress"), py::arg("threads"));
}

} // namespace corvane::python
