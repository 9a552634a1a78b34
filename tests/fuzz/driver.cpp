// Runs a fuzz target without a fuzzer: on its seeds, and on seeds that were damaged, the same ones on every machine.
//   fuzz_TARGET ROUNDS            damaged inputs; the one at work is kept as TARGET-input until the run has passed
//   fuzz_TARGET FILE...           the files, to repeat a finding
//   fuzz_TARGET --seeds FOLDER    writes the seeds, for a fuzzer to begin from

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/target.h"
#include "tests/support/images.h"

namespace {

using corvane::test::Random;

/// A byte changed, a part or all that follows cut out or doubled, or a number put in: numbers most of all, since they
/// are what a reader believes.
std::string Damaged(std::string input, Random& random)
{
    static const char* const kPieces[] = {"0", "-1", "1e300", "nan", "2147483648", "99999999999", "'", "\xff\xff", ","};
    for (int edits = random.Whole(1, random.Whole(1, 6)); edits > 0 && !input.empty(); --edits) {
        const auto at = static_cast<std::size_t>(random.Next() % input.size());
        const int length = random.Whole(0, 9) == 0 ? 1 << 20 : random.Whole(1, 80);
        const std::string part = input.substr(at, static_cast<std::size_t>(length));
        const std::string instead[] = {static_cast<char>(random.Next()) + part.substr(1), "", part + part,
                                       kPieces[random.Next() % std::size(kPieces)]};
        const auto kind = std::min(random.Next() % 6, std::size(instead) - 1);
        const bool isNumber = kind == std::size(instead) - 1;
        const auto digit = std::min(input.find_first_of("0123456789", at), input.size());
        input.replace(isNumber ? digit : at, isNumber ? instead[kind].size() : part.size(), instead[kind]);
    }
    return input;
}

void Run(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

void RunRounds(const std::string& kept, int rounds)
{
    const std::vector<std::string> seeds = Seeds();
    std::for_each(seeds.begin(), seeds.end(), Run);
    Random random(1);
    for (int i = 0; i < rounds; ++i) {
        const std::string input = Damaged(seeds[random.Next() % seeds.size()], random);
        std::ofstream(kept, std::ios::binary) << input;
        Run(input);
    }
    std::filesystem::remove(kept);
}

void WriteSeeds(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    const std::vector<std::string> seeds = Seeds();
    for (std::size_t i = 0; i < seeds.size(); ++i) {
        std::ofstream(folder / ("seed-" + std::to_string(i)), std::ios::binary) << seeds[i];
    }
}

} // namespace

int main(int argc, char** argv)
{
    int rounds = 0;
    char behind = 0;
    if (argc == 2 && std::sscanf(argv[1], "%9d%c", &rounds, &behind) == 1) {
        RunRounds(std::filesystem::path(argv[0]).filename().string() + "-input", rounds);
        return 0;
    }
    if (argc == 3 && std::string(argv[1]) == "--seeds") {
        WriteSeeds(argv[2]);
        return 0;
    }
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        Run({std::istreambuf_iterator<char>(file), {}});
    }
    return argc > 1 ? 0 : 2;
}
