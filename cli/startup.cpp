#include "cli/startup.h"

#include <exception>
#include <string_view>

#include <unistd.h>

#include "cli/session.h"

namespace corvane::cli {
namespace {

std::terminate_handler before = nullptr;

// What is thrown before main is a want of memory, or nothing when there is none for the exception either.
[[noreturn]] void Fail()
{
    constexpr std::string_view kText = "corvane: not enough memory\n";
    [[maybe_unused]] const auto told = write(STDERR_FILENO, kText.data(), kText.size());
    _exit(kFailed);
}

// Ahead of the program's own statics.
__attribute__((constructor(101))) void BeginStartup()
{
    before = std::set_terminate(Fail);
}

} // namespace

void EndStartup()
{
    std::set_terminate(before);
}

} // namespace corvane::cli
