#include "stack/stack.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "cli/cancel.h"
#include "cli/picture.h"
#include "cli/session.h"
#include "corvane/core/memory_budget.h"
#include "corvane/platform/messages.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

constexpr std::uint64_t kLeastMemory = 1 << 20;

template <typename Value>
using Words = std::vector<std::pair<std::string, Value>>;

const Words<CombineMethod> kMethods = {{"median", CombineMethod::kMedian},
                                       {"clipped-median", CombineMethod::kClippedMedian},
                                       {"clipped-mean", CombineMethod::kClippedMean}};
const Words<stack::AlignMethod> kAlignments = {{"none", stack::AlignMethod::kNone},
                                               {"shift", stack::AlignMethod::kShift}};

struct StackOptions {
    stack::Options stack;
    std::string output;
    std::string preview;
    std::string memory;
    std::vector<int> reference;
    io::SaveOptions save;
};

template <typename Value>
void AddChoice(CLI::App& command, const std::string& name, Value& value, const Words<Value>& words,
               const std::string& help)
{
    std::string names;
    for (const auto& [word, meaning] : words) {
        names += (names.empty() ? "" : "|") + word;
    }
    const auto choose = [&value, &words, name, names](const std::string& given) {
        const auto found =
            std::find_if(words.begin(), words.end(), [&](const auto& word) { return word.first == given; });
        if (found == words.end()) {
            throw CLI::ValidationError(name + " = " + given, "must be " + names);
        }
        value = found->second;
    };
    command.add_option_function<std::string>(name, choose, help)->type_name(names)->default_str(words.front().first);
}

void AddFiles(CLI::App& command, const std::string& name, std::vector<std::string>& files, const std::string& help)
{
    command.add_option(name, files, help)->type_name("F");
}

void SetMemory(const std::string& size)
{
    std::uint64_t bytes = 0;
    if (!ParseMemorySize(size, bytes) || bytes < kLeastMemory) {
        throw UsageError("--memory = " + size + ": must be at least 1M, in bytes or with K, M or G");
    }
    SetMemoryBudget(bytes);
}

void CheckLights(const stack::Options& options)
{
    if (options.lights.empty()) {
        throw UsageError("stack: there are no lights; put them first, or after `--`, since all files that follow "
                         "--bias, --dark, --flat and --flat-dark belong to that option");
    }
}

std::vector<std::string> Outputs(const StackOptions& options)
{
    std::vector<std::string> outputs{options.output};
    if (!options.preview.empty()) {
        outputs.push_back(options.preview);
    }
    return outputs;
}

void CheckOutputs(const StackOptions& options)
{
    io::CheckSave(options.output, options.save);
    if (!options.preview.empty()) {
        CheckPicture(options.preview);
    }
    stack::CheckOutputs(options.stack, Outputs(options));
}

// The picture's levels are its own: the stack is written the same with and without one.
void SavePreview(const std::string& path, io::Frame& frame)
{
    const int ownLevel = frame.image.HasOwnLevel();
    frame.image.SetOrgLevel();
    SavePicture(path, frame, "auto-levels");
    frame.image.RestoreOrgLevel();
    frame.image.SetOwnLevel(ownLevel);
}

// The picture comes first, so that it can be taken back when the stack itself cannot be written.
void SaveAll(const StackOptions& options, stack::Result& result)
{
    io::Frame frame;
    frame.image.Swap(&result.image);
    frame.header = result.header;
    if (!options.preview.empty()) {
        SavePreview(options.preview, frame);
    }
    try {
        io::Save(options.output, frame.image, result.header, options.save);
    } catch (...) {
        if (!options.preview.empty()) {
            std::error_code ignored;
            std::filesystem::remove(options.preview, ignored);
        }
        throw;
    }
}

