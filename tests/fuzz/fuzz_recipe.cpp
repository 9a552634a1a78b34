// Lists of steps as people write and keep them, a step a line, and the files of points that curves are read from. A
// step that can be read is written so that it reads the same again.

#include <cstdlib>
#include <sstream>

#include "catalogue/points.h"
#include "catalogue/step.h"
#include "corvane/core/error.h"
#include "tests/fuzz/scratch.h"
#include "tests/fuzz/target.h"
#include "tests/variants/step_texts.h"

namespace {

using namespace corvane;

void ReadStep(const std::string& line)
{
    std::string written;
    try {
        written = catalogue::ToText(catalogue::ParseStep(line));
    } catch (const Error&) { // what a user is told
        return;
    }
    if (catalogue::ToText(catalogue::ParseStep(written)) != written) {
        std::abort();
    }
}

} // namespace

std::vector<std::string> Seeds()
{
    std::vector<std::string> seeds{"0 0\n0.25, 0.5\n1 1 # white\n", "0\n0.1\n1\n", "curve:points=0:0,,0.5:0.7,,1:1\n"};
    for (const std::string& step : StepTexts({{"none.fits"}, "none.txt", "none.fits"})) {
        seeds.push_back("median:type=1\n" + step + "\n");
    }
    return seeds;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        ReadStep(line);
    }
    const test::ScratchFile file(".txt", text);
    try {
        catalogue::Tabulate(catalogue::ReadPoints(file.Path()), 256);
    } catch (const Error&) { // what a user is told
    }
    return 0;
}
