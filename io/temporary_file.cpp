#include "io/temporary_file.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvane::io {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferBytes = std::size_t{64} << 10; // bands of samples go past it
constexpr std::string_view kEnding = ".tmp";

[[noreturn]] void Fail(int number)
{
    throw std::system_error(number, std::generic_category());
}

/// What the names of this host's processes begin with.
std::string OwnPrefix()
{
    char host[65] = ""; // as long as Linux lets a name be
    gethostname(host, sizeof host - 1);
    return std::string(".corvane-") + host + "-";
}

/// True for a name that a process of this host took and can no longer give back.
bool IsStale(std::string_view name, const std::string& prefix)
{
    if (!name.starts_with(prefix) || !name.ends_with(kEnding)) {
        return false;
    }
    pid_t process = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, error] = std::from_chars(name.data() + prefix.size(), end, process);
    return error == std::errc() && rest != end && *rest == '-' && process > 0 && kill(process, 0) != 0 &&
           errno == ESRCH;
}

/// By the system's own functions: the standard library ends the process when there is no memory to list a folder.
void RemoveStale(const fs::path& folder)
{
    const std::string prefix = OwnPrefix();
    const std::unique_ptr<DIR, int (*)(DIR*)> files(opendir(folder.c_str()), &closedir);
    if (files == nullptr) {
        return;
    }
    while (const dirent* entry = readdir(files.get())) {
        if (IsStale(entry->d_name, prefix)) {
            unlinkat(dirfd(files.get()), entry->d_name, 0);
        }
    }
}

/// Where the system shows an open file, by which one without a name can be given one.
std::array<char, 32> ShownPath(int file)
{
    std::array<char, 32> path{};
    std::snprintf(path.data(), path.size(), "/proc/self/fd/%d", file);
    return path;
}

/// -1 when the file system has no nameless files, or nothing could name them later.
int OpenNameless(const fs::path& folder)
{
    const int file = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    if (file >= 0 && access(ShownPath(file).data(), F_OK) != 0) {
        close(file);
        return -1;
    }
    return file;
}

bool Link(int file, const fs::path& name)
{
    return linkat(AT_FDCWD, ShownPath(file).data(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

/// Calls take(name) with names in the folder until one was free; returns it.
template <class Take>
fs::path TakeFreeName(const fs::path& folder, Take take)
{
    RemoveStale(folder);
    const std::string prefix = OwnPrefix() + std::to_string(getpid()) + "-";
    std::random_device random;
    while (true) {
        fs::path name = folder / (prefix + std::to_string(random()) + std::string(kEnding));
        if (take(name)) {
            return name;
        }
        if (errno != EEXIST) {
            Fail(errno);
        }
    }
}

} // namespace

TemporaryFile::TemporaryFile(fs::path folder) : folder_(folder.empty() ? "." : std::move(folder))
{
    int file = OpenNameless(folder_);
    if (file < 0) {
        name_ = TakeFreeName(folder_, [&](const fs::path& name) {
            file = open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
            return file >= 0;
        });
    }
    file_ = fdopen(file, "w+b");
    if (file_ == nullptr) {
        const int number = errno;
        close(file);
        RemoveName();
        Fail(number);
    }
    std::setvbuf(file_, nullptr, _IOFBF, kBufferBytes);
}

TemporaryFile::~TemporaryFile()
{
    std::fclose(file_);
    RemoveName();
}

void TemporaryFile::Rename(const fs::path& target)
{
    const int file = fileno(file_);
    struct stat old {};
    const bool replaces = stat(target.c_str(), &old) == 0;
    if (replaces) {
        fchmod(file, old.st_mode & 07777U); // some file systems have no permissions
    }
    if (std::fflush(file_) != 0 || (replaces && fsync(file) != 0)) { // what is replaced must not be lost
        Fail(errno);
    }
    if (name_.empty() && !replaces && Link(file, target)) {
        return;
    }
    if (name_.empty()) { // a link replaces nothing: what does needs a name of its own for a moment
        name_ = TakeFreeName(folder_, [&](const fs::path& name) { return Link(file, name); });
    }
    if (rename(name_.c_str(), target.c_str()) != 0) {
        Fail(errno);
    }
    name_.clear();
}

void TemporaryFile::RemoveName()
{
    if (!name_.empty()) {
        unlink(name_.c_str());
    }
}

} // namespace corvane::io
