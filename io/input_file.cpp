#include "io/input_file.h"

#include <filesystem>
#include <system_error>

#include "corvane/core/error.h"

namespace corvane::io {
namespace {

namespace fs = std::filesystem;

bool Exists(const std::string& path)
{
    std::error_code error;
    return fs::exists(path, error);
}

std::string KindOf(const std::string& path, const fs::file_status& status)
{
    switch (status.type()) {
    case fs::file_type::directory:
        return "is a folder; name its files, as " + (fs::path(path) / "*.fits").string();
    case fs::file_type::fifo:
        return "is a pipe; only ordinary files are read";
    case fs::file_type::character:
    case fs::file_type::block:
        return "is a device; only ordinary files are read";
    default:
        return "is not an ordinary file";
    }
}

} // namespace

ChosenFile SplitChoice(const std::string& path)
{
    const auto bracket = path.rfind('[');
    if (bracket == path.npos || bracket + 2 >= path.size() || !path.ends_with(']') || Exists(path) ||
        !Exists(path.substr(0, bracket))) {
        return {path, ""};
    }
    return {path.substr(0, bracket), path.substr(bracket + 1, path.size() - bracket - 2)};
}

std::string StemOf(const std::string& path)
{
    const fs::path name = fs::path(SplitChoice(path).file).filename();
    const std::string ending = name.extension().string();
    return (ending == ".gz" || ending == ".fz" || ending == ".Z" ? name.stem() : name).stem().string();
}

void CheckOrdinaryFile(const std::string& path)
{
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        throw FileError(path, status.type() == fs::file_type::not_found ? "no such file" : error.message());
    }
    if (!fs::is_regular_file(status)) {
        throw FileError(path, KindOf(path, status));
    }
}

} // namespace corvane::io
