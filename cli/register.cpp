#include <algorithm>
#include <iostream>
#include <memory>

#include "cli/all_operations.h"
#include "cli/cancel.h"
#include "cli/light_words.h"
#include "cli/operation_command.h"
#include "cli/output.h"
#include "cli/report.h"
#include "cli/session.h"
#include "corvane/core/error.h"
#include "stack/stack.h"

namespace corvane::cli {
namespace {

int Register(const LightWords& words, const Session& session)
{
    const stack::Options asked = OptionsOf(words);
    CheckOutputs({}, InputsOf(words), {words.report});
    const Run run = RunOf(session);
    const stack::SortedNight night = SortedFrames(asked, {words.report}, run);
    if (night.stacks.size() > 1) {
        throw ParameterError("filter", "none",
                             "there are lights of several, of which it takes one; the first is " +
                                 night.stacks.front().filter);
    }
    const stack::Options& options = night.stacks.front().options;
    CheckOutputs({}, stack::FilesOf(options), {words.report});
    const stack::Registration lights = stack::Register(options, run);
    ThrowIfCancelled();
    if (!words.report.empty()) {
        WriteReport(words.report, lights);
    }
    if (!session.quiet) {
        std::cout << LightsText(options, lights, true);
    }
    const bool isAny = std::any_of(lights.frames.begin(), lights.frames.end(), [&](const stack::FrameReport& light) {
        return light.used && &light != &lights.frames[static_cast<std::size_t>(lights.referenceLight)];
    });
    return isAny || lights.frames.size() == 1 ? kDone : kFailed;
}

} // namespace

void AddRegister(CLI::App& app, Session& session)
{
    auto words = std::make_shared<LightWords>();
    const catalogue::Operation& operation = OperationCalled("register");
    CLI::App& command = AddCommand(app, session, operation);
    AddLightOptions(command, operation, *words);
    command.footer(command.get_footer() + "\nExit status 1: no light could be placed on the reference.");
    command.callback([&session, words] { session.work = [&session, words] { return Register(*words, session); }; });
}

} // namespace corvane::cli
