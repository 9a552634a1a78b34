#include "catalogue/stars.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/cancel.h"
#include "cli/session.h"
#include "cli/star_map.h"
#include "cli/star_plot.h"
#include "cli/star_words.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/frame.h"
#include "io/metadata.h"
#include "io/output_file.h"

namespace corvane::cli {
namespace {

using catalogue::SeenWidths;

constexpr const char* kPlotEnding = ".svg";

struct WidthWords {
    StarWords stars;
    std::string plot;
};

catalogue::Arguments CheckedArguments(const WidthWords& words)
{
    catalogue::Arguments arguments = CheckedArguments(words.stars, {words.stars.map, words.plot});
    if (!words.plot.empty()) {
        if (!words.plot.ends_with(kPlotEnding)) {
            throw NameError(words.plot, std::string("is no name for a plot; it must end with ") + kPlotEnding);
        }
        io::OutputFile::Check(words.plot);
    }
    return arguments;
}

/// Only those that were asked for by their places are missed.
void WarnOfFaults(const WidthWords& words, const stars::FieldWidths& widths, const catalogue::Arguments& arguments)
{
    for (std::size_t i = 0; i < widths.stars.size() && arguments.Has("at"); ++i) {
        if (!widths.stars[i].IsUsed()) {
            std::cerr << "corvane: " << words.stars.Input() << ": warning: " << catalogue::FaultOf(widths, i, arguments)
                      << "\n";
        }
    }
}

Json RegionsJson(const stars::FieldWidths& widths)
{
    Json parts = Json::array();
    for (const auto& row : widths.parts) {
        Json ofRow = Json::array();
        for (const stars::FieldPart& part : row) {
            ofRow.push_back({{"used", part.stars}, {"mean_fwhm", part.stars > 0 ? Json(part.fwhm) : Json()}});
        }
        parts.push_back(ofRow);
    }
    return parts;
}

/// The means of the parts of the field, as they lie in a picture.
std::string PartsText(const stars::FieldWidths& widths, bool bottomUp)
{
    std::string text;
    for (int i = 0; i < stars::kFieldParts; ++i) {
        for (const stars::FieldPart& part : widths.parts[bottomUp ? stars::kFieldParts - 1 - i : i]) {
            const std::string mean = part.stars > 0 ? NumberText(part.fwhm, 2) : "-";
            const std::string cell = mean + " (" + std::to_string(part.stars) + ")";
            text += std::string(cell.size() < 14 ? 14 - cell.size() : 1, ' ') + cell;
        }
        text += "\n";
    }
    return text;
}

std::string SummaryOf(const WidthWords& words, const SeenWidths& seen, bool bottomUp)
{
    const stars::FieldWidths& widths = seen.widths;
    return words.stars.Input() + ", plane " + std::to_string(seen.plane) + ": " + std::to_string(widths.stars.size()) +
           (widths.stars.size() == 1 ? " star, " : " stars, ") + std::to_string(widths.used) + " used\nFWHM mean " +
           NumberText(widths.meanFwhm, 2) + ", median " + NumberText(widths.medianFwhm, 2) +
           " pixels\nmean (stars) in the parts of the picture:\n" + PartsText(widths, bottomUp);
}

std::vector<Mark> MarksOf(const stars::FieldWidths& widths)
{
    std::vector<Mark> marks;
    for (const stars::MeasuredStar& star : widths.stars) {
        marks.push_back({star.x, star.y, star.fwhm, star.IsUsed()});
    }
    return marks;
}

/// Both pictures or none.
void SavePictures(const WidthWords& words, const io::Frame& frame, const stars::FieldWidths& widths)
{
    std::optional<io::OutputFile> plot;
    if (!words.plot.empty()) {
        const PlottedField field{words.stars.Input(), frame.image.GetWidth(), frame.image.GetHeight(),
                                 io::IsBottomUp(frame.header)};
        const std::string svg = PlotWidths(field, widths);
        plot.emplace(words.plot).Write(svg.data(), svg.size());
    }
    if (!words.stars.map.empty()) {
        SaveStarMap(words.stars.map, frame, MarksOf(widths));
    }
    if (plot) {
        plot->Commit();
    }
}

int Stars(const WidthWords& words, const Session& session)
{
    const catalogue::Arguments arguments = CheckedArguments(words);
    io::Frame frame = io::Load(words.stars.Input());
    ThrowIfCancelled();
    const SeenWidths seen =
        OnInput(words.stars, [&] { return catalogue::MeasureStars(frame.image, arguments, RunOf(session)); });
    ThrowIfCancelled();
    SavePictures(words, frame, seen.widths);
    Json field = FieldJson(words.stars, FieldTable(seen));
    field["regions"] = RegionsJson(seen.widths);
    PrintStars(words.stars, field, StarTable(seen), SummaryOf(words, seen, io::IsBottomUp(frame.header)));
    if (!session.quiet) {
        WarnOfFaults(words, seen.widths, arguments);
    }
    return kDone;
}

} // namespace

void AddStars(CLI::App& app, Session& session)
{
    auto words = std::make_shared<WidthWords>();
    CLI::App& command = AddStarCommand(app, session, "stars", words->stars);
    command.add_option("--plot", words->plot, "Write a drawing of the widths over the field, too")
        ->type_name("OUT.svg");
    command.footer(command.get_footer() + " `--at` takes all places up to the next option: put the image first. On the "
                                          "map stars that count are green, others orange.");
    command.callback([&session, words] { session.work = [&session, words] { return Stars(*words, session); }; });
}

} // namespace corvane::cli
