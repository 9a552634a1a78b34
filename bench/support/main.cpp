// corvane_bench [--check] [--tiny] [--threads=N] [flags of Google Benchmark]
//
// --check fails when a line is above its limit, --tiny runs every line on tiny images to see that it still works.
// --threads times each line with N threads, too, and tells the gain. A wrong result always fails.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>

#include <benchmark/benchmark.h>

#include "bench/support/line.h"

namespace {

/// Takes a flag of our own out of the arguments; true when it was there.
bool TakeFlag(int& argc, char** argv, std::string_view flag)
{
    char** const end = std::remove(argv + 1, argv + argc, flag);
    const bool found = end != argv + argc;
    argc = static_cast<int>(end - argv);
    argv[argc] = nullptr;
    return found;
}

/// Takes --threads=N out of the arguments; 1 without it, 0 when N is none.
int TakeThreads(int& argc, char** argv)
{
    constexpr std::string_view kFlag = "--threads=";
    for (int i = 1; i < argc; ++i) {
        const std::string flag(argv[i]);
        if (flag.starts_with(kFlag)) {
            TakeFlag(argc, argv, flag);
            return std::max(std::atoi(flag.c_str() + kFlag.size()), 0);
        }
    }
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    using namespace corvane::bench;
    const bool check = TakeFlag(argc, argv, "--check");
    SetTiny(TakeFlag(argc, argv, "--tiny"));
    SetComparedThreads(TakeThreads(argc, argv));
    benchmark::Initialize(&argc, argv);
    if (ComparedThreads() == 0) {
        std::fprintf(stderr, "corvane_bench: --threads takes a number from 1 on\n");
        return 2;
    }
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    try {
        benchmark::RunSpecifiedBenchmarks();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "corvane_bench: %s\n", error.what());
        return 1;
    }
    const auto messages = check && !IsTiny() ? LinesAboveLimit() : std::vector<std::string>();
    for (const std::string& message : messages) {
        std::fprintf(stderr, "corvane_bench: %s\n", message.c_str());
    }
    return messages.empty() ? 0 : 1;
}
