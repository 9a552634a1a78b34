// Steps of the catalogue by name and arguments, one after the other on a small image: colour for an odd first byte.

#include <csignal>
#include <cstdlib>
#include <map>
#include <new>
#include <sstream>

#include <sys/resource.h>

#include "catalogue/operations.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "tests/fuzz/target.h"
#include "tests/support/images.h"

namespace {

using namespace corvane;

/// What a parameter takes, as a person would write it; empty for files and curves.
std::string Example(const catalogue::Parameter& parameter)
{
    using catalogue::Kind;
    const auto number =
        std::to_string(parameter.min < 2.0 && parameter.max > 2.0 ? 2 : static_cast<int>(parameter.min));
    std::map<Kind, std::string> examples{{Kind::Number, number},
                                         {Kind::Whole, number},
                                         {Kind::Flag, "yes"},
                                         {Kind::Text, "M31,,"},
                                         {Kind::Rectangle, "2:3:9:8"}};
    return parameter.kind == Kind::Choice ? parameter.choices.front() : examples[parameter.kind];
}

std::string Written(const catalogue::Operation& operation)
{
    std::string step = operation.name + ":";
    for (const catalogue::Parameter& parameter : operation.parameters) {
        const std::string value = Example(parameter);
        step += value.empty() ? "" : parameter.name + "=" + value + ",";
    }
    step.pop_back(); // the last separator
    return step;
}

/// Images that grow beyond all bounds meet the limits of a full memory and a full disk early.
void LimitRoom()
{
    constexpr std::uint64_t kMostBytes = 16 << 20;
    SetMemoryBudget(kMostBytes);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{kMostBytes, kMostBytes};
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

std::vector<std::string> Seeds()
{
    std::vector<std::string> seeds;
    for (const catalogue::Operation& operation : catalogue::Operations()) {
        seeds.push_back('0' + operation.name + " invert");
        seeds.push_back('1' + Written(operation));
    }
    return seeds;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool isLimited = (LimitRoom(), true);
    const std::string input(reinterpret_cast<const char*>(data), size);
    if (!isLimited || input.empty()) {
        return 0;
    }
    io::Frame frame;
    frame.image = test::RandomImage({17, 13}, input[0] % 2 != 0 ? 3 : 1, 1);
    test::SprinkleOddities(frame.image, 2);
    std::istringstream steps(input.substr(1));
    try {
        for (std::string step; steps >> step;) {
            catalogue::RunStep(catalogue::ParseStep(step), frame, {});
        }
    } catch (const Error&) { // what a user is told
    } catch (const std::bad_alloc&) {
    }
    if (frame.image.GetWidth() < 1 || frame.image.GetHeight() < 1 || frame.image.GetStore() == nullptr) {
        std::abort();
    }
    return 0;
}
