#include "cli/stack_save.h"

#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "cli/cancel.h"
#include "cli/report.h"
#include "io/frame.h"
#include "io/header.h"
#include "io/sky.h"
#include "stack/names.h"
#include "stack/registered.h"

namespace corvane::cli {
namespace {

// The rows of a map run as those of the stack.
io::Header HeaderOf(const Map& map, const io::Header& stack)
{
    io::Header header;
    const std::optional<std::string> unit = map.unit != nullptr ? map.unit : stack.Text("BUNIT");
    for (const auto& [keyword, text] : {std::pair("BUNIT", unit), std::pair("ROWORDER", stack.Text("ROWORDER"))}) {
        if (text) {
            header.Set(keyword, *text);
        }
    }
    return header;
}

/// The maps that are part of the file of the stack; those on its grid lie where it does on the sky.
std::vector<io::Extension> ExtensionsOf(const CStlImage& image, stack::Result& result)
{
    std::vector<io::Extension> extensions;
    for (const Map& map : kMaps) {
        CStlImage& samples = result.*map.image;
        io::Header header = HeaderOf(map, result.header);
        if (samples.GetWidth() == image.GetWidth() && samples.GetHeight() == image.GetHeight()) {
            samples.SetCoordinates(image.GetCoordinates());
            io::TakeCoordinates(result.header, header);
        }
        if (samples.GetPlanes() > 0) {
            extensions.push_back({map.extension, samples, header});
        }
    }
    return extensions;
}

// The stack comes last, so that everything else can be taken back when it cannot be written.
void SaveAll(const StackWords& words, const stack::Options& options, stack::Result& result, const Run& run)
{
    io::Frame frame;
    frame.image.Swap(&result.image);
    frame.header = result.header;
    Provisional others;
    const std::vector<std::string> registered = stack::RegisteredFiles(options);
    for (std::size_t i = 0; i < registered.size(); ++i) {
        if (result.frames[i].used) {
            others.Add(registered[i]);
        }
    }
    if (!words.preview.empty()) {
        SavePicture(words.preview, frame, words.picture);
        others.Add(words.preview);
    }
    for (const Map& map : kMaps) {
        if (const std::string& file = words.*map.file; !file.empty()) {
            io::Save(file, result.*map.image, HeaderOf(map, result.header), {});
            others.Add(file);
        }
    }
    if (!words.lights.report.empty()) {
        WriteReport(words.lights.report, result, &frame, run);
        others.Add(words.lights.report);
    }
    if (words.wantsBoth) {
        io::Save(words.Stars(), result.stars, result.starsHeader, words.output.save);
        others.Add(words.Stars());
    }
    const std::vector<io::Extension> maps =
        words.withMaps ? ExtensionsOf(frame.image, result) : std::vector<io::Extension>();
    io::Save(words.output.path, frame.image, result.header, words.output.save, maps);
    others.Keep();
}

std::string CombinedText(const stack::Options& options, const stack::Result& result)
{
    if (!result.rejection) {
        return "";
    }
    return std::string("combined: ") + stack::NameOf(stack::kCombineNames, CombineOf(options)) + ", rejection " +
           stack::NameOf(stack::kRejectNames, *result.rejection) + "\n";
}

std::string OutputsText(const StackWords& words)
{
    std::string text = "stack: " + words.output.path + "\n";
    const auto add = [&](const char* what, const std::string& file) {
        text += file.empty() ? "" : std::string(what).append(": ").append(file) + "\n";
    };
    add("stars", words.Stars());
    add("registered", words.registered);
    add("preview", words.preview);
    for (const Map& map : kMaps) {
        add(map.what, words.*map.file);
    }
    add("report", words.lights.report);
    return text;
}

void Tell(const StackWords& words, const stack::Options& options, const stack::Result& result, const Session& session)
{
    if (!session.quiet) {
        std::cout << LightsText(options, result, session.verbose) << CombinedText(options, result) << DepthText(result)
                  << OutputsText(words);
    }
}

} // namespace

void Save(const StackWords& words, const stack::Options& options, stack::Result result, const Session& session)
{
    ThrowIfCancelled();
    SaveAll(words, options, result, RunOf(session));
    Tell(words, options, result, session);
}

} // namespace corvane::cli
