#include "cli/star_words.h"

#include <cstddef>
#include <iostream>

#include "catalogue/numbers.h"
#include "cli/output.h"
#include "cli/picture.h"
#include "corvane/core/error.h"
#include "corvane/core/text.h"

namespace corvane::cli {
namespace {

constexpr double kMinSigmas = 1.0;
constexpr double kMaxSigmas = 1000.0;
constexpr double kMaxLimit = 1e6;
constexpr int kMaxPlane = 2;

} // namespace

void AddStarOptions(CLI::App& command, StarWords& words)
{
    command.add_option("input", words.input, "The image to read")->required()->type_name("IN");
    command
        .add_option("--sigmas", words.find.sigmas,
                    "How far a star rises above the sky, in standard deviations of the sky [1 to 1000]")
        ->type_name("N")
        ->capture_default_str();
    command.add_option("--limit", words.limit, "Find the brightest stars, at most this many")
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--plane", words.plane, "Plane of a colour image to look at: 0 red, 1 green, 2 blue; else green")
        ->type_name("N");
    command.add_option("--map", words.map, "Write a picture of the image with a ring about each star, too")
        ->type_name("OUT.png");
    CLI::Option* json = command.add_flag("--json", words.json, "Print JSON");
    command.add_flag("--csv", words.csv, "Print the table alone, with commas between its values")->excludes(json);
}

void CheckStarWords(const StarWords& words, const std::vector<std::string>& outputs)
{
    catalogue::CheckRange("--sigmas", words.find.sigmas, kMinSigmas, kMaxSigmas);
    catalogue::CheckRange("--limit", words.limit, 1.0, kMaxLimit);
    catalogue::CheckRange("--plane", words.plane.value_or(0), 0, kMaxPlane);
    if (!words.map.empty()) {
        CheckPicture(words.map);
    }
    CheckOutputs({}, {words.input}, outputs);
}

int ChosenPlane(const StarWords& words, const CStlImage& image)
{
    const int plane = words.plane.value_or(stars::StarPlane(image));
    if (plane >= image.GetPlanes()) {
        throw FileError(words.input,
                        "has no plane " + std::to_string(plane) + "; a monochrome image has the plane 0 alone");
    }
    return plane;
}

stars::StarField FindIn(const StarWords& words, const CStlImage& image, int plane)
{
    stars::FindOptions options = words.find;
    options.limit = static_cast<std::size_t>(words.limit);
    stars::StarField field = stars::FindFieldStars(image, plane, options);
    if (field.stars.empty()) {
        throw FileError(words.input,
                        "no star rises " + NumberText(words.find.sigmas) + " standard deviations above the sky");
    }
    return field;
}

void PrintStars(const StarWords& words, const Table& table, nlohmann::ordered_json json, const std::string& summary)
{
    if (words.json) {
        json["stars"] = table.ToJson();
        std::cout << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
    } else if (words.csv) {
        std::cout << table.ToCsv();
    } else {
        std::cout << table.ToText() << summary;
    }
}

} // namespace corvane::cli
