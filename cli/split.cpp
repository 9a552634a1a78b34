#include <memory>
#include <string>

#include "catalogue/names.h"
#include "catalogue/separation.h"
#include "cli/cancel.h"
#include "cli/output.h"
#include "cli/session.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"
#include "io/frame.h"

namespace corvane::cli {
namespace {

struct SplitWords {
    std::string input;
    Output output;
    std::string component;
};

int Split(const SplitWords& words)
{
    catalogue::CheckComponent(words.component);
    io::CheckSave(words.output.path, words.output.save);
    CheckOutputs(words.output, {words.input});
    io::Frame frame = io::Load(words.input);
    ThrowIfCancelled();
    try {
        catalogue::RunSplit(frame, words.component, {});
    } catch (const CMemoryException&) {
        throw FileError(words.input, kMemoryText);
    }
    ThrowIfCancelled();
    io::Save(words.output.path, frame.image, frame.header, words.output.save);
    return kDone;
}

} // namespace

void AddSplit(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("split", "Take one component out of a colour image");
    auto words = std::make_shared<SplitWords>();
    AddCommonOptions(command, session);
    AddOutput(command, words->output, "The image to write: .fits, .tif or .png");
    AddSaveOptions(command, words->output.save);
    command.add_option("input", words->input, "The colour image")->required()->type_name("IN");
    command
        .add_option("--component", words->component,
                    "Which: " + catalogue::Joined(catalogue::ComponentWords()) +
                        "; c, m and y are the means of two planes")
        ->required()
        ->type_name("WORD");
    command.footer(
        "c is (G + B) / 2, m (R + B) / 2, y (R + G) / 2. The result has one plane, the header of IN and the "
        "component as its FILTER; its display level is that of the plane, or the mean of two (of y as of m).");
    command.callback([&session, words] { session.work = [words] { return Split(*words); }; });
}

} // namespace corvane::cli