std::string Formatted(const char* format, double value)
{
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

void PrintFrames(const stack::Result& result, bool isAligned, bool all)
{
    std::size_t width = 0;
    for (const stack::FrameReport& frame : result.frames) {
        width = std::max(width, frame.file.size());
    }
    for (const stack::FrameReport& frame : result.frames) {
        const std::string name = "  " + frame.file + std::string(width - frame.file.size() + 2, ' ');
        if (!frame.used) {
            std::cout << name << "rejected: " << frame.reason << "\n";
        } else if (isAligned) {
            std::cout << name << "shift" << Formatted(" %+7.1f", frame.dx) << Formatted(" %+7.1f", frame.dy) << "\n";
        } else if (all) {
            std::cout << name << "used\n";
        }
    }
}

void PrintSummary(const StackOptions& options, const stack::Result& result, bool verbose)
{
    const auto used = std::count_if(result.frames.begin(), result.frames.end(),
                                    [](const stack::FrameReport& frame) { return frame.used; });
    std::cout << result.frames.size() << (result.frames.size() == 1 ? " light, " : " lights, ") << used << " used, "
              << static_cast<long>(result.frames.size()) - used << " rejected\n";
    PrintFrames(result, options.stack.align != stack::AlignMethod::kNone, verbose);
    for (const std::string& note : result.notes) {
        std::cout << "note: " << note << "\n";
    }
    double total = 0.0;
    for (const stack::Stage& stage : result.stages) {
        std::cout << stage.name << Formatted(" %.1f s, ", stage.seconds);
        total += stage.seconds;
    }
    std::cout << Formatted("%.1f s in all\n", total) << "stack: " << options.output << "\n";
    if (!options.preview.empty()) {
        std::cout << "preview: " << options.preview << "\n";
    }
}

int Stack(StackOptions& options, const Session& session)
{
    CheckLights(options.stack);
    if (!options.memory.empty()) {
        SetMemory(options.memory);
    }
    if (!options.reference.empty()) {
        options.stack.reference = stack::PixelPlace{options.reference[0], options.reference[1]};
    }
    stack::CheckOptions(options.stack);
    CheckOutputs(options);
    options.stack.progressWindow = platform::GetMainWindow();
    stack::Result result = stack::Run(options.stack);
    ThrowIfCancelled();
    SaveAll(options, result);
    if (!session.quiet) {
        PrintSummary(options, result, session.verbose);
    }
    return kDone;
}

std::string Range(int min, int max)
{
    return " [pixels, " + std::to_string(min) + " to " + std::to_string(max) + "]";
}

void AddFileOptions(CLI::App& command, StackOptions& options)
{
    command.add_option("lights", options.stack.lights, "The frames to stack; the first is the reference")
        ->type_name("LIGHT");
    AddOutputOption(command, options.output, "The stack to write: .fits or .tif");
    AddFiles(command, "--bias", options.stack.bias, "Bias frames");
    AddFiles(command, "--dark", options.stack.darks, "Dark frames; with bias frames they are scaled by exposure");
    AddFiles(command, "--flat", options.stack.flats, "Flat fields");
    AddFiles(command, "--flat-dark", options.stack.flatDarks, "Darks of the flats' exposure, in place of the bias");
    command.add_option("--preview", options.preview, "Write a picture of the stack, too")->type_name("OUT.png");
    AddBitsOption(command, options.save.bits);
}

void AddWayOptions(CLI::App& command, StackOptions& options)
{
    stack::Options& settings = options.stack;
    AddChoice(command, "--method", settings.method, kMethods, "How samples of one place are combined");
    AddChoice(command, "--align", settings.align, kAlignments, "How frames are brought onto the first");
    command.add_option("--reference", options.reference, "Centre of the star to align by; else the brightest alone")
        ->delimiter(',')
        ->expected(2)
        ->type_name("X,Y");
    command
        .add_option("--size", settings.size,
                    "Width of the patch around that star" + Range(stack::kMinPatchSize, stack::kMaxPatchSize))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--search", settings.search, "Largest shift to look for" + Range(0, stack::kMaxSearch))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--pedestal", settings.pedestal, "Added before a dark is taken off, so that noise below 0 is kept")
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--memory", options.memory, "Memory for samples, as 512M or 2G; else half of the computer's")
        ->type_name("SIZE");
}

} // namespace

void AddStack(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("stack", "Calibrate, align and combine the frames of a night");
    auto options = std::make_shared<StackOptions>();
    AddCommonOptions(command, session);
    AddFileOptions(command, *options);
    AddWayOptions(command, *options);
    command.footer("The calibration options take all files up to the next option: put the lights first, or after "
                   "`--`.\nSeveral frames of one kind are combined by median.");
    command.callback([&session, options] { session.work = [&session, options] { return Stack(*options, session); }; });
}

} // namespace corvane::cli
