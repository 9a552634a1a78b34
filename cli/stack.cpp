#include "stack/stack.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
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
#include "corvane/core/error.h"
#include "io/frame.h"
#include "stack/follow.h"
#include "stack/names.h"
#include "stack/plan.h"
#include "stack/registered.h"

namespace corvane::cli {
namespace {

struct StackWords {
    LightWords lights;
    Output output;
    std::string preview;
    PictureWords picture; // how the preview shows the stack
    std::string coverageMap;
    std::string noiseMap;
    std::string weightMap;
    std::string rejectMap;
    bool withMaps = false;
    std::string registered;
    std::vector<std::string> follow;
    bool wantsBoth = false;
    bool plan = false;
    bool json = false;

    /// "m31_stars.fits" beside "m31.fits"; empty when it is not wanted.
    std::string Stars() const
    {
        const std::filesystem::path path(output.path);
        const std::string name = path.stem().string() + "_stars" + path.extension().string();
        return wantsBoth ? (path.parent_path() / name).string() : "";
    }
    /// What is written besides the stack; those of an empty name are not wanted.
    std::vector<std::string> Others() const
    {
        return {preview, coverageMap, noiseMap, weightMap, rejectMap, lights.report, Stars()};
    }
};

/// What is known of each sample of a stack.
struct Map {
    std::string StackWords::*file; ///< where it is written
    CStlImage stack::Result::*image;
    const char* unit; ///< of its samples; null: that of the stack's
    const char* what;
    const char* extension; ///< its name in the file of the stack
};

constexpr Map kMaps[] = {
    {&StackWords::coverageMap, &stack::Result::coverage, "lights", "coverage", "COVERAGE"},
    {&StackWords::noiseMap, &stack::Result::noise, nullptr, "noise", "NOISE"},
    {&StackWords::weightMap, &stack::Result::weights, "lights", "weights", "WEIGHTS"},
    {&StackWords::rejectMap, &stack::Result::rejected, "values", "rejected", "REJECTED"},
};

/// The words for one of several stacks, whose files are called after its filter, too.
StackWords WordsFor(StackWords words, const std::string& filter)
{
    for (std::string* path : {&words.output.path, &words.preview, &words.lights.report}) {
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
    if (words.withMaps) {
        stack::WantAllMaps(options);
    }
    options.wantsCoverage |= !words.coverageMap.empty();
    options.wantsNoise |= !words.noiseMap.empty();
    options.wantsWeights |= !words.weightMap.empty();
    options.wantsRejected |= !words.rejectMap.empty();
    options.registered = words.registered;
    options.wantsBoth = words.wantsBoth;
    for (const std::string& place : words.follow) {
        options.follow.push_back(stack::ReadFollowedPlace(place));
    }
    stack::CheckOptions(options);
    return options;
}

void CheckFiles(const StackWords& words, const std::vector<std::string>& inputs,
                const std::vector<std::string>& registered)
{
    io::CheckSave(words.output.path, words.output.save);
    if (!words.preview.empty()) {
        io::CheckPicture(words.preview, words.picture.format);
    }
    if (words.withMaps && !io::HoldsExtensions(words.output.path)) {
        throw NameError(words.output.path, "its format holds one image; --with-maps takes FITS");
    }
    for (const Map& map : kMaps) {
        if (const std::string& file = words.*map.file; !file.empty()) {
            io::CheckSave(file, {});
        }
    }
    std::vector<std::string> others = words.Others();
    others.insert(others.end(), registered.begin(), registered.end());
    CheckOutputs(words.output, inputs, others);
}

// The rows of a map run as those of the stack.
io::Header HeaderOf(const Map& map, const io::Header& stack)
{
    io::Header header;
    const std::optional<std::string> unit = map.unit != nullptr ? map.unit : stack.Text("BUNIT");
    for (const auto& [keyword, text] : {std::pair("BUNIT", unit), std::pair("ROWORDER", stack.Text("ROWORDER"))}) {
        if (text) {
            header.Set(keyword, *text);
        }
    }
    return header;
}

/// The maps that are part of the file of the stack; those on its grid lie where it does on the sky.
std::vector<io::Extension> ExtensionsOf(const CStlImage& image, stack::Result& result)
{
    std::vector<io::Extension> extensions;
    for (const Map& map : kMaps) {
        CStlImage& samples = result.*map.image;
        if (samples.GetWidth() == image.GetWidth() && samples.GetHeight() == image.GetHeight()) {
            samples.SetCoordinates(image.GetCoordinates());
        }
        if (samples.GetPlanes() > 0) {
            extensions.push_back({map.extension, samples, HeaderOf(map, result.header)});
        }
    }
    return extensions;
}

// The stack comes last, so that everything else can be taken back when it cannot be written.
void SaveAll(const StackWords& words, const stack::Options& options, stack::Result& result, const Run& run)
{
    io::Frame frame;
    frame.image.Swap(&result.image);
    frame.header = result.header;
    Provisional others;
    const std::vector<std::string> registered = stack::RegisteredFiles(options);
    for (std::size_t i = 0; i < registered.size(); ++i) {
        if (result.frames[i].used) {
            others.Add(registered[i]);
        }
    }
    if (!words.preview.empty()) {
        SavePicture(words.preview, frame, words.picture);
        others.Add(words.preview);
    }
    for (const Map& map : kMaps) {
        if (const std::string& file = words.*map.file; !file.empty()) {
            io::Save(file, result.*map.image, HeaderOf(map, result.header), {});
            others.Add(file);
        }
    }
    if (!words.lights.report.empty()) {
        WriteReport(words.lights.report, result, &frame, run);
        others.Add(words.lights.report);
    }
    if (words.wantsBoth) {
        io::Save(words.Stars(), result.stars, result.starsHeader, words.output.save);
        others.Add(words.Stars());
    }
    const std::vector<io::Extension> maps =
        words.withMaps ? ExtensionsOf(frame.image, result) : std::vector<io::Extension>();
    io::Save(words.output.path, frame.image, result.header, words.output.save, maps);
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
    add("stars", words.Stars());
    add("registered", words.registered);
    add("preview", words.preview);
    for (const Map& map : kMaps) {
        add(map.what, words.*map.file);
    }
    add("report", words.lights.report);
    return text;
}

void StackOne(const StackWords& words, const stack::Options& options, const Session& session)
{
    stack::Result result = stack::Stack(options, RunOf(session));
    ThrowIfCancelled();
    SaveAll(words, options, result, RunOf(session));
    if (!session.quiet) {
        std::cout << LightsText(options, result, session.verbose) << CombinedText(options, result) << DepthText(result)
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
        StackOne(each[i], night.stacks[i].options, session);
    }
    return kDone;
}

void AddOutputs(CLI::App& command, StackWords& words)
{
    AddOutput(command, words.output, "The stack to write: .fits, .tif or .png; only --plan can do without");
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
            if (!words->plan) {
                throw CLI::RequiredError("--output");
            }
            words->output.path = "stack.fits";
        }
        session.work = [&session, words] { return Stack(*words, session); };
    });
}

} // namespace corvane::cli
