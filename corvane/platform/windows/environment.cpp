#include "corvane/platform/environment.h"

#include <cstring>
#include <filesystem>

#include "corvane/platform/types.h"

namespace corvane::platform {

// Asked of the system each time: the C runtime's copy is from the start of the program.
std::string EnvironmentText(const char* name)
{
    const std::wstring wideName(name, name + std::strlen(name)); // ours are ASCII
    std::wstring text;
    DWORD length = 0;
    while ((length = GetEnvironmentVariableW(wideName.c_str(), text.data(), static_cast<DWORD>(text.size()))) >
           text.size()) {
        text.resize(length);
    }
    text.resize(length);
    return std::filesystem::path(text).string();
}

} // namespace corvane::platform
