#include "cli/colour.h"

#include <iostream>
#include <set>

#include <CLI/Validators.hpp>

#include "catalogue/match.h"
#include "cli/cancel.h"
#include "cli/pair.h"
#include "corvane/core/error.h"
#include "corvane/platform/memory_exception.h"

namespace corvane::cli {
namespace {

std::string Range(int low, int high)
{
    return " [pixels, " + std::to_string(low) + " to " + std::to_string(high) + "]";
}

void AddPlaces(CLI::App& command, std::vector<catalogue::FramePlace>& frames, const std::vector<std::string>& names)
{
    for (std::size_t i = 0; i < frames.size(); ++i) {
        AddNumbers(command, catalogue::FrameOption("--points", i), frames[i].points,
                   "align points: about where " + std::string(i == 0 ? "one star, or two, are" : "the same stars are") +
                       " in " + names[i])
            ->type_name("X1,Y1[,X2,Y2]");
    }
    for (std::size_t i = 0; i < frames.size(); ++i) {
        AddNumbers(command, catalogue::FrameOption("--shift", i), frames[i].shift,
                   "Shift of " + names[i] + " to the right and down [pixels]")
            ->type_name("DX,DY");
        command
            .add_option(catalogue::FrameOption("--angle", i), frames[i].angle,
                        "Turn of " + names[i] + ", clockwise where the first row is the top [degrees]")
            ->type_name("N");
    }
}

void AddRegistration(CLI::App& command, catalogue::Registration& registration, const std::vector<std::string>& names)
{
    command
        .add_option("--align", registration.align,
                    "How the frames are brought onto " + names[0] +
                        ": none, shift (look for a star), points (stars pointed at)")
        ->type_name("WORD")
        ->capture_default_str();
    AddNumbers(command, "--at", registration.at, "align shift: about where the star is in " + names[0])
        ->type_name("X,Y");
    command
        .add_option("--size", registration.size,
                    "align shift: side of the square about the star that is looked for" +
                        Range(catalogue::kMinPatch, catalogue::kMaxPatch))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--range", registration.range,
                    "align shift: width of the square that is searched" +
                        Range(catalogue::kMinSearch, catalogue::kMaxMatchRange))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_option("--box", registration.box,
                    "align points: side of the square in which a star's centre is measured" +
                        Range(catalogue::kMinBox, catalogue::kMaxBox))
        ->type_name("N")
        ->capture_default_str();
    registration.frames.resize(names.size());
    AddPlaces(command, registration.frames, names);
}

void Say(const std::vector<std::string>& inputs, const std::vector<catalogue::Fit>& fits)
{
    for (std::size_t i = 0; i < fits.size(); ++i) {
        if (fits[i].stars > 0) {
            std::cout << inputs[i] << ": " << catalogue::ToText(fits[i]) << "\n";
        }
    }
}

int Combine(const ColourWords& words, const Session& session, MakeColour make)
{
    catalogue::CheckColour(words.options);
    io::CheckSave(words.output.path, words.output.save);
    CheckOutputs(words.output, words.inputs);
    std::vector<io::Frame> frames;
    for (const std::string& input : words.inputs) {
        frames.push_back(io::Load(input));
        ThrowIfCancelled();
    }
    std::vector<catalogue::Fit> fits;
    try {
        fits = make(frames, words.options, ContextOf(session));
    } catch (const CMemoryException&) {
        throw FileError(words.inputs[0], kMemoryText);
    }
    ThrowIfCancelled();
    io::Save(words.output.path, frames[0].image, frames[0].header, words.output.save);
    if (!session.quiet) {
        Say(words.inputs, fits);
    }
    return kDone;
}

} // namespace

void AddColourCommand(CLI::App& command, const std::shared_ptr<ColourWords>& words, Session& session, MakeColour make,
                      const std::vector<std::string>& names, const char* scaleNames)
{
    AddCommonOptions(command, session);
    AddOutput(command, words->output, "The image to write: .fits, .tif or .png");
    AddSaveOptions(command, words->output.save, scaleNames);
    words->inputs.resize(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        command.add_option(names[i], words->inputs[i], "Frame " + std::to_string(i + 1))->required()->type_name("");
    }
    AddRegistration(command, words->options.registration, names);
    command.callback(
        [&session, words, make] { session.work = [&session, words, make] { return Combine(*words, session, make); }; });
}

void AddOutside(CLI::App& command, ColourWords& words)
{
    command.add_option("--outside", words.options.outside, "The value of samples outside of a frame, a whole number")
        ->type_name("N")
        ->capture_default_str();
}

std::string AlignmentFooter()
{
    return "The star of --align shift should be the brightest within the square and the range, and wider than two "
           "pixels. What stars say is printed, to a tenth of a pixel with shift; shifts and turns by hand are added to "
           "it. A frame turns about its first star, without stars about its middle.";
}

} // namespace corvane::cli
