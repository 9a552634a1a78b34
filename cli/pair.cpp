#include "cli/pair.h"

#include <iostream>
#include <set>
#include <sstream>

#include <CLI/Validators.hpp>

#include "catalogue/parameter.h"
#include "cli/cancel.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::cli {

void AddPairFiles(CLI::App& command, PairFiles& files, const std::string& firstName, const std::string& secondName)
{
    AddOutput(command, files.output, "The image to write: .fits, .tif or .png");
    AddSaveOptions(command, files.output.save);
    command.add_option(firstName, files.first, "The image that the other is placed on")->required()->type_name("");
    command.add_option(secondName, files.second, "The image that is placed on it")->required()->type_name("");
}

std::vector<double> ParseNumbers(const std::string& name, const std::string& text)
{
    const catalogue::Parameter number{.name = name, .summary = ""};
    std::vector<double> numbers;
    std::istringstream items(text + ','); // what stands behind a last comma is an item, too
    for (std::string item; std::getline(items, item, ',');) {
        numbers.push_back(std::get<double>(catalogue::ParseValue(number, item)));
    }
    return numbers;
}

CLI::Option* AddNumbers(CLI::App& command, const std::string& name, std::vector<double>& numbers,
                        const std::string& help)
{
    const auto read = [&numbers, name](const std::string& text) { numbers = ParseNumbers(name, text); };
    return command.add_option_function<std::string>(name, read, help);
}

void AddPlacement(CLI::App& command, catalogue::Placement& placement, std::string& align,
                  const std::string& secondPoints)
{
    command.add_option("--dx", placement.dx, "Shift to the right [pixels]")->type_name("N")->capture_default_str();
    command.add_option("--dy", placement.dy, "Shift downwards [pixels]")->type_name("N")->capture_default_str();
    command.add_option("--angle", placement.angle, "Turn, clockwise where the first row is the top [degrees]")
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--align", align, "points: find shift and turn from stars; --dx, --dy and --angle are added")
        ->check(CLI::IsMember(std::set<std::string>{"none", "points"}))
        ->type_name("WORD");
    AddNumbers(command, "--points", placement.points, "Roughly where one star, or two, are in the first image")
        ->type_name("X1,Y1[,X2,Y2]");
    AddNumbers(command, secondPoints, placement.secondPoints, "Roughly where the same stars are in the other image")
        ->type_name("X1,Y1[,X2,Y2]");
    command
        .add_option("--box", placement.box,
                    "Side of the square in which a star's centre is measured [pixels, " +
                        std::to_string(catalogue::kMinBox) + " to " + std::to_string(catalogue::kMaxBox) + "]")
        ->type_name("N")
        ->capture_default_str();
}

void CheckAlign(const std::string& align, const catalogue::Placement& placement)
{
    if (align == "points" && !placement.IsByStars()) {
        throw UsageError("--align points needs --points, and the same stars in the other image");
    }
    if (align == "none" && placement.IsByStars()) {
        throw UsageError("--points needs --align points");
    }
}

int JoinPair(const PairFiles& files, const Session& session,
             const std::function<catalogue::Fit(io::Frame& first, io::Frame& second)>& join)
{
    io::CheckSave(files.output.path, files.output.save);
    CheckOutputs(files.output, {files.first, files.second});
    io::Frame first = io::Load(files.first);
    io::Frame second = io::Load(files.second);
    ThrowIfCancelled();
    catalogue::Fit fit{};
    try {
        fit = join(first, second);
    } catch (const CMemoryException&) {
        throw FileError(files.first, kMemoryText);
    }
    ThrowIfCancelled();
    io::Save(files.output.path, first.image, first.header, files.output.save);
    if (fit.stars > 0 && !session.quiet) {
        std::cout << catalogue::ToText(fit) << "\n";
    }
    return kDone;
}

} // namespace corvane::cli
