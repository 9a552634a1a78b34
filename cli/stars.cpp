#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "catalogue/parameter.h"
#include "cli/cancel.h"
#include "cli/session.h"
#include "cli/star_map.h"
#include "cli/star_plot.h"
#include "cli/star_words.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"
#include "io/metadata.h"
#include "io/output_file.h"
#include "stars/measure_stars.h"

namespace corvane::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kDefaultLimit = 500;      // whose widths tell those of all
constexpr double kDefaultSigmas = 10.0; // noise makes widths of fainter stars uncertain by a tenth and more
constexpr const char* kPlotEnding = ".svg";

struct NamedStar {
    double x;
    double y;
};

struct WidthWords {
    StarWords stars;
    std::vector<std::string> at;
    std::string plot;
};

NamedStar ParsePlace(const std::string& text)
{
    const catalogue::Parameter at{.name = "at", .kind = catalogue::Kind::Numbers, .summary = "", .choices = {"X,Y"}};
    const auto numbers = std::get<std::vector<double>>(catalogue::ParseValue(at, text));
    return {numbers[0], numbers[1]};
}

std::vector<NamedStar> ParsePlaces(const std::vector<std::string>& texts)
{
    std::vector<NamedStar> places;
    for (const std::string& text : texts) {
        places.push_back(ParsePlace(text));
    }
    return places;
}

void CheckWords(const WidthWords& words)
{
    CheckStarWords(words.stars, {words.stars.map, words.plot});
    if (!words.plot.empty()) {
        if (!words.plot.ends_with(kPlotEnding)) {
            throw NameError(words.plot, std::string("is no name for a plot; it must end with ") + kPlotEnding);
        }
        io::OutputFile::Check(words.plot);
    }
}

std::vector<CPoint> PixelsOf(const std::vector<NamedStar>& places, const WidthWords& words, const CStlImage& image)
{
    std::vector<CPoint> pixels;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const int x = static_cast<int>(std::clamp(std::floor(places[i].x + 0.5), -1.0, 1e9));
        const int y = static_cast<int>(std::clamp(std::floor(places[i].y + 0.5), -1.0, 1e9));
        if (x < 0 || y < 0 || x >= image.GetWidth() || y >= image.GetHeight()) {
            throw FileError(words.stars.input, "--at = " + words.at[i] + ": must lie within the image, 0,0 to " +
                                                   std::to_string(image.GetWidth() - 1) + "," +
                                                   std::to_string(image.GetHeight() - 1));
        }
        pixels.emplace_back(x, y);
    }
    return pixels;
}

/// Why one star does not count, "star at 12,34: saturated"; a named one is called as it was named.
std::string FaultOf(const WidthWords& words, const stars::FieldWidths& widths, std::size_t i)
{
    const stars::MeasuredStar& star = widths.stars[i];
    const std::string place = words.at.empty() ? NumberText(star.x, 1) + "," + NumberText(star.y, 1) : words.at[i];
    return "star at " + place + ": " + star.fault;
}

[[noreturn]] void FailWithout(const WidthWords& words, const stars::FieldWidths& widths)
{
    constexpr std::size_t kMostTold = 3;
    std::string faults;
    for (std::size_t i = 0; i < std::min(widths.stars.size(), kMostTold); ++i) {
        faults += "; " + FaultOf(words, widths, i);
    }
    faults += widths.stars.size() > kMostTold ? "; ..." : "";
    throw FileError(words.stars.input, "no star could be measured" + faults);
}

void WarnOfFaults(const WidthWords& words, const stars::FieldWidths& widths)
{
    for (std::size_t i = 0; i < words.at.size(); ++i) {
        if (!widths.stars[i].IsUsed()) {
            std::cerr << "corvane: " << words.stars.input << ": warning: " << FaultOf(words, widths, i) << "\n";
        }
    }
}

