#include "stack/stack.h"

#include <algorithm>
#include <array>
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
#include "io/output_file.h"
#include "stack/follow.h"
#include "stack/names.h"
#include "stack/parts/band_file.h"
#include "stack/plan.h"
#include "stack/registered.h"
#include "stack/stack_job.h"

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
    std::string savePlan;
    std::string band;
    bool join = false;

    /// True where what there is to do was saved before.
    bool GoByPlan() const { return !band.empty() || join; }
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
        return {preview, coverageMap, noiseMap, weightMap, rejectMap, lights.report, Stars(), savePlan};
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
    for (std::string* path : {&words.output.path, &words.preview, &words.lights.report, &words.savePlan}) {
        *path = NameFor(*path, filter);
    }
    for (const Map& map : kMaps) {
        words.*map.file = NameFor(words.*map.file, filter);
    }
    return words;
}

/// Asks for the maps of the words.
void WantMaps(const StackWords& words, stack::Options& options)
{
    if (words.withMaps) {
        stack::WantAllMaps(options);
    }
    options.wantsCoverage |= !words.coverageMap.empty();
    options.wantsNoise |= !words.noiseMap.empty();
    options.wantsWeights |= !words.weightMap.empty();
    options.wantsRejected |= !words.rejectMap.empty();
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

void Tell(const StackWords& words, const stack::Options& options, const stack::Result& result, const Session& session)
{
    if (!session.quiet) {
        std::cout << LightsText(options, result, session.verbose) << CombinedText(options, result) << DepthText(result)
                  << OutputsText(words);
    }
}

void StackOne(const StackWords& words, const stack::Options& options, const Session& session)
{
    stack::Result result = stack::Stack(options, RunOf(session));
    ThrowIfCancelled();
    SaveAll(words, options, result, RunOf(session));
    Tell(words, options, result, session);
}

/// Does what comes before combining, and writes a plan.
void PlanOne(const StackWords& words, const stack::Options& options, const Session& session)
{
    stack::CheckParts(options);
    stack::StackJob job(options, RunOf(session));
    job.Register();
    const std::string text = stack::ToText(job.GetPlan());
    ThrowIfCancelled();
    io::OutputFile file(words.savePlan);
    file.Write(text.data(), text.size());
    file.Commit();
    if (!session.quiet) {
        std::cout << LightsText(options, job.Lights(), session.verbose) << "plan: " << words.savePlan << "\n";
    }
}

/// The files of words that go by a plan: the plan, and the bands that are to be joined.
const std::vector<std::string>& FilesByPlan(const StackWords& words)
{
    const auto& [operation, files, settings, report, memory, masters] = words.lights;
    const bool saysMore = std::any_of(
        files.begin(), files.end(), [](const auto& input) { return input.first != "light" && !input.second.empty(); });
    if (saysMore || !settings.empty() || !masters.empty() || !words.registered.empty() || !words.follow.empty()) {
        throw UsageError("stack: how lights are combined stands in the plan; --band and --join take no other options");
    }
    const std::vector<std::string>& named = files.at("light");
    if (named.empty() || (words.join ? named.size() < 2 : named.size() > 1)) {
        throw UsageError(words.join ? "stack: --join takes a plan, and after it the bands of it"
                                    : "stack: --band takes one file, a plan that was saved");
    }
    return named;
}

int CombineBand(const StackWords& words, const Session& session)
{
    const std::string& file = FilesByPlan(words).front();
    const stack::BandNumber number = stack::ReadBandNumber(words.band);
    io::CheckSave(words.output.path, {});
    if (!io::HoldsExtensions(words.output.path)) {
        throw NameError(words.output.path, "its format holds one image; a band takes FITS");
    }
    stack::SavedPlan plan = stack::PlanOfText(stack::ReadSaved(file), file);
    std::vector<std::string> inputs = stack::FilesOf(plan.options);
    inputs.push_back(file);
    CheckOutputs(words.output, inputs, {});
    TakeMemory(words.lights);
    const std::string key = plan.key;
    stack::StackJob job(std::move(plan), RunOf(session));
    const stack::Band band = job.Combine(stack::RowsOf(number, job.Rows()));
    ThrowIfCancelled();
    stack::WriteBand(words.output.path, band, key);
    if (!session.quiet) {
        std::cout << "band: " << words.output.path << "\n";
    }
    return kDone;
}

/// Refuses what the words want to be told of a stack and its plan has not asked for.
void CheckWishes(const StackWords& words, const stack::Options& planned)
{
    stack::Options wanted = planned;
    WantMaps(words, wanted);
    wanted.wantsReport |= !words.lights.report.empty();
    const auto wishesOf = [](const stack::Options& of) {
        return std::array{of.wantsCoverage, of.wantsNoise, of.wantsWeights, of.wantsRejected, of.wantsReport};
    };
    if (wishesOf(wanted) != wishesOf(planned)) {
        throw UsageError("stack: maps and reports must be asked for with --save-plan, too");
    }
}

int JoinBands(const StackWords& words, const Session& session)
{
    const std::vector<std::string>& files = FilesByPlan(words);
    stack::SavedPlan plan = stack::PlanOfText(stack::ReadSaved(files.front()), files.front());
    const stack::Options options = plan.options;
    CheckWishes(words, options);
    std::vector<std::string> inputs = stack::FilesOf(options);
    inputs.insert(inputs.end(), files.begin(), files.end());
    CheckFiles(words, inputs, {});
    TakeMemory(words.lights);
    const std::string key = plan.key;
    const Run run = RunOf(session);
    stack::StackJob job(std::move(plan), run);
    stack::Band whole = job.EmptyStack();
    stack::ReadBands({files.begin() + 1, files.end()}, key, whole, run);
    stack::Result result = job.Finish(std::move(whole));
    ThrowIfCancelled();
    SaveAll(words, options, result, run);
    Tell(words, options, result, session);
    return kDone;
}

int PrintPlan(const std::vector<PlannedStack>& stacks, const stack::SortedNight& night, bool asJson)
{
    std::cout << (asJson ? ToText(PlanJson(stacks, night)) : PlanText(stacks, night));
    return kDone;
}

int Stack(const StackWords& words, const Session& session)
{
    if (words.GoByPlan()) {
        return words.join ? JoinBands(words, session) : CombineBand(words, session);
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
        (words.savePlan.empty() ? StackOne : PlanOne)(each[i], night.stacks[i].options, session);
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
