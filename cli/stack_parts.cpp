#include "cli/stack_parts.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/cancel.h"
#include "cli/light_words.h"
#include "cli/output.h"
#include "cli/report.h"
#include "cli/stack_save.h"
#include "corvane/core/error.h"
#include "io/frame.h"
#include "io/output_file.h"
#include "stack/parts/band_file.h"
#include "stack/parts/saved_plan.h"
#include "stack/stack_job.h"

namespace corvane::cli {
namespace {

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

/// The plan in the first of some files; the others are read as well.
stack::SavedPlan ReadPlan(const std::vector<std::string>& files)
{
    return stack::PlanOfText(stack::ReadSaved(files.front()), files.front());
}

/// All files that a process with this plan reads.
std::vector<std::string> InputsOf(const stack::SavedPlan& plan, const std::vector<std::string>& files)
{
    std::vector<std::string> inputs = stack::FilesOf(plan.options);
    inputs.insert(inputs.end(), files.begin(), files.end());
    return inputs;
}

} // namespace

void SavePlan(const StackWords& words, const stack::Options& options, const Session& session)
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

void CombineBand(const StackWords& words, const Session& session)
{
    const std::vector<std::string>& files = FilesByPlan(words);
    const stack::BandNumber number = stack::ReadBandNumber(words.band);
    io::CheckSave(words.output.path, {});
    if (!io::HoldsExtensions(words.output.path)) {
        throw NameError(words.output.path, "its format holds one image; a band takes FITS");
    }
    stack::SavedPlan plan = ReadPlan(files);
    CheckOutputs(words.output, InputsOf(plan, files), {});
    TakeMemory(words.lights);
    const std::string key = plan.key;
    stack::StackJob job(std::move(plan), RunOf(session));
    const stack::Band band = job.Combine(stack::RowsOf(number, job.Rows()));
    ThrowIfCancelled();
    stack::WriteBand(words.output.path, band, key);
    if (!session.quiet) {
        std::cout << "band: " << words.output.path << "\n";
    }
}

void JoinBands(const StackWords& words, const Session& session)
{
    const std::vector<std::string>& files = FilesByPlan(words);
    stack::SavedPlan plan = ReadPlan(files);
    CheckWishes(words, plan.options);
    CheckFiles(words, InputsOf(plan, files), {});
    TakeMemory(words.lights);
    const std::string key = plan.key;
    const Run run = RunOf(session);
    stack::StackJob job(std::move(plan), run);
    stack::Band whole = job.EmptyStack();
    stack::ReadBands({files.begin() + 1, files.end()}, key, whole, run);
    Save(words, job.GetOptions(), job.Finish(std::move(whole)), session);
}

} // namespace corvane::cli