stars::FieldWidths Measure(const WidthWords& words, const std::vector<NamedStar>& places, io::Frame& frame, int plane)
{
    const double sigmas = words.stars.find.sigmas;
    if (!places.empty()) {
        return stars::MeasureStars(frame.image, plane, PixelsOf(places, words, frame.image), sigmas);
    }
    const stars::StarField field = FindIn(words.stars, frame.image, plane);
    ThrowIfCancelled();
    return stars::MeasureStars(frame.image, plane, field.stars, sigmas);
}

Table TableOf(const stars::FieldWidths& widths)
{
    Table table;
    table.columns = {
        {"star", 0}, {"x", 2},         {"y", 2}, {"peak", kSignificant}, {"sky", kSignificant}, {"flux", kSignificant},
        {"fwhm", 2}, {"fault", kWords}};
    for (const stars::MeasuredStar& star : widths.stars) {
        const bool isMeasured = star.fwhm > 0.0;
        table.rows.push_back(
            Json::array({table.rows.size() + 1, star.x, star.y, star.peak, star.sky,
                         isMeasured ? Json(star.flux) : Json(), isMeasured ? Json(star.fwhm) : Json(), star.fault}));
    }
    return table;
}

Json FieldJson(const WidthWords& words, int plane, const stars::FieldWidths& widths)
{
    Json parts = Json::array();
    for (const auto& row : widths.parts) {
        Json ofRow = Json::array();
        for (const stars::FieldPart& part : row) {
            ofRow.push_back({{"used", part.stars}, {"mean_fwhm", part.stars > 0 ? Json(part.fwhm) : Json()}});
        }
        parts.push_back(ofRow);
    }
    return {
        {"file", words.stars.input},        {"plane", plane},  {"used", widths.used}, {"mean_fwhm", widths.meanFwhm},
        {"median_fwhm", widths.medianFwhm}, {"regions", parts}};
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

std::string SummaryOf(const WidthWords& words, int plane, const stars::FieldWidths& widths, bool bottomUp)
{
    return words.stars.input + ", plane " + std::to_string(plane) + ": " + std::to_string(widths.stars.size()) +
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
void SavePictures(const WidthWords& words, io::Frame& frame, const stars::FieldWidths& widths)
{
    std::optional<io::OutputFile> plot;
    if (!words.plot.empty()) {
        const PlottedField field{words.stars.input, frame.image.GetWidth(), frame.image.GetHeight(),
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
    const std::vector<NamedStar> places = ParsePlaces(words.at);
    CheckWords(words);
    io::Frame frame = io::Load(words.stars.input);
    ThrowIfCancelled();
    const int plane = ChosenPlane(words.stars, frame.image);
    const stars::FieldWidths widths = Measure(words, places, frame, plane);
    ThrowIfCancelled();
    if (widths.used == 0) {
        FailWithout(words, widths);
    }
    SavePictures(words, frame, widths);
    PrintStars(words.stars, TableOf(widths), FieldJson(words, plane, widths),
               SummaryOf(words, plane, widths, io::IsBottomUp(frame.header)));
    if (!session.quiet) {
        WarnOfFaults(words, widths);
    }
    return kDone;
}

} // namespace

void AddStars(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("stars", "Measure how wide the stars of an image are");
    auto words = std::make_shared<WidthWords>();
    words->stars.limit = kDefaultLimit;
    words->stars.find.sigmas = kDefaultSigmas;
    AddCommonOptions(command, session);
    AddStarOptions(command, words->stars);
    command.add_option("--at", words->at, "Roughly where the stars are; else they are found")->type_name("X,Y ...");
    command.add_option("--plot", words->plot, "Write a drawing of the widths over the field, too")
        ->type_name("OUT.svg");
    command.footer("FWHM is the full width at half maximum along the row and the column of a star's peak, to which the "
                   "samples rise from the place that is named. Columns and rows count from 0 in the middle of the "
                   "file's first sample; x and y are the centroid. `--at` takes all places up to the next option: put "
                   "the image first. On the map stars that count are green, others orange.");
    command.callback([&session, words] { session.work = [&session, words] { return Stars(*words, session); }; });
}

} // namespace corvane::cli
