#include <map>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/stars.h"
#include "cli/cancel.h"
#include "cli/session.h"
#include "cli/star_map.h"
#include "cli/star_words.h"
#include "corvane/core/text.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

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

std::string SummaryOf(const StarWords& words, const catalogue::SeenStars& seen)
{
    const stars::StarField& field = seen.field;
    std::string flags;
    for (const auto& [word, count] : CountFlags(field)) {
        flags += ", " + std::to_string(count) + " " + word;
    }
    return words.Input() + ", plane " + std::to_string(seen.plane) + ": " + std::to_string(field.stars.size()) +
           (field.stars.size() == 1 ? " star" : " stars") + ", " + std::to_string(seen.Usable()) + " usable" + flags +
           "\nsky " + NumberText(field.sky, 3) + ", noise " + NumberText(field.noise, 3) + ", FWHM " +
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

int FindStars(const StarWords& words, const Session& session)
{
    const catalogue::Arguments arguments = CheckedArguments(words, {words.map});
    io::Frame frame = io::Load(words.Input());
    ThrowIfCancelled();
    const catalogue::SeenStars seen =
        OnInput(words, [&] { return catalogue::FindStars(frame.image, arguments, RunOf(session)); });
    ThrowIfCancelled();
    if (!words.map.empty()) {
        SaveStarMap(words.map, frame, MarksOf(seen.field));
    }
    nlohmann::ordered_json field = FieldJson(words, FieldTable(seen));
    field["flags"] = CountFlags(seen.field);
    PrintStars(words, field, StarTable(seen), SummaryOf(words, seen));
    return kDone;
}

} // namespace

void AddFindStars(CLI::App& app, Session& session)
{
    auto words = std::make_shared<StarWords>();
    CLI::App& command = AddStarCommand(app, session, "find-stars", *words);
    command.footer(command.get_footer() + " On the map such stars are orange, others green.");
    command.callback([&session, words] { session.work = [&session, words] { return FindStars(*words, session); }; });
}

} // namespace corvane::cli
