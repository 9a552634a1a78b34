// Steps of the catalogue by name and arguments, one after the other on a small image: colour for an odd first byte.

#include <csignal>
#include <cstdlib>
#include <new>
#include <sstream>

#include <sys/resource.h>

#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "corvane/core/memory_budget.h"
#include "tests/fuzz/target.h"
#include "tests/support/images.h"
#include "tests/variants/step_texts.h"

namespace {

using namespace corvane;

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
    for (const std::string& step : StepTexts({{"none.fits"}, "none.txt", "none.fits"})) {
        seeds.push_back((seeds.size() % 2 == 0 ? '0' : '1') + step + " invert");
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
            const catalogue::Step parsed(step);
            if (catalogue::WrittenFilesOf(parsed.arguments).empty()) { // chance is to write no files
                catalogue::RunStep(parsed, frame, {});
            }
        }
    } catch (const Error&) { // what a user is told
    } catch (const std::bad_alloc&) {
    }
    if (frame.image.GetWidth() < 1 || frame.image.GetHeight() < 1 || frame.image.GetStore() == nullptr) {
        std::abort();
    }
    return 0;
}
