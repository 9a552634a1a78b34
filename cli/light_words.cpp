#include "cli/light_words.h"

#include <cstdio>

#include "cli/memory_size.h"
#include "cli/report.h"
#include "cli/session.h"
#include "corvane/core/memory_budget.h"

namespace corvane::cli {
namespace {

void AddFiles(CLI::App& command, const std::string& name, std::vector<std::string>& files, const std::string& help)
{
    command.add_option(name, files, help)->type_name("F");
}

void AddFrames(CLI::App& command, stack::Options& options)
{
    command.add_option("lights", options.lights, "The frames of the night")->type_name("LIGHT");
    AddFiles(command, "--bias", options.bias, "Bias frames");
    AddFiles(command, "--dark", options.darks, "Dark frames; with bias frames they are scaled by exposure");
    AddFiles(command, "--flat", options.flats, "Flat fields");
    AddFiles(command, "--flat-dark", options.flatDarks, "Darks of the flats' exposure, in place of the bias");
    command
        .add_option("--pedestal", options.pedestal, "Added before a dark is taken off, so that noise below 0 is kept")
        ->type_name("N")
        ->capture_default_str();
    command.add_flag("--cosmetic", options.cosmetic, "Replace the pixels that are hot in the darks");
}

void AddMosaicOptions(CLI::App& command, LightWords& words)
{
    command
        .add_option("--bayer", words.bayer,
                    "Filters of the first pixels, two rows of two, as RGGB; none keeps the mosaic; else by the header")
        ->type_name("RGGB|GRBG|GBRG|BGGR|none");
    AddChoice<DemosaicMethod>(
        command, "--debayer", stack::kDemosaicNames,
        [&words](DemosaicMethod method) { words.options.demosaic = method; }, "How colours are made of a mosaic")
        ->default_str(stack::kDemosaicNames.front().first);
}

std::string Range(int min, int max)
{
    return " [pixels, " + std::to_string(min) + " to " + std::to_string(max) + "]";
}

void AddAlignment(CLI::App& command, LightWords& words)
{
    stack::Options& options = words.options;
    AddChoice<stack::AlignMethod>(
        command, "--align", stack::kAlignNames, [&options](stack::AlignMethod method) { options.align = method; },
        "How lights are brought onto the reference")
        ->default_str(stack::kAlignNames.front().first);
    command
        .add_option("--reference", words.reference,
                    "The light that others are placed on; else the best by its stars, or with --align shift the first")
        ->type_name("LIGHT");
    command.add_flag("--scale", options.alignsScale, "stars: look for lights of another scale, too");
    command.add_option("--star", words.star, "shift: centre of the star to align by; else the brightest alone")
        ->delimiter(',')
        ->expected(2)
        ->type_name("X,Y");
    command
        .add_option("--size", options.size,
                    "shift: width of the patch around that star" + Range(stack::kMinPatchSize, stack::kMaxPatchSize))
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--search", options.search, "shift: largest shift to look for" + Range(0, stack::kMaxSearch))
        ->type_name("N")
        ->capture_default_str();
}

void AddLimits(CLI::App& command, stack::Options& options)
{
    const std::string behind = " than the median of all by more than so many sigmas";
    command.add_option("--reject-fwhm", options.rejectFwhm, "Leave out lights whose stars are wider" + behind)
        ->type_name("N");
    command.add_option("--reject-stars", options.rejectStars, "Leave out lights that show fewer stars" + behind)
        ->type_name("N");
    command
        .add_option("--reject-background", options.rejectBackground, "Leave out lights whose sky is brighter" + behind)
        ->type_name("N");
}

void ReadBayer(LightWords& words)
{
    if (words.bayer.empty()) {
        return;
    }
    const std::optional<BayerPattern> pattern = NamedBayerPattern(words.bayer);
    if (!pattern && words.bayer != "none") {
        throw UsageError("--bayer = " + words.bayer + ": must be RGGB, GRBG, GBRG, BGGR or none");
    }
    words.options.mosaic = pattern ? stack::MosaicUse::kPattern : stack::MosaicUse::kKeep;
    words.options.pattern = pattern.value_or(BayerPattern::kRggb);
}

} // namespace

void AddLightOptions(CLI::App& command, LightWords& words)
{
    AddFrames(command, words.options);
    AddMosaicOptions(command, words);
    AddAlignment(command, words);
    AddLimits(command, words.options);
    command.add_option("--report", words.report, "Write what became of each light, too")
        ->type_name("FILE.json|.csv|.html");
    command.add_option("--memory", words.memory, "Memory for samples, as 512M or 2G; else half of the computer's")
        ->type_name("SIZE");
}

std::vector<std::string> InputsOf(const stack::Options& options)
{
    std::vector<std::string> inputs;
    for (const auto* files : {&options.lights, &options.bias, &options.darks, &options.flats, &options.flatDarks}) {
        inputs.insert(inputs.end(), files->begin(), files->end());
    }
    return inputs;
}

void FinishLightOptions(LightWords& words, const std::string& command)
{
    stack::Options& options = words.options;
    if (options.lights.empty()) {
        throw UsageError(command + ": there are no lights; put them first, or after `--`, since all files that follow "
                                   "--bias, --dark, --flat and --flat-dark belong to that option");
    }
    if (!words.memory.empty()) {
        SetMemoryBudget(ReadMemorySize("--memory", words.memory));
    }
    ReadBayer(words);
    options.referenceFile = words.reference;
    if (!words.star.empty()) {
        options.reference = stack::PixelPlace{words.star[0], words.star[1]};
    }
    stack::CheckOptions(options);
    if (!words.report.empty()) {
        CheckReport(words.report);
    }
}

} // namespace corvane::cli
