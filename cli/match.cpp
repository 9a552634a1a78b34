#include "catalogue/match.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "cli/cancel.h"
#include "cli/pair.h"
#include "cli/session.h"

namespace corvane::cli {
namespace {

struct MatchWords {
    std::string reference;
    std::string image;
    std::vector<double> start;
    std::optional<int> range;
    bool json = false;
    catalogue::MatchOptions match;
};

void Print(const catalogue::Match& match, bool json)
{
    if (json) {
        const nlohmann::ordered_json all = {{"x", match.x},
                                            {"y", match.y},
                                            {"correlation", match.correlation},
                                            {"rms", match.rms},
                                            {"rival", match.rival}};
        std::cout << all.dump(2) << "\n";
    } else {
        std::printf("x %.1f, y %.1f, correlation %.3f, rms %.6g\n", match.x, match.y, match.correlation, match.rms);
    }
}

void FinishWords(MatchWords& words)
{
    if (words.range) {
        words.match.range = *words.range;
    }
    if (!words.start.empty()) {
        if (words.start.size() != 2) {
            throw UsageError("--start: must be X,Y");
        }
        words.match.start = {words.start[0], words.start[1]};
    } else if (words.range) {
        throw UsageError("--range: needs --start, about which it lies; without both the whole image is searched");
    }
    catalogue::CheckMatch(words.match);
}

int Match(MatchWords& words, const Session& session)
{
    FinishWords(words);
    io::Frame reference = io::Load(words.reference);
    io::Frame image = io::Load(words.image);
    ThrowIfCancelled();
    const catalogue::Match match = catalogue::RunMatch(reference, image, words.match, ContextOf(session));
    ThrowIfCancelled();
    Print(match, words.json);
    return kDone;
}

} // namespace

void AddMatch(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("match", "Find where a cut-out lies in an image");
    auto words = std::make_shared<MatchWords>();
    AddCommonOptions(command, session);
    command.add_option("REFERENCE", words->reference, "The cut-out to find")->required()->type_name("");
    command.add_option("IMAGE", words->image, "The image to find it in")->required()->type_name("");
    AddNumbers(command, "--start", words->start,
               "Where the first sample of REFERENCE is expected in IMAGE; else it is looked for everywhere")
        ->type_name("X,Y");
    command
        .add_option("--range", words->range,
                    "With --start: width of the square that is searched about it [pixels, 0 to " +
                        std::to_string(catalogue::kMaxMatchRange) + "; default " +
                        std::to_string(catalogue::kDefaultMatchRange) + "]")
        ->type_name("N");
    command.add_option("--least", words->match.least, "The least correlation that is taken for a match [0 to 1]")
        ->type_name("N")
        ->capture_default_str();
    command.add_flag("--json", words->json, "Print JSON");
    command.footer(
        "Prints the column and row of IMAGE on which the first sample of REFERENCE falls, to a tenth of a pixel; the "
        "correlation, which is 1 where the two differ by pedestal and gain alone, and about 0 where they have nothing "
        "in common; and the difference that is left, in the units of IMAGE. JSON has the correlation of the best other "
        "place as rival, too: where it is nearly as good, nothing is found. REFERENCE must lie whole in IMAGE. "
        "Undefined samples take no part.");
    command.callback([&session, words] { session.work = [&session, words] { return Match(*words, session); }; });
}

} // namespace corvane::cli
