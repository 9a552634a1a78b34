#include "cli/recipe_words.h"

#include "cli/cancel.h"
#include "cli/session.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::cli {

CLI::Option* AddRecipe(CLI::App& command, std::string& recipe, const std::string& what)
{
    std::string names;
    for (const std::string& name : catalogue::NamesOfRecipes()) {
        names += name + "|";
    }
    return command.add_option("--recipe", recipe, what)->type_name(names + "FILE");
}

std::vector<std::string> FilesOfSteps(const std::vector<catalogue::Step>& steps,
                                      std::vector<std::string> (*filesOf)(const catalogue::Arguments&))
{
    std::vector<std::string> all;
    for (const catalogue::Step& step : steps) {
        const std::vector<std::string> files = filesOf(step.arguments);
        all.insert(all.end(), files.begin(), files.end());
    }
    return all;
}

// Here the catalogue speaks of the image, not of the command line: the file belongs into the message.
void RunOnFile(const std::string& file, const catalogue::Recipe& steps,
               void (*runStep)(const catalogue::Step&, io::Frame&, const Run&), io::Frame& frame, Provisional& others,
               const Run& run)
{
    for (const catalogue::Step& step : steps) {
        try {
            runStep(step, frame, run);
        } catch (const Error& error) {
            throw OfFile(file, error);
        } catch (const CMemoryException&) {
            throw FileError(file, kMemoryText);
        }
        ThrowIfCancelled();
        for (const std::string& written : catalogue::WrittenFilesOf(step.arguments)) {
            others.Add(written);
        }
    }
}

} // namespace corvane::cli
