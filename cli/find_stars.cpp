#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cli/cancel.h"
#include "cli/session.h"
#include "cli/star_map.h"
#include "cli/star_words.h"
#include "corvane/core/text.h"
#include "stars/measure_stars.h"

namespace corvane::cli {
namespace {

using Json = nlohmann::ordered_json;

Table TableOf(const stars::StarField& field)
{
    Table table;
    table.columns = {{"star", 0},
                     {"x", 2},
                     {"y", 2},
                     {"peak", kSignificant},
                     {"sky", kSignificant},
                     {"noise", kSignificant},
                     {"flux", kSignificant},
                     {"fwhm", 2},
                     {"elongation", 2},
                     {"flags", kWords}};
    for (const stars::FieldStar& star : field.stars) {
        table.rows.push_back(Json::array({table.rows.size() + 1, star.x, star.y, star.peak, star.sky, star.noise,
                                          star.flux, star.fwhm, star.elongation, stars::FlagWords(star)}));
    }
    return table;
}

/// How many stars have each flag; a star may have several.
std::map<std::string, int> CountFlags(const stars::StarField& field)
{
    std::map<std::string, int> counts;
    for (const stars::FieldStar& star : field.stars) {
        for (const std::string& word : stars::FlagWords(star)) {
            ++counts[word];
        }
    }
    return counts;
}

int CountUsable(const stars::StarField& field)
{
    return static_cast<int>(std::count_if(field.stars.begin(), field.stars.end(),
                                          [](const stars::FieldStar& star) { return star.IsUsable(); }));
}

Json FieldJson(const StarWords& words, int plane, const stars::StarField& field)
{
    return {{"file", words.input},
            {"plane", plane},
            {"sky", field.sky},
            {"noise", field.noise},
            {"fwhm", field.fwhm},
            {"found", field.stars.size()},
            {"usable", CountUsable(field)},
            {"flags", CountFlags(field)}};
}

std::string SummaryOf(const StarWords& words, int plane, const stars::StarField& field)
{
    std::string flags;
    for (const auto& [word, count] : CountFlags(field)) {
        flags += ", " + std::to_string(count) + " " + word;
    }
    return words.input + ", plane " + std::to_string(plane) + ": " + std::to_string(field.stars.size()) +
           (field.stars.size() == 1 ? " star" : " stars") + ", " + std::to_string(CountUsable(field)) + " usable" +
           flags + "\nsky " + NumberText(field.sky, 3) + ", noise " + NumberText(field.noise, 3) + ", FWHM " +
           NumberText(field.fwhm, 2) + " pixels\n";
}

std::vector<Mark> MarksOf(const stars::StarField& field)
{
    std::vector<Mark> marks;
    for (const stars::FieldStar& star : field.stars) {
        marks.push_back({star.x, star.y, star.fwhm, star.IsUsable()});
    }
    return marks;
}

int FindStars(const StarWords& words)
{
    CheckStarWords(words, {words.map});
    io::Frame frame = io::Load(words.input);
    ThrowIfCancelled();
    const int plane = ChosenPlane(words, frame.image);
    const stars::StarField field = FindIn(words, frame.image, plane);
    ThrowIfCancelled();
    if (!words.map.empty()) {
        SaveStarMap(words.map, frame, MarksOf(field));
    }
    PrintStars(words, TableOf(field), FieldJson(words, plane, field), SummaryOf(words, plane, field));
    return kDone;
}

} // namespace

void AddFindStars(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("find-stars", "Find the stars of an image and list what is known of each");
    auto words = std::make_shared<StarWords>();
    AddCommonOptions(command, session);
    AddStarOptions(command, *words);
    command
        .add_option("--saturation", words->find.fullWell,
                    "Samples from this value on are saturated; else judged by the image")
        ->type_name("N");
    command.footer("Columns and rows count from 0 in the middle of the file's first sample. Flags tell what speaks "
                   "against measuring with a star: saturated, hot (a hot pixel or a particle's hit), elongated, edge, "
                   "crowded. On the map such stars are orange, others green.");
    command.callback([&session, words] { session.work = [words] { return FindStars(*words); }; });
}

} // namespace corvane::cli
