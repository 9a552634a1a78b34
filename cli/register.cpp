#include <algorithm>
#include <iostream>
#include <memory>

#include "cli/cancel.h"
#include "cli/light_words.h"
#include "cli/output.h"
#include "cli/report.h"
#include "cli/session.h"
#include "stack/stack.h"

namespace corvane::cli {
namespace {

int Register(LightWords& words, const Session& session)
{
    FinishLightOptions(words, "register");
    CheckOutputs({}, InputsOf(words.options), {words.report});
    const stack::Registration lights = stack::Register(words.options, RunOf(session));
    ThrowIfCancelled();
    if (!words.report.empty()) {
        WriteReport(words.report, lights);
    }
    if (!session.quiet) {
        std::cout << LightsText(words.options, lights, true);
    }
    const bool isAny = std::any_of(lights.frames.begin(), lights.frames.end(), [&](const stack::FrameReport& light) {
        return light.used && &light != &lights.frames[static_cast<std::size_t>(lights.referenceLight)];
    });
    return isAny || lights.frames.size() == 1 ? kDone : kFailed;
}

} // namespace

void AddRegister(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("register", "Show how the lights of a night lie on each other");
    auto words = std::make_shared<LightWords>();
    AddCommonOptions(command, session);
    AddLightOptions(command, *words);
    command.footer(
        "Does what `stack` does before it combines, and writes no image. Shifts go to the right and down the "
        "file's rows, turns are about the middle, clockwise where the first row is the top.\nExit status 1: "
        "no light could be placed on the reference.");
    command.callback([&session, words] { session.work = [&session, words] { return Register(*words, session); }; });
}

} // namespace corvane::cli
