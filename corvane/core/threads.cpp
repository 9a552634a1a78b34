#include "corvane/core/threads.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <string>

#include "corvane/platform/environment.h"
#include "corvane/platform/processors.h"

namespace corvane {
namespace {

constexpr int kMostThreads = 1024;

std::atomic<int> chosen{0};

int DefaultThreads()
{
    const std::string text = platform::EnvironmentText("CORVANE_THREADS");
    int threads = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
    const bool isNumber = error == std::errc() && rest == text.data() + text.size() && threads > 0;
    return std::min(isNumber ? threads : platform::AvailableProcessors(), kMostThreads);
}

} // namespace

int Threads()
{
    static const int otherwise = DefaultThreads();
    const int threads = chosen;
    return threads > 0 ? threads : otherwise;
}

void SetThreads(int threads)
{
    chosen = std::min(threads, kMostThreads);
}

} // namespace corvane
