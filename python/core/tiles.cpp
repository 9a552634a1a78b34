// Images that are worked on in parts.

#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <pybind11/stl.h>

#include "catalogue/tiled_steps.h"
#include "corvane/core/blank.h"
#include "corvane/core/error.h"
#include "corvane/core/fold.h"
#include "io/reader.h"
#include "python/core/image.h"
#include "python/core/operations.h"
#include "python/core/run.h"

namespace corvane::python {
namespace {

using Levels = std::vector<std::pair<double, double>>;
using Range = std::optional<std::pair<double, double>>;

/// The smallest and the largest sample of a plane, as `GetMinMax`; none where none is defined.
Range RangeOf(const CStlImage& image, int plane)
{
    const BlankTest isBlank(image);
    const Extremes extremes = ExtremesOf(CRect(0, 0, image.GetWidth(), image.GetHeight()), [&](Extremes& part, int y) {
        part.Add(image.GetImageAdr(0, y, plane, 1), image.GetWidth(), isBlank);
    });
    return extremes.Empty() ? Range() : std::pair(extremes.Min(), extremes.Max());
}

/// A file, and steps that are done with rows of it.
class Tiles {
public:
    Tiles(const std::string& path, const std::vector<std::string>& steps) : reader_(io::OpenFrame(path))
    {
        levelsKnown_ = reader_->Describe(record_);
        steps_.emplace(std::vector<catalogue::Step>(steps.begin(), steps.end()), reader_->Width(), reader_->Height(),
                       record_.HasOwnLevel() != 0);
    }

    std::tuple<int, int, int> Shape() const { return {reader_->Planes(), reader_->Height(), reader_->Width()}; }
    bool NeedLevels() const { return !levelsKnown_ && steps_->ReadLevels(); }

    std::vector<Range> Ranges(int first, int end)
    {
        const py::gil_scoped_release release;
        const io::Frame frame = Read(Checked(first, end), {});
        std::vector<Range> found;
        for (int plane = 0; plane < frame.image.GetPlanes(); ++plane) {
            found.push_back(RangeOf(frame.image, plane));
        }
        return found;
    }

    SharedImage Make(int first, int end, const std::optional<Levels>& levels, int threads)
    {
        const RowSpan rows = Checked(first, end);
        PythonRun python(py::none(), threads);
        return Shared(python.Do([&](const Run& run) {
            io::Frame frame = Read(steps_->NeededFor(rows), levels);
            steps_->Make(rows, frame, run);
            return frame;
        }));
    }

private:
    RowSpan Checked(int first, int end) const
    {
        if (first < 0 || end <= first || end > reader_->Height()) {
            throw ParameterError("rows", std::to_string(first) + " to " + std::to_string(end),
                                 "must lie within 0 to " + std::to_string(reader_->Height()));
        }
        return {first, end};
    }

    io::Frame Read(const RowSpan& rows, const std::optional<Levels>& levels)
    {
        const int count = rows.end - rows.first;
        io::Frame frame{CStlImage(-32, reader_->Width(), count, reader_->Planes(), 1.0, 0.0, 0), reader_->GetHeader()};
        reader_->Describe(frame.image);
        for (int plane = 0; plane < reader_->Planes(); ++plane) {
            for (int row = 0; row < count; ++row) {
                reader_->ReadRows(plane, rows.first + row, 1, frame.image.GetImageAdr(0, row, plane));
            }
            if (levels) {
                const auto& [low, high] = levels->at(static_cast<std::size_t>(plane));
                frame.image.SetLevel(plane, low, high);
                frame.image.SetOrgDefaultLevel(plane, low, high);
            }
        }
        return frame;
    }

    std::unique_ptr<io::FrameReader> reader_;
    CStlImage record_{};
    bool levelsKnown_ = false;
    std::optional<catalogue::TiledSteps> steps_;
};

} // namespace

void BindTiles(py::module_& module)
{
    py::class_<Tiles>(module, "Tiles", "A file, and steps that are done with rows of it.")
        .def(py::init<const std::string&, const std::vector<std::string>&>(), py::arg("path"), py::arg("steps"))
        .def_property_readonly("shape", &Tiles::Shape)
        .def_property_readonly("need_levels", &Tiles::NeedLevels)
        .def("ranges", &Tiles::Ranges, py::arg("first"), py::arg("end"))
        .def("make", &Tiles::Make, py::arg("first"), py::arg("end"), py::arg("levels"), py::arg("threads"));
    module.def(
        "fits_head",
        [](const SharedImage& part, int rows) {
            const io::Frame frame = FrameOf(*part);
            return py::bytes(io::FitsHead(frame.image, frame.header, rows));
        },
        py::arg("part"), py::arg("rows"));
    module.def(
        "fits_part",
        [](const SharedImage& part, int plane) {
            if (plane < 0 || plane >= part->frame.image.GetPlanes()) {
                throw ParameterError("plane", std::to_string(plane), "is none of the image");
            }
            return py::bytes(io::FitsPart(part->frame.image, plane));
        },
        py::arg("part"), py::arg("plane"));
}

} // namespace corvane::python
