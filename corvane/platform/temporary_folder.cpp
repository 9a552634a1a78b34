#include <filesystem>
#include <system_error>

#include "corvane/platform/memory.h"

namespace corvane::platform {

std::string TemporaryFolder()
{
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    return error ? "." : folder.string();
}

} // namespace corvane::platform
