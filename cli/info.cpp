#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/statistics.h"
#include "cli/cancel.h"
#include "cli/json.h"
#include "cli/session.h"
#include "cli/standard_streams.h"
#include "corvane/core/error.h"
#include "corvane/core/stl_image.h"
#include "io/bayer.h"
#include "io/metadata.h"
#include "io/reader.h"

namespace corvane::cli {
namespace {

using catalogue::PlaneStatistics;

struct InfoOptions {
    std::vector<std::string> files;
    bool json = false;
};

template <typename Value>
void AddIfKnown(Json& json, const char* name, const std::optional<Value>& value)
{
    if (value) {
        json[name] = *value;
    }
}

// Units per pixel along an axis: the length of the matrix' column, times the increment where that is apart.
double PixelScale(const CImage& record, int axis)
{
    tagMATRIX2_2 matrix{};
    double increment = 1.0;
    const int kind = record.GetLTMtx(&matrix);
    record.GetCDelt(axis, &increment);
    const double turn = axis == 0 ? std::hypot(matrix.m11, matrix.m21) : std::hypot(matrix.m12, matrix.m22);
    return kind == kCdMatrix ? turn : kind == kPcMatrix ? turn * std::abs(increment) : std::abs(increment);
}

Json Coordinates(const CStlImage& record)
{
    Json axes = Json::array();
    for (int axis = 0; axis < 2; ++axis) {
        CString type;
        CString unit;
        double value = 0.0;
        double pixel = 0.0;
        record.GetCType(axis, &type);
        record.GetAxisInfo(axis, nullptr, &unit, nullptr);
        record.GetCRVal(axis, &value);
        record.GetCRPix(axis, &pixel);
        axes.push_back({{"type", type.GetString()},
                        {"unit", unit.GetString()},
                        {"value", value},
                        {"pixel", pixel},
                        {"per_pixel", PixelScale(record, axis)}});
    }
    return axes;
}

Json PlaneJson(const PlaneStatistics& plane)
{
    Json json;
    if (plane.counted > 0) {
        json = {{"min", plane.min}, {"max", plane.max}, {"mean", plane.mean}};
    }
    json["blank"] = plane.blank;
    json["not_finite"] = plane.infinite;
    return json;
}

void AddHeader(Json& json, const io::Header& header)
{
    AddIfKnown(json, "exposure_s", io::ExposureSeconds(header));
    AddIfKnown(json, "date", io::DateObs(header));
    AddIfKnown(json, "temperature_c", io::CcdTemperature(header));
    AddIfKnown(json, "gain", io::Gain(header));
    AddIfKnown(json, "filter", io::Filter(header));
    AddIfKnown(json, "object", header.Text("OBJECT"));
    AddIfKnown(json, "bayer", io::BayerPattern(header));
    json["rows"] = io::IsBottomUp(header) ? "bottom-up" : "top-down";
}

void AddExtension(Json& json, const std::optional<CFitsExtension>& extension)
{
    if (extension) {
        json["extension"] = {
            {"number", extension->GetNumber()}, {"name", extension->GetName()}, {"version", extension->GetVersion()}};
    }
}

// Without BAYERPAT a mosaic is taken as monochrome everywhere.
void AddNotes(Json& json, io::FrameReader& reader)
{
    const io::FrameInfo& info = reader.Info();
    const auto pattern = info.planes == 1 ? io::HintedBayerPattern(info.header) : std::nullopt;
    if (pattern) {
        json["notes"].push_back("FILTER = " + *pattern +
                                " names a Bayer pattern, but there is no BAYERPAT; `stack "
                                "--bayer " +
                                *pattern + "` or the step debayer:pattern=" + *pattern + " makes colours");
    }
    if (const std::string contradiction = reader.Contradiction(); !contradiction.empty()) {
        json["notes"].push_back(contradiction);
    }
}

void AddRecord(Json& json, const io::FrameReader& reader)
{
    CStlImage record;
    if (reader.Describe(record)) {
        for (int plane = 0; plane < reader.Planes(); ++plane) {
            json["levels"].push_back({record.GetLevelMin(plane), record.GetLevelMax(plane)});
        }
    }
    if (record.IsWCS() != 0) {
        json["wcs"] = Coordinates(record);
    }
}

// The listing for people is made from this, so that the two never differ.
Json Describe(const std::string& file)
{
    const std::unique_ptr<io::FrameReader> reader = OpenInput(file, io::Cubes::kFirstPlane);
    const io::FrameInfo& info = reader->Info();
    Json json = {{"file", file},          {"format", info.format}, {"width", info.width},
                 {"height", info.height}, {"planes", info.planes}, {"bits", info.bits}};
    if (info.plane != 0) {
        json["cube"] = {{"axes", info.axes}, {"plane", info.plane}};
    }
    AddExtension(json, info.extension);
    for (const std::string& part : reader->Parts()) {
        json["hdus"].push_back(part);
    }
    AddIfKnown(json, "blank_value", info.blank);
    AddHeader(json, info.header);
    AddRecord(json, *reader);
    for (const PlaneStatistics& plane : catalogue::ReadStatistics(*reader)) {
        json["statistics"].push_back(PlaneJson(plane));
    }
    AddNotes(json, *reader);
    return json;
}

// Enough digits for a coordinate; samples are floats, which seven digits tell.
std::string FigureText(const Json& number, int digits = 10)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.*g", digits, number.get<double>());
    return text;
}

std::string SampleText(const Json& sample)
{
    return FigureText(sample, 7);
}

void PrintLine(const std::string& name, const std::string& text)
{
    std::cout << "  " << name << std::string(name.size() < 14 ? 14 - name.size() : 1, ' ') << text << "\n";
}

void PrintIfKnown(const Json& json, const char* key, const char* name, const char* unit = "")
{
    if (json.contains(key)) {
        const Json& value = json[key];
        PrintLine(name, (value.is_string() ? value.get<std::string>() : FigureText(value)) + unit);
    }
}

std::string CoordinateText(const Json& axis)
{
    const auto unit = axis["unit"].get<std::string>();
    const bool isAngle = unit == "deg";
    const double step = axis["per_pixel"].get<double>() * (isAngle ? 3600.0 : 1.0);
    const auto withUnit = [](const std::string& number, const std::string& name) {
        return name.empty() ? number : number + " " + name;
    };
    return withUnit(FigureText(axis["value"]), unit) + " at pixel " + FigureText(axis["pixel"]) + ", " +
           withUnit(FigureText(step, 5), isAngle ? "arcsec" : unit) + " per pixel";
}

std::string StatisticsText(const Json& plane)
{
    std::string text = plane.contains("min") ? "min " + SampleText(plane["min"]) + ", max " + SampleText(plane["max"]) +
                                                   ", mean " + SampleText(plane["mean"])
                                             : "no finite sample";
    for (const auto& [key, what] : {std::pair("blank", " blank"), std::pair("not_finite", " not finite")}) {
        const auto count = plane[key].get<long long>();
        text += count == 0 ? "" : ", " + std::to_string(count) + what;
    }
    return text;
}

std::string CubeText(const Json& cube)
{
    std::string text;
    long long planes = 1;
    for (std::size_t i = 0; i < cube["axes"].size(); ++i) {
        const auto size = cube["axes"][i].get<long long>();
        text += (i == 0 ? "" : " x ") + std::to_string(size);
        planes *= i < 2 ? 1 : size;
    }
    return text + ", plane " + std::to_string(cube["plane"].get<long long>()) + " of " + std::to_string(planes) +
           ": choose one as FILE[plane N]";
}

void PrintStatistics(const Json& planes)
{
    for (std::size_t i = 0; i < planes.size(); ++i) {
        PrintLine("plane " + std::to_string(i), StatisticsText(planes[i]));
    }
}

// What lies at the start of a file and has no name needs no line.
void PrintExtension(const Json& extension)
{
    const auto number = extension["number"].get<int>();
    const auto name = extension["name"].get<std::string>();
    if (number > 0 || !name.empty()) {
        PrintLine("extension", std::to_string(number) + (name.empty() ? "" : " " + name) + ", version " +
                                   std::to_string(extension["version"].get<int>()));
    }
}

void Print(const Json& json)
{
    const auto number = [&](const char* key) { return std::to_string(json[key].get<int>()); };
    std::cout << json["file"].get<std::string>() << "\n";
    PrintLine("size", number("width") + " x " + number("height") + (json["planes"] == 1 ? ", 1 plane" : ", 3 planes"));
    if (json.contains("cube")) {
        PrintLine("cube", CubeText(json["cube"]));
    }
    PrintLine("format", json["format"].get<std::string>() + ", " + number("bits") + " bits, rows " +
                            json["rows"].get<std::string>());
    if (json.contains("extension")) {
        PrintExtension(json["extension"]);
    }
    for (const Json& part : json.value("hdus", Json::array())) {
        PrintLine("HDU", part.get<std::string>());
    }
    PrintIfKnown(json, "blank_value", "blank");
    PrintIfKnown(json, "object", "object");
    PrintIfKnown(json, "date", "date");
    PrintIfKnown(json, "exposure_s", "exposure", " s");
    PrintIfKnown(json, "filter", "filter");
    PrintIfKnown(json, "temperature_c", "temperature", " C");
    PrintIfKnown(json, "gain", "gain");
    PrintIfKnown(json, "bayer", "mosaic");
    for (const Json& levels : json.value("levels", Json::array())) {
        PrintLine("levels", SampleText(levels[0]) + " to " + SampleText(levels[1]));
    }
    for (const Json& axis : json.value("wcs", Json::array())) {
        PrintLine(axis["type"].get<std::string>(), CoordinateText(axis));
    }
    PrintStatistics(json["statistics"]);
    for (const Json& note : json.value("notes", Json::array())) {
        PrintLine("note", note.get<std::string>());
    }
}

// A file that cannot be read does not keep the others from being shown.
int Info(const InfoOptions& options)
{
    Json all = Json::array();
    int status = kDone;
    for (const std::string& file : options.files) {
        ThrowIfCancelled();
        try {
            Json json = Describe(file);
            if (!options.json) {
                std::cout << (all.empty() ? "" : "\n");
                Print(json);
            }
            all.push_back(std::move(json));
        } catch (const Error& error) {
            std::cerr << "corvane: " << error.what() << "\n";
            all.push_back({{"file", file}, {"error", error.Reason()}});
            status = kFailed;
        }
    }
    if (options.json) {
        std::cout << all.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
    }
    return status;
}

} // namespace

void AddInfo(CLI::App& app, Session& session)
{
    CLI::App& command = *app.add_subcommand("info", "Tell what image files hold");
    auto options = std::make_shared<InfoOptions>();
    AddCommonOptions(command, session);
    command.add_option("files", options->files, "The images to look at; - is standard input")
        ->required()
        ->type_name("FILE");
    command.add_flag("--json", options->json, "Print JSON: a list with one object for each file");
    command.callback([&session, options] { session.work = [options] { return Info(*options); }; });
}

} // namespace corvane::cli
