#include "stack/stack.h"

#include <iostream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cli/all_operations.h"
#include "cli/light_words.h"
#include "cli/operation_command.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/session.h"
#include "cli/stack_parts.h"
#include "cli/stack_plan.h"
#include "cli/stack_save.h"
#include "cli/stack_words.h"
#include "cli/table.h"
#include "corvane/core/error.h"
#include "stack/follow.h"
#include "stack/plan.h"
#include "stack/registered.h"

namespace corvane::cli {
namespace {

/// The words for one of several stacks, whose files are called after its filter, too.
StackWords WordsFor(StackWords words, const std::string& filter)
{
    for (std::string* path : {&words.output.path, &words.preview, &words.lights.report, &words.savePlan}) {
        *path = NameFor(*path, filter);
    }
    for (const Map& map : kMaps) {
        words.*map.file = NameFor(words.*map.file, filter);
    }
    return words;
}

/// What the words ask for.
stack::Options AskedOptions(const StackWords& words)
{
    stack::Options options = OptionsOf(words.lights);
    WantMaps(words, options);
    options.registered = words.registered;
    options.wantsBoth = words.wantsBoth;
    for (const std::string& place : words.follow) {
        options.follow.push_back(stack::ReadFollowedPlace(place));
    }
    stack::CheckOptions(options);
    return options;
}

void StackOne(const StackWords& words, const stack::Options& options, const Session& session)
{
    Save(words, options, stack::Stack(options, RunOf(session)), session);
}

int PrintPlan(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night, bool asJson)
{
    std::cout << (asJson ? ToText(PlanJson(stacks, night)) : PlanText(stacks, night));
    return kDone;
}

int Stack(const StackWords& words, const Session& session)
{
    if (words.GoByPlan()) {
        (words.join ? JoinBands : CombineBand)(words, session);
        return kDone;
    }
    const std::vector<std::string>& lights = words.lights.files.at("light");
    if (lights.size() == 1 && lights.front().ends_with(".json")) {
        throw UsageError("stack: a plan that was saved takes --band or --join");
    }
    const stack::Options asked = AskedOptions(words);
    CheckFiles(words, InputsOf(words.lights), {});
    std::vector<std::string> outputs = words.Others();
    outputs.insert(outputs.end(), {words.output.path, words.registered});
    const Run run = RunOf(session);
    const stack::SortedNight night = SortedFrames(asked, outputs, words.plan ? Run() : run); // a plan shows its notes
    const bool areSeveral = night.stacks.size() > 1;
    std::vector<StackWords> each;
    std::set<std::string> names;
    std::vector<PlannedStack> planned;
    for (const stack::SortedStack& stack : night.stacks) {
        each.push_back(areSeveral ? WordsFor(words, stack.filter) : words);
        if (!names.insert(each.back().output.path).second) {
            throw NameError(each.back().output.path, "is the name for several filters; --filter chooses one");
        }
        CheckFiles(each.back(), stack::FilesOf(stack.options), stack::RegisteredFiles(stack.options));
        if (words.plan || areSeveral) { // all are checked before the first is made
            planned.push_back({stack, each.back().output.path, stack::MakePlan(stack.options, {}).notes});
        }
    }
    if (words.plan) {
        return PrintPlan(planned, night, words.json);
    }
    for (std::size_t i = 0; i < each.size(); ++i) {
        (words.savePlan.empty() ? StackOne : SavePlan)(each[i], night.stacks[i].options, session);
    }
    return kDone;
}

/// What divides the work over processes.
void AddParts(CLI::App& command, StackWords& words, CLI::Option* plan)
{
    CLI::Option* const save =
        command
            .add_option(
                "--save-plan", words.savePlan,
                "Measure and place the lights, combine nothing, and write all that is settled: a plan, of which "
                "several processes make the stack, with --band and --join")
            ->type_name("PLAN.json")
            ->excludes(plan);
    CLI::Option* const band =
        command
            .add_option(
                "--band", words.band,
                "Combine one band of rows alone, the third of eight: `--plan PLAN.json --band 3/8 -o BAND.fits`")
            ->type_name("NUMBER/OF")
            ->excludes(save);
    command
        .add_flag("--join", words.join,
                  "Make the stack of all bands of a plan: `--plan PLAN.json --join BAND.fits... -o OUT.fits`")
        ->excludes(save)
        ->excludes(band);
}

void AddOutputs(CLI::App& command, StackWords& words)
{
    AddOutput(command, words.output,
              "The stack to write: .fits, .tif or .png; only --plan and --save-plan can do without");
    command.get_option("--output")->required(false);
    command.add_option("--preview", words.preview, "Write a picture of the stack, too: .png, .jpg or .tif")
        ->type_name("OUT.png");
    AddStretch(command, words.picture);
    command.add_option("--coverage-map", words.coverageMap, "Write how many lights have each pixel, too")
        ->type_name("FILE");
    command
        .add_option("--noise-map", words.noiseMap,
                    "Write the noise of each pixel, too, as the values that count there tell it")
        ->type_name("FILE");
    command.add_flag(
        "--with-maps", words.withMaps,
        "Keep all such maps in the stack itself, as FITS extensions: COVERAGE, NOISE, REJECTED, and WEIGHTS "
        "of a drizzled one");
    command
        .add_option("--reject-map", words.rejectMap,
                    "Write how many values the clipping dropped, too: below, above, together")
        ->type_name("FILE");
    command
        .add_option("--weight-map", words.weightMap,
                    "Write how much has fallen into each pixel of a drizzled stack, too")
        ->type_name("FILE");
    command
        .add_option("--registered", words.registered,
                    "Write each light that is used, too: calibrated, on the grid of the stack, as NAME_registered.fits")
        ->type_name("FOLDER");
    CLI::Option* const follow =
        command
            .add_option("--follow", words.follow,
                        "Follow what moves among the stars, a comet or an asteroid, by its places in two lights")
            ->expected(2)
            ->type_name("X,Y@FILE");
    command.add_flag("--both", words.wantsBoth, "Stack the stars, too, as OUT_stars")->needs(follow);
    CLI::Option* const plan =
        command.add_flag("--plan", words.plan, "Print what would be done, and what is left out, and do nothing");
    command.add_flag("--json", words.json, "Print that as JSON")->needs(plan);
    AddParts(command, words, plan);
    AddSaveOptions(command, words.output.save, kLongScaleName);
}

} // namespace

void AddStack(CLI::App& app, Session& session)
{
    auto words = std::make_shared<StackWords>();
    const catalogue::Operation& operation = OperationCalled("stack");
    CLI::App& command = AddCommand(app, session, operation);
    AddOutputs(command, *words);
    AddLightOptions(command, operation, words->lights);
    command.callback([&session, words] {
        if (words->output.path.empty()) {
            if ((!words->plan && words->savePlan.empty()) || words->GoByPlan()) {
                throw CLI::RequiredError("--output");
            }
            words->output.path = "stack.fits";
        }
        session.work = [&session, words] { return Stack(*words, session); };
    });
}

} // namespace corvane::cli
