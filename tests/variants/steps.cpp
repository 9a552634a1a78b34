// Every operation of the catalogue, with each of its parameters at a few values, on frames of several kinds.

#include <cstdio>
#include <fstream>
#include <set>
#include <string>

#include "catalogue/operations.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "io/formats/cards.h"
#include "tests/variants/checksum.h"
#include "tests/variants/step_texts.h"

using namespace corvane;
using namespace corvane::catalogue;

namespace {

using Names = std::set<std::string>;

constexpr const char* kCurveFile = "checksum-curve.txt";

/// Prints what a step makes of a frame. Takes the operation, and the parameters given, from those that are left.
void Print(const std::string& text, io::Frame frame, Names& left)
{
    std::printf("%-16s %-56s ", frame.image.GetOrgFileName(), text.c_str());
    try {
        const Step step = ParseStep(text);
        RunStep(step, frame, {});
        io::WriteCoordinates(frame.image, frame.header);
        std::uint64_t hash = HashOf(frame.image);
        for (const std::string& card : frame.header.Cards()) {
            hash = HashOf(card.data(), card.size(), hash);
        }
        std::printf("%016llx\n", static_cast<unsigned long long>(hash));
        left.erase(step.operation->name);
        for (const Argument& argument : step.arguments.List()) {
            if (argument.isWritten) {
                left.erase(step.operation->name + " " + argument.parameter->name);
            }
        }
    } catch (const Error& error) {
        std::printf("refused: %s\n", error.what());
    }
}

} // namespace

bool PrintSteps()
{
    std::ofstream(kCurveFile) << "0 0.05\n0.2 0.5\n1 0.95\n";
    const Names steps = StepTexts({{"other", "other colour", "other undefined"}, kCurveFile, "mask"});
    Names left;
    for (const Operation& operation : Operations()) {
        if (!operation.IsStep()) {
            continue;
        }
        left.insert(operation.name);
        for (const Parameter& parameter : operation.parameters) {
            if (parameter.kind != Kind::Output) { // a file that is written beside what the step makes
                left.insert(operation.name + " " + parameter.name);
            }
        }
    }
    for (const char* name : {"mono", "colour", "undefined", "undefined colour"}) {
        const io::Frame frame = io::Load(name);
        for (const std::string& step : steps) {
            Print(step, frame, left);
        }
    }
    std::remove(kCurveFile);
    for (const std::string& name : left) {
        std::fprintf(stderr, "never ran to its end: %s\n", name.c_str());
    }
    return left.empty();
}
