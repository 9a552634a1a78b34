#include "cli/star_words.h"

#include <iostream>

#include "cli/all_operations.h"
#include "cli/operation_command.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "cli/table.h"

namespace corvane::cli {

CLI::App& AddStarCommand(CLI::App& app, Session& session, const char* name, StarWords& words)
{
    words.operation = &OperationCalled(name);
    CLI::App& command = AddCommand(app, session, *words.operation);
    AddInputs(command, *words.operation, words.files);
    AddParameters(command, *words.operation, words.settings);
    command.add_option("--map", words.map, "Write a picture of the image with a ring about each star, too")
        ->type_name("OUT.png");
    AddTableFlags(command, words.json, words.csv);
    return command;
}

catalogue::Arguments CheckedArguments(const StarWords& words, const std::vector<std::string>& outputs)
{
    catalogue::Arguments arguments = catalogue::MakeArguments(*words.operation, words.settings);
    if (!words.map.empty()) {
        io::CheckPicture(words.map);
    }
    CheckOutputs({}, {words.Input()}, outputs);
    return arguments;
}

void PrintStars(const StarWords& words, const Json& field, const catalogue::Table& stars, const std::string& summary)
{
    if (words.json) {
        Json all = field;
        all["stars"] = ToJson(stars);
        std::cout << ToText(all);
    } else {
        std::cout << (words.csv ? ToCsv(stars) : ToText(stars) + summary);
    }
}

Json FieldJson(const StarWords& words, const catalogue::Table& field)
{
    Json json{{"file", words.Input()}};
    json.update(ToJson(field).front());
    return json;
}

Error OfInput(const Error& error, const StarWords& words)
{
    return OnFiles(error, *words.operation, words.files);
}

} // namespace corvane::cli
