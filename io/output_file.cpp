#include "io/output_file.h"

#include <cerrno>
#include <random>
#include <system_error>

#include <unistd.h>

#include "io/error.h"

namespace corvane::io {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBufferBytes = std::size_t{1} << 20;

std::string SystemText(int number)
{
    return std::generic_category().message(number);
}

/// The file that a chain of symbolic links leads to, which need not exist.
fs::path FollowLinks(const std::string& path)
{
    constexpr int kMostLinks = 40; // what the system itself follows
    fs::path target(path);
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(target, error); ++i) {
        target = target.parent_path() / fs::read_symlink(target, error);
    }
    return target;
}

void CheckTarget(const std::string& path, const fs::path& target)
{
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::is_directory(status) || path.empty() || path.ends_with('/')) {
        throw Error(path, "is a folder; the name of a file is needed");
    }
    const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
    if (!fs::is_directory(folder, error)) {
        throw Error(path, "there is no folder '" + folder.string() + "'");
    }
    if (!fs::exists(status)) {
        return;
    }
    if (!fs::is_regular_file(status)) {
        throw Error(path, "is not an ordinary file and will not be replaced");
    }
    std::FILE* existing = std::fopen(target.c_str(), "r+b");
    if (existing == nullptr) {
        throw Error(path, "cannot be replaced: " + SystemText(errno));
    }
    std::fclose(existing);
}

} // namespace

OutputFile::OutputFile(const std::string& path) : path_(path), target_(FollowLinks(path))
{
    CheckTarget(path_, target_);
    std::random_device random;
    do {
        temporary_ = target_.parent_path() / (".corvane-" + std::to_string(random()) + ".tmp");
        file_ = std::fopen(temporary_.c_str(), "w+bx");
    } while (file_ == nullptr && errno == EEXIST);
    if (file_ == nullptr) {
        Fail("cannot be written");
    }
    std::setvbuf(file_, nullptr, _IOFBF, kBufferBytes);
}

OutputFile::~OutputFile()
{
    Discard();
}

void OutputFile::Check(const std::string& path)
{
    const OutputFile probe(path);
}

void OutputFile::Write(const void* bytes, std::size_t count)
{
    if (std::fwrite(bytes, 1, count, file_) != count) {
        Fail("cannot be written");
    }
}

std::size_t OutputFile::Read(void* bytes, std::size_t count)
{
    const std::size_t got = std::fread(bytes, 1, count, file_);
    if (std::ferror(file_) != 0) {
        Fail("cannot be read back");
    }
    return got;
}

std::uint64_t OutputFile::Seek(std::int64_t offset, int origin)
{
    if (fseeko(file_, offset, origin) != 0) {
        Fail("cannot be written");
    }
    return static_cast<std::uint64_t>(ftello(file_));
}

void OutputFile::Commit()
{
    if (std::fflush(file_) != 0 || fsync(fileno(file_)) != 0) {
        Fail("cannot be written");
    }
    std::FILE* file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0) {
        Fail("cannot be written");
    }
    std::error_code error;
    const fs::file_status old = fs::status(target_, error);
    if (fs::exists(old)) {
        fs::permissions(temporary_, old.permissions(), error);
    }
    fs::rename(temporary_, target_, error);
    if (error) {
        throw Error(path_, "cannot be put in place: " + error.message());
    }
    temporary_.clear();
}

void OutputFile::Fail(const std::string& action) const
{
    throw Error(path_, action + ": " + SystemText(errno));
}

void OutputFile::Discard()
{
    if (file_ != nullptr) {
        std::fclose(file_);
    }
    if (!temporary_.empty()) {
        std::error_code error;
        fs::remove(temporary_, error);
    }
}

} // namespace corvane::io
