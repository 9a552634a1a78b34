#include "cli/file_set.h"

#include <filesystem>
#include <optional>
#include <system_error>

#include <sys/stat.h>

namespace corvane::cli {
namespace {

namespace fs = std::filesystem;

/// One name for one path, whatever way leads there, whether or not there is a file.
std::string PlaceOf(const std::string& path)
{
    std::error_code error;
    const fs::path place = fs::weakly_canonical(fs::absolute(path, error), error);
    return place.empty() ? path : place.string();
}

/// What hard links of a file have in common; nothing without a file.
std::optional<std::pair<unsigned long long, unsigned long long>> NodeOf(const std::string& path)
{
    struct stat status {};
    return stat(path.c_str(), &status) == 0
               ? std::optional(std::pair<unsigned long long, unsigned long long>(status.st_dev, status.st_ino))
               : std::nullopt;
}

} // namespace

void FileSet::Add(const std::string& path)
{
    places_.insert(PlaceOf(path));
    if (const auto node = NodeOf(path)) {
        nodes_.insert(*node);
    }
}

bool FileSet::Has(const std::string& path) const
{
    const auto node = NodeOf(path);
    return places_.count(PlaceOf(path)) > 0 || (node && nodes_.count(*node) > 0);
}

} // namespace corvane::cli
