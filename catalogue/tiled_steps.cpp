#include "catalogue/tiled_steps.h"

#include <algorithm>
#include <utility>

#include "catalogue/footprint.h"
#include "corvane/core/error.h"
#include "corvane/core/world_coordinates.h"

namespace corvane::catalogue {
namespace {

Footprint ReachOf(const Step& step)
{
    return FootprintOf(*step.operation, step.arguments);
}

void CheckTiled(const Step& step, bool hasOwnLevels)
{
    const Footprint footprint = ReachOf(step);
    const std::string name = step.operation->name;
    if (footprint.rows == Footprint::kWhole || !footprint.MayBeCut(hasOwnLevels)) {
        throw ParameterError("an image is worked on as a whole, since a sample depends on " +
                             catalogue::ToText(footprint))
            .Of(name);
    }
    const bool namesImage =
        std::any_of(step.arguments.List().begin(), step.arguments.List().end(),
                    [](const Argument& argument) { return argument.parameter->kind == Kind::Image; });
    if (namesImage || !WrittenFilesOf(step.arguments).empty()) {
        throw ParameterError("an image is worked on as a whole when another one is read or written").Of(name);
    }
}

/// Leaves some rows of a frame. What is said of it stays: it stands for the whole.
void KeepRows(const RowSpan& rows, io::Frame& frame)
{
    const int height = frame.image.GetHeight();
    if (rows.first > 0 || rows.end < height) {
        const Value rect = CRect(0, rows.first, frame.image.GetWidth(), rows.end);
        const WorldCoordinates coordinates = frame.image.GetCoordinates();
        const io::Header header = frame.header;
        DoStep(Step("crop", Settings{{"rect", rect}}), frame, {});
        frame.header = header;
        frame.image.SetCoordinates(coordinates);
    }
}

} // namespace

TiledSteps::TiledSteps(std::vector<Step> steps, int width, int height, bool hasOwnLevels)
    : steps_(std::move(steps)), width_(width), height_(height)
{
    for (const Step& step : steps_) {
        CheckTiled(step, hasOwnLevels);
        CheckFiles(step.arguments);
    }
}

bool TiledSteps::ReadLevels() const
{
    return std::any_of(steps_.begin(), steps_.end(),
                       [](const Step& step) { return ReachOf(step).levels != LevelUse::Unread; });
}

/// The rows that each step works on, and those of the result. Before and after the rows of a step lies an even number
/// of others, so that a header tells the filters of a mosaic right, from whichever end it counts.
std::vector<RowSpan> TiledSteps::SpansFor(const RowSpan& rows) const
{
    std::vector<RowSpan> spans{rows};
    for (std::size_t i = steps_.size(); i > 0; --i) {
        const CRect after(0, spans.back().first, width_, spans.back().end);
        const CRect cut = CutFor(ReachOf(steps_[i - 1]), after, width_, height_);
        const int first = static_cast<int>(cut.top);
        const int end = static_cast<int>(cut.bottom);
        spans.push_back({first - first % 2, end + (height_ - end) % 2});
    }
    std::reverse(spans.begin(), spans.end());
    return spans;
}

void TiledSteps::Make(const RowSpan& rows, io::Frame& frame, const Run& run) const
{
    const std::vector<RowSpan> spans = SpansFor(rows);
    for (std::size_t i = 0; i < steps_.size(); ++i) {
        const auto& [first, end] = spans[i];
        Step moved = steps_[i];
        moved.arguments = MovedInto(CRect(0, first, width_, end), moved.arguments);
        DoStep(moved, frame, run);
        frame.header.AddHistory("corvane apply " + ToText(steps_[i]));
        KeepRows({spans[i + 1].first - first, spans[i + 1].end - first}, frame);
    }
}

} // namespace corvane::catalogue
