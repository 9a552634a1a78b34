#include "stack/stack.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/all_operations.h"
#include "cli/cancel.h"
#include "cli/light_words.h"
#include "cli/operation_command.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/report.h"
#include "cli/session.h"
#include "cli/stack_plan.h"
#include "cli/table.h"
#include "io/frame.h"
#include "stack/names.h"
#include "stack/plan.h"

namespace corvane::cli {
namespace {

struct StackWords {
    LightWords lights;
    Output output;
    std::string preview;
    std::string coverageMap;
    std::string rejectMap;
    bool plan = false;
    bool json = false;

    /// What is written besides the stack; those of an empty name are not wanted.
    std::vector<std::string> Others() const { return {preview, coverageMap, rejectMap, lights.report}; }
};

/// The words for one of several stacks, whose files are called after its filter, too.
StackWords WordsFor(StackWords words, const std::string& filter)
{
    for (std::string* path :
         {&words.output.path, &words.preview, &words.coverageMap, &words.rejectMap, &words.lights.report}) {
        *path = NameFor(*path, filter);
    }
    return words;
}

void CheckFiles(const StackWords& words, const std::vector<std::string>& inputs)
{
    io::CheckSave(words.output.path, words.output.save);
    if (!words.preview.empty()) {
        CheckPicture(words.preview);
    }
    for (const std::string& map : {words.coverageMap, words.rejectMap}) {
        if (!map.empty()) {
            io::CheckSave(map, {});
        }
    }
    CheckOutputs(words.output, inputs, words.Others());
}

// The picture's levels are its own: the stack is written the same with and without one.
void SavePreview(const std::string& path, io::Frame& frame)
{
    const int ownLevel = frame.image.HasOwnLevel();
    frame.image.SetOrgLevel();
    // Each plane of its own makes the sky grey.
    SavePicture(path, frame, frame.image.IsColor() != 0 ? "auto-levels:per-plane=yes" : "auto-levels");
    frame.image.RestoreOrgLevel();
    frame.image.SetOwnLevel(ownLevel);
}

/// Takes files away again unless they are kept.
class Provisional {
public:
    Provisional() = default;
    ~Provisional()
    {
        for (const std::string& file : files_) {
            std::error_code ignored;
            std::filesystem::remove(file, ignored);
        }
    }
    Provisional(const Provisional&) = delete;
    Provisional& operator=(const Provisional&) = delete;

    void Add(const std::string& file) { files_.push_back(file); }
    void Keep() { files_.clear(); }

private:
    std::vector<std::string> files_;
};

// The rows of a map run as those of the stack.
void SaveCounts(const std::string& path, const CStlImage& counts, const char* unit, const io::Header& stack)
{
    io::Header header;
    header.Set("BUNIT", unit);
    if (const std::optional<std::string> order = stack.Text("ROWORDER")) {
        header.Set("ROWORDER", *order);
    }
    io::Save(path, counts, header, {});
}

// The stack comes last, so that everything else can be taken back when it cannot be written.
void SaveAll(const StackWords& words, stack::Result& result)
{
    io::Frame frame;
    frame.image.Swap(&result.image);
    frame.header = result.header;
    Provisional others;
    if (!words.preview.empty()) {
        SavePreview(words.preview, frame);
        others.Add(words.preview);
    }
    if (!words.coverageMap.empty()) {
        SaveCounts(words.coverageMap, result.coverage, "lights", result.header);
        others.Add(words.coverageMap);
    }
    if (!words.rejectMap.empty()) {
        SaveCounts(words.rejectMap, result.rejected, "values", result.header);
        others.Add(words.rejectMap);
    }
    if (!words.lights.report.empty()) {
        WriteReport(words.lights.report, result);
        others.Add(words.lights.report);
    }
    io::Save(words.output.path, frame.image, result.header, words.output.save);
    others.Keep();
}

std::string CombinedText(const stack::Options& options, const stack::Result& result)
{
    if (!result.rejection) {
        return "";
    }
    return std::string("combined: ") + stack::NameOf(stack::kCombineNames, CombineOf(options)) + ", rejection " +
           stack::NameOf(stack::kRejectNames, *result.rejection) + "\n";
}

std::string OutputsText(const StackWords& words)
{
    std::string text = "stack: " + words.output.path + "\n";
    const auto add = [&](const char* what, const std::string& file) {
        text += file.empty() ? "" : std::string(what).append(": ").append(file) + "\n";
    };
    add("preview", words.preview);
    add("coverage", words.coverageMap);
    add("rejected", words.rejectMap);
    add("report", words.lights.report);
    return text;
}

void StackOne(const StackWords& words, stack::Options options, const Session& session)
{
    options.wantsCoverage = !words.coverageMap.empty();
    options.wantsRejected = !words.rejectMap.empty();
    stack::Result result = stack::Stack(options, RunOf(session));
    ThrowIfCancelled();
    SaveAll(words, result);
    if (!session.quiet) {
        std::cout << LightsText(options, result, session.verbose) << CombinedText(options, result)
                  << OutputsText(words);
    }
}

int PrintPlan(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night, bool asJson)
{
    std::cout << (asJson ? ToText(PlanJson(stacks, night)) : PlanText(stacks, night));
    return kDone;
}

int Stack(const StackWords& words, const Session& session)
{
    const stack::Options asked = OptionsOf(words.lights);
    CheckFiles(words, InputsOf(words.lights));
    std::vector<std::string> outputs = words.Others();
    outputs.push_back(words.output.path);
    const Run run = RunOf(session);
    const stack::SortedNight night = SortedFrames(asked, outputs, words.plan ? Run() : run); // a plan shows its notes
    const bool areSeveral = night.stacks.size() > 1;
    std::vector<StackWords> each;
    std::vector<PlannedStack> planned;
    for (const stack::SortedStack& stack : night.stacks) {
        each.push_back(areSeveral ? WordsFor(words, stack.filter) : words);
        CheckFiles(each.back(), stack::FilesOf(stack.options));
        if (words.plan || areSeveral) { // all are checked before the first is made
            planned.push_back({stack, each.back().output.path, stack::MakePlan(stack.options, {}).notes});
        }
    }
    if (words.plan) {
        return PrintPlan(planned, night, words.json);
    }
    for (std::size_t i = 0; i < each.size(); ++i) {
        StackOne(each[i], night.stacks[i].options, session);
    }
    return kDone;
}

void AddOutputs(CLI::App& command, StackWords& words)
{
    AddOutput(command, words.output, "The stack to write: .fits, .tif or .png");
    command.add_option("--preview", words.preview, "Write a picture of the stack, too")->type_name("OUT.png");
    command.add_option("--coverage-map", words.coverageMap, "Write how many lights have each pixel, too")
        ->type_name("FILE");
    command
        .add_option("--reject-map", words.rejectMap,
                    "Write how many values the clipping dropped, too: below, above, together")
        ->type_name("FILE");
    CLI::Option* const plan =
        command.add_flag("--plan", words.plan, "Print what would be done, and what is left out, and do nothing");
    command.add_flag("--json", words.json, "Print that as JSON")->needs(plan);
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
    command.callback([&session, words] { session.work = [&session, words] { return Stack(*words, session); }; });
}

} // namespace corvane::cli
